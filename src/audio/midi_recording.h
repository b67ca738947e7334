// The sound-card method of the MIDI-to-wave conversion: a MIDI device plays while an audio input (mostly the
// monitor of the output) is recorded.
#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "audio/midi_to_wave_parameters.h"
#include "frame/settings.h"
#include "platform/base/outcome.h"
#include "platform/base/strings.h"
#include "platform/base/work_watch.h"
#include "platform/files/files.h"
#include "platform/media/wave_format.h"

namespace ts5 {

struct RecordingDevices {
  std::string midi;   // as OpenMidiDevice takes it
  std::string input;  // as OpenAudioInput takes it
};

// The input whose name holds the name of the recording sum, whatever the case; "" when none does.
[[nodiscard]] std::string RecordingSource(const std::vector<std::string>& inputs, std::string_view sum);
// What keeps the automatic mixer setting from working: MidiWaveNoMixer, there is no input at all;
// MidiWaveMixerNotSet, none holds the name of the settings' recording sum. Nothing when it works, is not
// wanted, or the user wants to hear no more of it.
[[nodiscard]] std::optional<TextId> MixerProblem(const MidiToWaveParameters& parameters,
                                                 const std::vector<std::string>& inputs,
                                                 const Settings& settings);
void ForgetMixerProblem(TextId problem, Settings& settings);
// The name that the user gave the sum; where an input has it, the settings keep that one.
void TakeRecordingSum(std::string_view sum, const std::vector<std::string>& inputs, Settings& settings);

// The formats in which an input can record, by rate, then bits, then channels; none when it is not there.
[[nodiscard]] std::vector<WaveNumbers> RecordingFormatsOf(const std::string& input);

// The devices by name: those that are given, else those of the parameters; with the automatic setting the
// input is the one of the recording sum, if there is such.
[[nodiscard]] RecordingDevices RecordingDevicesOf(const MidiToWaveParameters& parameters,
                                                  std::string_view sum, const RecordingDevices& given);

// Whether both devices can be opened. MidiDeviceFailed: not the MIDI device; ConverterNotOpened: not the
// input in this format.
[[nodiscard]] Outcome CheckRecording(const RecordingDevices& devices, const WaveFormat& format);

// Plays the source in real time and writes what the input gives from its first to its last event, and a
// second beyond, into a staged file of the caller's. Codes of CheckRecording; ConverterFailed: the MIDI
// device has gone; EncoderNotStarted: the input does not start; EncoderFailed: it has gone, or its samples
// came faster than they could be written; SourceFailed, WrongFormat, DamagedMidi, ReadFailed: the source;
// WriteFailed, Cancelled.
[[nodiscard]] Outcome RecordMidi(const std::string& source, StagedFile& target, const WaveFormat& format,
                                 const RecordingDevices& devices, const WorkWatch& watch = {});

}  // namespace ts5
