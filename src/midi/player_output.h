// The MIDI device of a player's run.
#pragma once

#include <cstdint>
#include <memory>

#include "frame/job.h"
#include "midi/midi_level.h"
#include "platform/base/outcome.h"

namespace ts5 {

class Run;

// The index in the device list that a job has chosen; negative for none.
[[nodiscard]] std::int32_t PlayerDeviceIndex(const Job& job);

// The device that the run names, else that of the job; "wave:FILE" is the built-in synthesiser sounding into
// that file. Codes of OpenMidiDevice.
[[nodiscard]] Result<std::unique_ptr<MidiLevel>> OpenPlayerOutput(const Run& run);

}  // namespace ts5
