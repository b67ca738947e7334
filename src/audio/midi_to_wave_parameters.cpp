#include "audio/midi_to_wave_parameters.h"

#include <algorithm>
#include <optional>

namespace ts5 {
namespace {

constexpr std::int32_t kMostDevices = 9999;
constexpr std::int32_t kHighestRate = 192'000;

using RecordingFormats = std::map<std::int32_t, WaveNumbers>;

// Four numbers per device: its index, then rate, channels and bits.
std::string FormatsText(const RecordingFormats& formats) {
  std::string text;
  for (const auto& [device, numbers] : formats) {
    text += (text.empty() ? "" : " ") + std::to_string(device);
    for (const std::int32_t number : numbers) text += ' ' + std::to_string(number);
  }
  return text;
}

std::optional<RecordingFormats> ParseFormats(std::string_view text) {
  RecordingFormats formats;
  if (Trim(text).empty()) return formats;
  std::vector<std::int32_t> numbers;
  for (const std::string_view part : Split(Trim(text), ' ')) {
    const auto value = ParseInteger(part);
    if (!value || *value < 0 || *value > kHighestRate) return std::nullopt;
    numbers.push_back(static_cast<std::int32_t>(*value));
  }
  if (numbers.size() % 4 != 0) return std::nullopt;
  for (std::size_t i = 0; i < numbers.size(); i += 4) {
    const WaveNumbers format{numbers[i + 1], numbers[i + 2], numbers[i + 3]};
    const bool valid = numbers[i] <= kMostDevices && format[0] > 0 && (format[1] == 1 || format[1] == 2) &&
                       (format[2] == 8 || format[2] == 16);
    if (!valid) return std::nullopt;
    formats[numbers[i]] = format;
  }
  return formats;
}

}  // namespace

WaveFormat FormatOf(const WaveNumbers& numbers) {
  return PcmFormat(static_cast<std::uint32_t>(numbers[0]), numbers[2] == 8 ? 8 : 16, numbers[1] == 1 ? 1 : 2);
}

bool MidiToWaveParameters::HasSynthesisFormat() const {
  return std::ranges::find(kSynthesisRates, format[0]) != kSynthesisRates.end() &&
         (format[1] == 1 || format[1] == 2) && (format[2] == 8 || format[2] == 16);
}

WaveFormat MidiToWaveParameters::SynthesisFormat() const {
  return FormatOf(format);
}

WaveFormat MidiToWaveParameters::RecordingFormat() const {
  const auto found = recordingFormats.find(waveDevice);
  return found == recordingFormats.end() ? AudioCdFormat() : FormatOf(found->second);
}

std::vector<ParameterField> MidiToWaveFields() {
  using P = MidiToWaveParameters;
  FieldTable<P> table;
  table.Integer("MIDWAVMethod", &P::method, 0, 1)
      .Integer("MidiDevice", &P::midiDevice, -1, kMostDevices)
      .Integer("WaveDevice", &P::waveDevice, 0, kMostDevices)
      .Integer("ConvNormalize", &P::normalise, 0, 2)
      .Numbers("DestFormat", &P::format, 0, kHighestRate)
      .Flag("ConfigMixer", &P::configureMixer)
      .Single(
          "RecordFormat", "N x (0..9999 1..192000 1|2 8|16)",
          [](const P& p) { return FormatsText(p.recordingFormats); },
          [](P& p, std::string_view text) {
            auto formats = ParseFormats(text);
            if (formats) p.recordingFormats = *std::move(formats);
            return formats.has_value();
          });
  return table.Build();
}

}  // namespace ts5
