#include "audio/midi_to_wave_parameters.h"

#include <algorithm>

namespace ts5 {
namespace {

constexpr std::int32_t kMostDevices = 9999;
constexpr std::size_t kMostSourceName = 255;

WaveFormat FormatOf(const std::array<std::int32_t, 3>& values) {
  return PcmFormat(static_cast<std::uint32_t>(values[0]), values[2] == 8 ? 8 : 16, values[1] == 1 ? 1 : 2);
}

}  // namespace

bool MidiToWaveParameters::HasSynthesisFormat() const {
  return std::ranges::find(kSynthesisRates, format[0]) != kSynthesisRates.end() &&
         (format[1] == 1 || format[1] == 2) && (format[2] == 8 || format[2] == 16);
}

WaveFormat MidiToWaveParameters::SynthesisFormat() const {
  return FormatOf(format);
}

WaveFormat MidiToWaveParameters::RecordingFormat() const {
  return HasRecordingFormat() ? FormatOf(recordingFormat) : AudioCdFormat();
}

std::vector<ParameterField> MidiToWaveFields() {
  using P = MidiToWaveParameters;
  FieldTable<P> table;
  table.Integer("MIDWAVMethod", &P::method, 0, 1)
      .Integer("MidiDevice", &P::midiDevice, -1, kMostDevices)
      .Integer("WaveDevice", &P::waveDevice, 0, kMostDevices)
      .Integer("ConvNormalize", &P::normalise, 0, 2)
      .Numbers("DestFormat", &P::format, 0, 192'000)
      .Flag("ConfigMixer", &P::configureMixer)
      .Numbers("RecordFormat", &P::recordingFormat, 0, 192'000)
      .Text("RecordSource", &P::recordingSource, kMostSourceName);
  return table.Build();
}

}  // namespace ts5
