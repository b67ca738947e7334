#include "platform/media/wave_format.h"

#include <algorithm>
#include <array>

namespace ts5 {
namespace {

constexpr std::size_t kExtensibleSize = 22;
constexpr std::uint16_t kMostChannels = 64;

// Bytes that one sample takes; 0 when the record does not say it.
std::size_t ContainerSize(const WaveFormat& format) {
  const std::size_t needed = (std::size_t{format.bitsPerSample} + 7) / 8;
  const std::size_t said = format.blockAlign / format.channels;
  const bool whole = format.blockAlign % format.channels == 0;
  return whole && said >= needed && said <= 8 ? said : needed;
}

}  // namespace

WaveFormat PcmFormat(std::uint32_t sampleRate, std::uint16_t bits, std::uint16_t channels,
                     std::uint16_t tag) {
  WaveFormat format;
  format.tag = tag;
  format.channels = channels;
  format.sampleRate = sampleRate;
  format.blockAlign = static_cast<std::uint16_t>((bits + 7) / 8 * channels);
  format.bytesPerSecond = sampleRate * format.blockAlign;
  format.bitsPerSample = bits;
  return format;
}

WaveFormat AudioCdFormat() {
  return PcmFormat(44100, 16, 2);
}

Bytes WaveFormatBytes(const WaveFormat& format) {
  ByteWriter out;
  out.U16Le(format.tag);
  out.U16Le(format.channels);
  out.U32Le(format.sampleRate);
  out.U32Le(format.bytesPerSecond);
  out.U16Le(format.blockAlign);
  out.U16Le(format.bitsPerSample);
  if (format.tag != kTagPcm) {
    out.U16Le(static_cast<std::uint16_t>(format.extra.size()));
    out.Append(format.extra);
  }
  return out.Release();
}

std::optional<WaveFormat> ParseWaveFormat(ByteView bytes) {
  ByteReader in(bytes);
  WaveFormat format;
  format.tag = in.U16Le();
  format.channels = in.U16Le();
  format.sampleRate = in.U32Le();
  format.bytesPerSecond = in.U32Le();
  format.blockAlign = in.U16Le();
  format.bitsPerSample = in.U16Le();
  if (!in.Ok()) return std::nullopt;
  if (format.tag != kTagPcm && in.Remaining() >= 2) {
    const std::size_t size = in.U16Le();
    const ByteView extra = in.Take(std::min(size, in.Remaining()));
    format.extra.assign(extra.begin(), extra.end());
  }
  return format;
}

std::uint16_t EffectiveTag(const WaveFormat& format) {
  if (format.tag != kTagExtensible || format.extra.size() < kExtensibleSize) return format.tag;
  ByteReader in(format.extra);
  in.Skip(6);  // valid bits, channel mask
  return in.U16Le();
}

std::uint32_t UsualChannelMask(std::uint32_t channels) {
  constexpr std::array<std::uint32_t, 9> kMasks{0, 0x4, 0x3, 0x7, 0x33, 0x37, 0x3F, 0x70F, 0x63F};
  return channels < kMasks.size() ? kMasks.at(channels) : 0;
}

std::uint32_t ChannelMaskOf(const WaveFormat& format) {
  if (format.tag == kTagExtensible && format.extra.size() >= kExtensibleSize) {
    ByteReader in(format.extra);
    in.Skip(2);
    if (const std::uint32_t mask = in.U32Le(); mask != 0) return mask;
  }
  return UsualChannelMask(format.channels);
}

std::size_t SampleSize(SampleType type) {
  constexpr std::array<std::size_t, 6> kSizes{1, 2, 3, 4, 4, 8};
  return kSizes.at(static_cast<std::size_t>(type));
}

std::uint32_t SampleBits(SampleType type) {
  constexpr std::array<std::uint32_t, 6> kBits{8, 16, 24, 32, 0, 0};
  return kBits.at(static_cast<std::size_t>(type));
}

std::optional<SampleType> SampleTypeOf(const WaveFormat& format) {
  if (format.channels == 0 || format.channels > kMostChannels || format.sampleRate == 0) return std::nullopt;
  if (format.bitsPerSample == 0 || format.bitsPerSample > 64) return std::nullopt;
  const std::size_t size = ContainerSize(format);
  switch (EffectiveTag(format)) {
    case kTagPcm:
      if (size == 1) return SampleType::Unsigned8;
      if (size == 2) return SampleType::Signed16;
      if (size == 3) return SampleType::Signed24;
      if (size == 4) return SampleType::Signed32;
      return std::nullopt;
    case kTagFloat:
      if (size == 4) return SampleType::Float32;
      if (size == 8) return SampleType::Float64;
      return std::nullopt;
    default:
      return std::nullopt;
  }
}

}  // namespace ts5
