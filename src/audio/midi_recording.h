// The sound-card method of the MIDI-to-wave conversion: a MIDI device plays while an audio input (mostly the
// monitor of the output) is recorded.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "audio/midi_to_wave_parameters.h"
#include "platform/files.h"
#include "platform/outcome.h"
#include "platform/wave_format.h"
#include "platform/work_watch.h"

namespace ts5 {

struct RecordingDevices {
  std::string midi;   // as OpenMidiDevice takes it
  std::string input;  // as OpenAudioInput takes it
};

// The input whose name holds the name of the recording sum, whatever the case; "" when none does.
[[nodiscard]] std::string RecordingSource(const std::vector<std::string>& inputs, std::string_view sum);
// The devices by name: those that are given, else those of the parameters; with the automatic
// setting the input is the one that RecordingSource finds, if any.
[[nodiscard]] RecordingDevices RecordingDevicesOf(const MidiToWaveParameters& parameters,
                                                  const std::string& midi, const std::string& input);

// Plays the source in real time and writes what the input gives from its first to its last event, and a
// second beyond, into a staged file of the caller's. ConverterNotOpened: no such MIDI device;
// ConverterFailed: it has gone; EncoderNotStarted: the input does not start; ReadFailed: the input has gone,
// or its samples came faster than they could be written; SourceFailed, WrongFormat, DamagedMidi: the source;
// WriteFailed, Cancelled.
[[nodiscard]] Outcome RecordMidi(const std::string& source, StagedFile& target, const WaveFormat& format,
                                 const RecordingDevices& devices, const WorkWatch& watch = {});

}  // namespace ts5
