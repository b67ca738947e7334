#include "audio/audio_properties.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "audio/format_texts.h"
#include "audio/tags/tag_file.h"
#include "audio/texts.h"
#include "audio/wave_stream.h"
#include "midi/texts.h"
#include "platform/base/text.h"
#include "platform/files/input_file.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

std::string Copy(TextId id) {
  return std::string(Text(id));
}

// One decimal place, with the comma of the language.
std::string Decibels(double value, TextId unit) {
  std::string number = Format("%.1f", std::round(value * 10) / 10 + 0.0);  // never "-0,0"
  std::ranges::replace(number, '.', ',');
  return Format(Text(unit), number);
}

std::string DurationText(double seconds) {
  const auto all = static_cast<std::uint64_t>(std::llround(seconds * 1000));
  return Format(Text(texts::AudioPropertyDurationValue), all / 3600000, all / 60000 % 60, all / 1000 % 60,
                all % 1000);
}

std::string SizeText(std::uint64_t bytes) {
  constexpr std::uint64_t kKilo = 1024;
  return Format(Text(texts::AudioPropertySizeValue), bytes / kKilo, bytes % kKilo * 10 / kKilo);
}

}  // namespace

std::vector<PropertyRow> AudioPropertyRows(const MediaProbe& probe, CalendarDate lastWritten,
                                           std::uint64_t fileSize) {
  const auto [day, month, year] = NumbersOf(lastWritten);
  std::vector<PropertyRow> rows{
      {Copy(texts::PropertyFileFormat), Copy(KindName(probe.kind))},
      {Copy(texts::PropertyLastWritten), Format(Text(texts::PropertyDate), day, month, year)},
      {Copy(texts::AudioPropertyCoding), Copy(CodecName(probe.codec).value_or(FullCodingName(probe.format)))},
      {Copy(texts::AudioPropertyFormat), FormatText(probe.format)},
      {Copy(texts::AudioPropertyRate), Format(Text(texts::AudioPropertyRateValue), probe.format.sampleRate)},
      {Copy(texts::AudioPropertyChannels), std::to_string(probe.format.channels)},
      {Copy(texts::AudioPropertyByteRate), std::to_string(probe.format.bytesPerSecond)},
      {Copy(texts::AudioPropertyDuration), DurationText(probe.seconds)},
  };
  if (probe.format.bitsPerSample != 0) {
    const auto behindRate = rows.begin() + 5;
    rows.insert(behindRate, {Copy(texts::AudioPropertyBits),
                             Format(Text(texts::AudioPropertyBitsValue), probe.format.bitsPerSample)});
  }
  if (!IsWaveKind(probe.kind)) {
    rows.push_back({Copy(texts::AudioPropertySize), SizeText(fileSize)});
    rows.push_back({Copy(texts::AudioPropertyBitRate), Format(Text(texts::AudioPropertyBitRateValue),
                                                              (probe.format.bytesPerSecond + 62) / 125)});
  }
  if (!probe.encoder.empty())
    rows.push_back({Copy(texts::AudioPropertyEncoder),
                    IsUtf8(probe.encoder) ? probe.encoder : Utf8FromWindows1252(probe.encoder)});
  if (probe.delay)
    rows.push_back(
        {Copy(texts::AudioPropertyDelay), Format(Text(texts::AudioPropertyDelayValue), *probe.delay)});
  if (probe.frames) rows.push_back({Copy(texts::AudioPropertyFrames), std::to_string(*probe.frames)});
  rows.push_back({Copy(texts::AudioPropertyDataLength),
                  Format(Text(texts::AudioPropertyDataLengthValue), probe.dataLength)});
  return rows;
}

Result<AudioProperties> ReadAudioProperties(const std::string& path) {
  const auto file = InputFile::Open(path);
  if (!file) return Failure(file.error());
  const MediaProbe probe = ProbeMedia(path);
  if (probe.kind == MediaKind::None && tags::ReadAttributes(path).value_or(tags::Attributes()).empty())
    return Failure(Outcome::WrongFormat);
  const auto written = LastWriteDate(path);
  if (!written) return Failure(written.error());
  AudioProperties properties;
  properties.title = Format(Text(texts::PropertiesTitle), FileNameOf(path));
  properties.kind = probe.kind;
  if (probe.kind == MediaKind::None) {
    properties.rows = {{Copy(texts::AudioPropertySize), SizeText(file->Size())}};
  } else {
    properties.rows = AudioPropertyRows(probe, *written, file->Size());
  }
  return properties;
}

std::vector<PropertyRow> SummaryRows(const std::vector<std::string>& paths) {
  std::uint64_t size = 0;
  double seconds = 0;
  for (const std::string& path : paths) {
    if (const auto file = InputFile::Open(path)) size += file->Size();
    seconds += ProbeMedia(path).seconds;
  }
  return {{Copy(texts::AttributesFileCount), std::to_string(paths.size())},
          {Copy(texts::AudioPropertySize), SizeText(size)},
          {Copy(texts::AudioPropertyDuration), DurationText(seconds)}};
}

std::vector<PropertyRow> LoudnessRows(const Loudness& loudness) {
  const auto value = [](std::optional<double> level, TextId unit) {
    return level ? Decibels(*level, unit) : Copy(texts::AudioPropertySilence);
  };
  std::string integrated = value(loudness.integrated, texts::AudioPropertyLoudnessValue);
  // A sound, but too short or too soft for the measure.
  if (!loudness.integrated && loudness.truePeak) integrated = Copy(texts::AudioPropertyNotMeasured);
  return {{Copy(texts::AudioPropertyLoudness), integrated},
          {Copy(texts::AudioPropertyTruePeak), value(loudness.truePeak, texts::AudioPropertyTruePeakValue)}};
}

Result<std::vector<PropertyRow>> MeasureAudioProperties(const std::string& path, const WorkWatch& watch) {
  auto source = OpenPcm(path);
  if (!source) return Failure(source.error());
  const auto loudness = MeasureLoudness(**source, watch);
  if (!loudness) return Failure(loudness.error());
  return LoudnessRows(*loudness);
}

}  // namespace ts5
