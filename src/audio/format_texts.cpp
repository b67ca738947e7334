#include "audio/format_texts.h"

#include "platform/text.h"

namespace ts5 {

std::string FormatText(const WaveFormat& format) {
  return Format(Text(TextId::WaveFormatText), format.sampleRate, format.bitsPerSample,
                Text(format.channels == 1 ? TextId::WaveMono : TextId::WaveStereo));
}

std::string FullFormatText(const WaveFormat& format) {
  const std::string text = FormatText(format);
  return EffectiveTag(format) == kTagFloat ? Format(Text(TextId::WaveFormatFloat), text) : text;
}

TextId CodingName(const WaveFormat& format) {
  switch (EffectiveTag(format)) {
    case kTagPcm:
      return TextId::WaveTagPcm;
    case kTagAdpcm:
      return TextId::WaveTagAdpcm;
    case kTagMpegLayer3:
      return TextId::WaveTagMpegLayer3;
    default:
      return TextId::WaveTagOther;
  }
}

TextId FullCodingName(const WaveFormat& format) {
  return EffectiveTag(format) == kTagFloat ? TextId::WaveTagFloat : CodingName(format);
}

WaveFormat TargetFormat(std::uint32_t sampleRate, std::uint16_t bits, std::uint16_t channels) {
  return PcmFormat(sampleRate, bits, channels, bits == 32 ? kTagFloat : kTagPcm);
}

std::vector<WaveFormat> OfferedFormats() {
  std::vector<WaveFormat> formats;
  for (const std::uint32_t rate : kOfferedRates) {
    for (const std::uint16_t bits : kOfferedBits) {
      for (std::uint16_t channels = 1; channels <= 2; ++channels)
        formats.push_back(TargetFormat(rate, bits, channels));
    }
  }
  return formats;
}

}  // namespace ts5
