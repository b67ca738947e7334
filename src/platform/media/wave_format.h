// The record that describes a stream of samples, laid out as the "fmt " chunk of RIFF WAVE files has it
// (WAVEFORMATEX, and WAVEFORMATEXTENSIBLE where the tag is 0xFFFE).
#pragma once

#include <cstdint>
#include <optional>

#include "platform/base/bytes.h"

namespace ts5 {

// Values of the format tag that are known by name here; there are many more.
inline constexpr std::uint16_t kTagUnknown = 0;
inline constexpr std::uint16_t kTagPcm = 1;
inline constexpr std::uint16_t kTagAdpcm = 2;
inline constexpr std::uint16_t kTagFloat = 3;
inline constexpr std::uint16_t kTagMpeg = 0x50;  // layers I and II
inline constexpr std::uint16_t kTagMpegLayer3 = 0x55;
inline constexpr std::uint16_t kTagExtensible = 0xFFFE;

struct WaveFormat {
  std::uint16_t tag = kTagPcm;
  std::uint16_t channels = 0;
  std::uint32_t sampleRate = 0;      // Hz
  std::uint32_t bytesPerSecond = 0;  // turns lengths into durations
  std::uint16_t blockAlign = 0;      // bytes per sample frame
  std::uint16_t bitsPerSample = 0;
  Bytes extra = {};  // what follows the record; its length is the field cbSize

  bool operator==(const WaveFormat&) const = default;
};

// A consistent record; 32 bits with kTagFloat are floats.
[[nodiscard]] WaveFormat PcmFormat(std::uint32_t sampleRate, std::uint16_t bits, std::uint16_t channels,
                                   std::uint16_t tag = kTagPcm);
// 44100 Hz, 16 bits, stereo.
[[nodiscard]] WaveFormat AudioCdFormat();

// The record's bytes: 16 for PCM, else 18 and the extra bytes. Nothing when there are fewer than 16 bytes; a
// length of the extra bytes that is missing or too large counts as what is there.
[[nodiscard]] Bytes WaveFormatBytes(const WaveFormat& format);
[[nodiscard]] std::optional<WaveFormat> ParseWaveFormat(ByteView bytes);

// The tag, for an extensible format the one that its sub-format stands for.
[[nodiscard]] std::uint16_t EffectiveTag(const WaveFormat& format);
// Which loudspeaker each channel belongs to (bits of dwChannelMask); for a format that does not say it, what
// its number of channels usually means; 0 when that is open too.
[[nodiscard]] std::uint32_t ChannelMaskOf(const WaveFormat& format);
[[nodiscard]] std::uint32_t UsualChannelMask(std::uint32_t channels);

// How the samples of uncompressed data lie in the file, little-endian.
enum class SampleType : std::uint8_t { Unsigned8, Signed16, Signed24, Signed32, Float32, Float64 };
[[nodiscard]] std::size_t SampleSize(SampleType type);  // bytes
// Significant bits of whole numbers; 0 for floats.
[[nodiscard]] std::uint32_t SampleBits(SampleType type);
// Nothing for compressed data and for records that contradict themselves.
[[nodiscard]] std::optional<SampleType> SampleTypeOf(const WaveFormat& format);

}  // namespace ts5
