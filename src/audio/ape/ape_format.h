// What a Monkey's Audio file of version 3.99 says about itself: the descriptor, the header, the seek table.
#pragma once

#include <array>
#include <cstdint>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5::ape {

enum class Level : std::uint16_t { Fast = 1000, Normal = 2000, High = 3000, ExtraHigh = 4000, Insane = 5000 };

// The level of a stored number: every thousand from 1000 to 5000; all else is High.
[[nodiscard]] Level LevelOf(std::uint32_t stored);

struct Format {
  std::uint32_t sampleRate = 0;  // frames per second, from 1
  std::uint32_t channels = 0;    // 1 or 2
  std::uint32_t bits = 0;        // 8, 16 or 24
  Level level = Level::High;
};

// FormatRefused: what the file cannot hold.
[[nodiscard]] Outcome Check(const Format& format);

// Sample frames of all frames but the last one.
inline constexpr std::uint32_t kFrameBlocks = 73728 * 4;
// The samples of a file as bytes of a wave file; readers count them with 32 bits.
inline constexpr std::uint64_t kMostSampleBytes = std::uint64_t{1} << 31;

[[nodiscard]] constexpr std::uint64_t BytesPerBlock(const Format& format) {
  return std::uint64_t{format.channels} * format.bits / 8;
}

using Md5 = std::array<std::uint8_t, 16>;

inline constexpr std::size_t kDescriptorSize = 52;
inline constexpr std::size_t kHeaderSize = 24;

struct Totals {
  std::uint64_t blocks = 0;      // sample frames in all
  std::uint64_t audioBytes = 0;  // of all frames, as they lie in the file
};

[[nodiscard]] Bytes Descriptor(const Totals& totals, std::size_t seekTableSize, const Md5& md5);
// The header that follows the descriptor. The wave file's own head is not kept: readers make one.
[[nodiscard]] Bytes Header(const Format& format, const Totals& totals);

}  // namespace ts5::ape
