// The MIDI player: plays the MIDI files of a job on a MIDI output device. Files are read whole and never
// touched, sequencer files included; what sounds is the copy in memory.
#pragma once

#include "frame/filter_module.h"

namespace ts5 {

// A run's output device is a name of MidiOutputDevices(), "null", "capture:FILE.mid", or "wave:FILE.wav" for
// the built-in synthesiser into a file; "" is the device of the job.
[[nodiscard]] FilterModule MidiPlayerModule();

}  // namespace ts5
