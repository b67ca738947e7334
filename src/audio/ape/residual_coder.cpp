#include "audio/ape/residual_coder.h"

#include <algorithm>
#include <array>
#include <bit>

namespace ts5::ape {
namespace {

// Where the symbols 0..20 begin in a total of 2^16; each one behind them is one wide.
constexpr std::array<std::uint16_t, 22> kBegin{0,     19578, 36160, 48417, 56323, 60899, 63265, 64435,
                                               64971, 65232, 65351, 65416, 65447, 65466, 65476, 65482,
                                               65485, 65488, 65490, 65491, 65492, 65493};
constexpr std::uint32_t kRare = kBegin.size() - 1;
constexpr std::uint32_t kEscape = 63;
constexpr unsigned kTotalBits = 16;

void EncodeQuotient(std::uint32_t quotient, RangeEncoder& out) {
  const std::uint32_t symbol = std::min(quotient, kEscape);
  if (symbol < kRare) {
    const std::uint32_t begin = kBegin[symbol];
    out.EncodeShift(begin, kBegin[symbol + 1] - begin, kTotalBits);
  } else {
    out.EncodeShift(kBegin[kRare] + (symbol - kRare), 1, kTotalBits);
  }
  if (symbol == kEscape) {
    out.EncodeShift(quotient >> 16, 1, kTotalBits);
    out.EncodeShift(quotient & 0xFFFF, 1, kTotalBits);
  }
}

// Evenly among pivot values; the coder takes totals of at most 2^16 at a time.
void EncodeRemainder(std::uint32_t remainder, std::uint32_t pivot, RangeEncoder& out) {
  if (pivot < 0x10000) {
    out.Encode(remainder, 1, pivot);
    return;
  }
  const auto lowBits = static_cast<unsigned>(std::bit_width(pivot)) - 16;
  out.Encode(remainder >> lowBits, 1, (pivot >> lowBits) + 1);
  out.Encode(remainder & ((1U << lowBits) - 1), 1, 1U << lowBits);
}

}  // namespace

void ResidualCoder::Encode(std::int32_t residual, RangeEncoder& out) {
  // 0, 1, -1, 2, -2 ... become 0, 1, 2, 3, 4 ...
  const auto bits = static_cast<std::uint32_t>(residual);
  const std::uint32_t folded = residual > 0 ? 2 * bits - 1 : 0U - 2 * bits;
  const std::uint32_t pivot = std::max(sum_ >> 5, 1U);
  const std::uint32_t quotient = folded / pivot;
  EncodeQuotient(quotient, out);
  EncodeRemainder(folded - quotient * pivot, pivot, out);
  sum_ += (folded + 1) / 2 - ((sum_ + 16) >> 5);
}

}  // namespace ts5::ape
