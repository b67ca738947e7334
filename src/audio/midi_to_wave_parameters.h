// The parameters of the MIDI-to-wave conversion and their field table.
#pragma once

#include <array>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "audio/normalise.h"
#include "frame/parameters.h"
#include "platform/media/wave_format.h"

namespace ts5 {

// As it is stored in jobs.
enum class MidiWaveMethod : std::int32_t { SoundCard = 0, Synthesis = 1 };

inline constexpr std::array<std::int32_t, 3> kSynthesisRates = {11025, 22050, 44100};

// Rate, channels, bits.
using WaveNumbers = std::array<std::int32_t, 3>;

struct MidiToWaveParameters : ClonableParameters<MidiToWaveParameters> {
  // Needs no hardware.
  std::int32_t method = static_cast<std::int32_t>(MidiWaveMethod::Synthesis);
  std::int32_t midiDevice = 0;  // index of the MIDI output device; -1: the mapper
  std::int32_t waveDevice = 0;  // index of the audio input device
  std::int32_t normalise = 0;   // NormaliseMode
  // A rate that is none of kSynthesisRates is kept and refused when it is used.
  WaveNumbers format = {44100, 2, 16};
  bool configureMixer = false;
  std::map<std::int32_t, WaveNumbers> recordingFormats;  // by audio input device

  [[nodiscard]] MidiWaveMethod Method() const { return static_cast<MidiWaveMethod>(method); }
  [[nodiscard]] NormaliseMode Normalising() const { return static_cast<NormaliseMode>(normalise); }
  [[nodiscard]] bool HasSynthesisFormat() const;
  [[nodiscard]] bool HasRecordingFormat() const { return recordingFormats.contains(waveDevice); }
  [[nodiscard]] WaveFormat SynthesisFormat() const;
  // Of the chosen input device; the audio-CD format when none is set for it.
  [[nodiscard]] WaveFormat RecordingFormat() const;
};

// A format of 8 or 16 bits, mono or stereo.
[[nodiscard]] WaveFormat FormatOf(const WaveNumbers& numbers);

[[nodiscard]] std::vector<ParameterField> MidiToWaveFields();

}  // namespace ts5
