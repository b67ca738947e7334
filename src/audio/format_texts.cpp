#include "audio/format_texts.h"

#include "audio/texts.h"
#include "platform/base/text.h"

namespace ts5 {

std::string FormatText(const WaveFormat& format) {
  return Format(Text(texts::WaveFormatText), format.sampleRate, format.bitsPerSample,
                Text(format.channels == 1 ? texts::WaveMono : texts::WaveStereo));
}

std::string FullFormatText(const WaveFormat& format) {
  const std::string text = FormatText(format);
  return EffectiveTag(format) == kTagFloat ? Format(Text(texts::WaveFormatFloat), text) : text;
}

TextId CodingName(const WaveFormat& format) {
  switch (EffectiveTag(format)) {
    case kTagPcm:
      return texts::WaveTagPcm;
    case kTagAdpcm:
      return texts::WaveTagAdpcm;
    case kTagMpegLayer3:
      return texts::WaveTagMpegLayer3;
    default:
      return texts::WaveTagOther;
  }
}

TextId FullCodingName(const WaveFormat& format) {
  return EffectiveTag(format) == kTagFloat ? texts::WaveTagFloat : CodingName(format);
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
