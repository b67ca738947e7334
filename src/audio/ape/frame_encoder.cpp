#include "audio/ape/frame_encoder.h"

#include <algorithm>
#include <array>
#include <vector>

#include "audio/ape/adaptive_filter.h"
#include "audio/ape/predictor.h"
#include "audio/ape/range_encoder.h"
#include "audio/ape/residual_coder.h"

namespace ts5::ape {
namespace {

struct FilterShape {
  std::size_t order;
  unsigned shift;
};

// The long filters of each level, from the first one that samples go through. Unused ones are 0 long.
constexpr std::array<std::array<FilterShape, 3>, 5> kFilters{{
    {{{0, 0}, {0, 0}, {0, 0}}},
    {{{16, 11}, {0, 0}, {0, 0}}},
    {{{64, 11}, {0, 0}, {0, 0}}},
    {{{256, 13}, {32, 10}, {0, 0}}},
    {{{1280, 15}, {256, 13}, {16, 11}}},
}};

// What a frame says instead of samples. Whoever writes any of them sets the top bit of the checksum.
constexpr std::uint32_t kMonoSilence = 1;
constexpr std::uint32_t kStereoSilence = 3;
constexpr std::uint32_t kSameChannels = 4;
constexpr std::uint32_t kCodesFollow = std::uint32_t{1} << 31;

constexpr std::array<std::uint32_t, 256> kCrcTable = [] {
  std::array<std::uint32_t, 256> table{};
  for (std::uint32_t i = 0; i < table.size(); ++i) {
    std::uint32_t value = i;
    for (int bit = 0; bit < 8; ++bit) value = value >> 1 ^ (value & 1 ? 0xEDB88320U : 0);
    table[i] = value;
  }
  return table;
}();

// CRC-32 (IEEE 802.3) of the samples as a wave file has them, without its lowest bit.
std::uint32_t Checksum(std::span<const std::int32_t> samples, std::uint32_t bits) {
  std::uint32_t crc = 0xFFFFFFFF;
  const std::uint32_t offset = bits == 8 ? 128 : 0;
  for (const std::int32_t sample : samples) {
    std::uint32_t value = static_cast<std::uint32_t>(sample) + offset;
    for (std::uint32_t done = 0; done < bits; done += 8, value >>= 8)
      crc = crc >> 8 ^ kCrcTable[(crc ^ value) & 0xFF];
  }
  return ~crc >> 1;
}

std::uint32_t SpecialCodes(const Format& format, std::span<const std::int32_t> samples) {
  const bool silent = std::ranges::all_of(samples, [](std::int32_t sample) { return sample == 0; });
  if (silent) return format.channels == 1 ? kMonoSilence : kStereoSilence;
  if (format.channels == 1) return 0;
  for (std::size_t i = 0; i < samples.size(); i += 2) {
    if (samples[i] != samples[i + 1]) return 0;
  }
  return kSameChannels;
}

void FilterLong(Level level, std::span<std::int32_t> samples) {
  for (const FilterShape& shape : kFilters[static_cast<std::size_t>(level) / 1000 - 1]) {
    if (shape.order > 0) AdaptiveFilter(shape.order, shape.shift).Filter(samples);
  }
}

void EncodeMono(const Format& format, std::span<const std::int32_t> samples, RangeEncoder& out) {
  std::vector<std::int32_t> left;
  left.reserve(samples.size() / format.channels);
  for (std::size_t i = 0; i < samples.size(); i += format.channels) left.push_back(samples[i]);
  PredictMono(left);
  FilterLong(format.level, left);
  ResidualCoder coder;
  for (const std::int32_t residual : left) coder.Encode(residual, out);
}

void EncodeStereo(const Format& format, std::span<const std::int32_t> samples, RangeEncoder& out) {
  const std::size_t blocks = samples.size() / 2;
  std::vector<std::int32_t> middle(blocks);
  std::vector<std::int32_t> side(blocks);
  for (std::size_t i = 0; i < blocks; ++i) {
    side[i] = samples[2 * i + 1] - samples[2 * i];
    middle[i] = samples[2 * i] + side[i] / 2;
  }
  const bool wide = format.bits == 24 && format.level == Level::Insane;
  PredictStereo(side, middle, wide ? Products::Full64 : Products::Wrap32);
  FilterLong(format.level, middle);
  FilterLong(format.level, side);
  ResidualCoder middleCoder;
  ResidualCoder sideCoder;
  for (std::size_t i = 0; i < blocks; ++i) {
    sideCoder.Encode(side[i], out);
    middleCoder.Encode(middle[i], out);
  }
}

}  // namespace

void EncodeFrame(const Format& format, std::span<const std::int32_t> interleaved, Bytes& out) {
  const std::uint32_t codes = SpecialCodes(format, interleaved);
  ByteWriter head;
  head.U32Be(Checksum(interleaved, format.bits) | (codes != 0 ? kCodesFollow : 0));
  if (codes != 0) head.U32Be(codes);
  out.insert(out.end(), head.View().begin(), head.View().end());
  RangeEncoder range(out);
  if (codes == 0 || codes == kSameChannels) {
    if (format.channels == 1 || codes == kSameChannels) {
      EncodeMono(format, interleaved, range);
    } else {
      EncodeStereo(format, interleaved, range);
    }
  }
  range.Finish();
}

}  // namespace ts5::ape
