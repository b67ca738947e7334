// The long adaptive filters of the higher levels: a sign-sign LMS over 16 to 1280 past samples.
//
// Per sample: the products of weights and history, summed up modulo 2^32, are taken off; then each weight
// moves by what its past sample calls for, in the direction of what is left. Both loops run as one, over the
// weights of the sample before and the history of this one, so that the weights are loaded once.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

namespace ts5::ape {

// The instruction sets that the inner loop is written for; the best one that the processor has is taken.
enum class Simd : std::uint8_t { None, Sse2, Avx2 };
[[nodiscard]] Simd BestSimd();

class AdaptiveFilter {
 public:
  // order: a multiple of 16. The sum of products is rounded and shifted down by shift bits.
  AdaptiveFilter(std::size_t order, unsigned shift, Simd simd = BestSimd());

  // Replaces samples by what is left of them. Once for a filter: each frame begins with a new one.
  void Filter(std::span<std::int32_t> samples);

 private:
  // Adds sign (-1, 0, +1) times step to weights, then returns the product of weights and history.
  using Inner = std::int32_t (*)(std::int16_t* weights, const std::int16_t* step, const std::int16_t* history,
                                 std::size_t order, int sign);

  void PushStep(std::int32_t sample);
  void MoveToStart();

  std::size_t order_;
  unsigned shift_;
  Inner inner_;
  std::vector<std::int16_t> weights_;
  // Windows of the last `order_` values slide through these; position_ is the one behind the newest.
  std::vector<std::int16_t> history_;
  std::vector<std::int16_t> steps_;
  std::size_t position_;
  std::int32_t average_ = 0;  // of the samples' size, over about 16 of them
};

}  // namespace ts5::ape
