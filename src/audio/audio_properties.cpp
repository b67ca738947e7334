#include "audio/audio_properties.h"

#include <algorithm>
#include <optional>

#include "audio/format_texts.h"
#include "audio/wave_stream.h"
#include "platform/input_file.h"
#include "platform/paths.h"
#include "platform/text.h"

namespace ts5 {
namespace {

std::string Copy(TextId id) {
  return std::string(Text(id));
}

// One decimal place, with the comma of the language.
std::string Decibels(double value, TextId unit) {
  std::string number = Format("%.1f", value);
  std::ranges::replace(number, '.', ',');
  return Format(Text(unit), number);
}

std::string DurationText(double seconds) {
  const auto all = static_cast<std::uint64_t>(seconds * 1000 + 0.5);
  return Format(Text(TextId::AudioPropertyDurationValue), all / 3600000, all / 60000 % 60, all / 1000 % 60,
                all % 1000);
}

}  // namespace

std::vector<PropertyRow> AudioPropertyRows(const MediaProbe& probe, CalendarDate lastWritten,
                                           std::uint64_t fileSize) {
  const auto [day, month, year] = NumbersOf(lastWritten);
  std::vector<PropertyRow> rows{
      {Copy(TextId::PropertyFileFormat), Copy(KindName(probe.kind))},
      {Copy(TextId::PropertyLastWritten), Format(Text(TextId::PropertyDate), day, month, year)},
      {Copy(TextId::AudioPropertyCoding), Copy(FullCodingName(probe.format))},
      {Copy(TextId::AudioPropertyFormat), FormatText(probe.format)},
      {Copy(TextId::AudioPropertyRate),
       Format(Text(TextId::AudioPropertyRateValue), probe.format.sampleRate)},
      {Copy(TextId::AudioPropertyChannels), std::to_string(probe.format.channels)},
      {Copy(TextId::AudioPropertyByteRate), std::to_string(probe.format.bytesPerSecond)},
      {Copy(TextId::AudioPropertyDuration), DurationText(probe.seconds)},
  };
  if (probe.format.bitsPerSample != 0) {
    const auto behindRate = rows.begin() + 5;
    rows.insert(behindRate, {Copy(TextId::AudioPropertyBits),
                             Format(Text(TextId::AudioPropertyBitsValue), probe.format.bitsPerSample)});
  }
  if (!IsWaveKind(probe.kind)) {
    constexpr std::uint64_t kKilo = 1024;
    rows.push_back(
        {Copy(TextId::AudioPropertySize),
         Format(Text(TextId::AudioPropertySizeValue), fileSize / kKilo, fileSize % kKilo * 10 / kKilo)});
    rows.push_back({Copy(TextId::AudioPropertyBitRate), Format(Text(TextId::AudioPropertyBitRateValue),
                                                               (probe.format.bytesPerSecond + 62) / 125)});
  }
  if (probe.frames) rows.push_back({Copy(TextId::AudioPropertyFrames), std::to_string(*probe.frames)});
  rows.push_back({Copy(TextId::AudioPropertyDataLength),
                  Format(Text(TextId::AudioPropertyDataLengthValue), probe.dataLength)});
  return rows;
}

Result<AudioProperties> ReadAudioProperties(const std::string& path) {
  const auto file = InputFile::Open(path);
  if (!file) return Failure(file.error());
  const MediaProbe probe = ProbeMedia(path);
  if (probe.kind == MediaKind::None) return Failure(Outcome::WrongFormat);
  const auto written = LastWriteDate(path);
  if (!written) return Failure(written.error());
  AudioProperties properties;
  properties.title = Format(Text(TextId::PropertiesTitle), FileNameOf(path));
  properties.kind = probe.kind;
  properties.rows = AudioPropertyRows(probe, *written, file->Size());
  return properties;
}

std::vector<PropertyRow> LoudnessRows(const Loudness& loudness) {
  const auto value = [](std::optional<double> level, TextId unit) {
    return level ? Decibels(*level, unit) : Copy(TextId::AudioPropertySilence);
  };
  std::string integrated = value(loudness.integrated, TextId::AudioPropertyLoudnessValue);
  // A sound, but too short or too soft for the measure.
  if (!loudness.integrated && loudness.truePeak) integrated = Copy(TextId::AudioPropertyNotMeasured);
  return {
      {Copy(TextId::AudioPropertyLoudness), integrated},
      {Copy(TextId::AudioPropertyTruePeak), value(loudness.truePeak, TextId::AudioPropertyTruePeakValue)}};
}

Result<std::vector<PropertyRow>> MeasureAudioProperties(const std::string& path, const WorkWatch& watch) {
  auto source = OpenPcm(path);
  if (!source) return Failure(source.error());
  const auto loudness = MeasureLoudness(**source, watch);
  if (!loudness) return Failure(loudness.error());
  return LoudnessRows(*loudness);
}

}  // namespace ts5
