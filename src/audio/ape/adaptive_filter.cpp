#include "audio/ape/adaptive_filter.h"

#include <algorithm>
#include <limits>

#if defined(__x86_64__)
#include <immintrin.h>
#endif

namespace ts5::ape {
namespace {

constexpr std::size_t kWindowMoves = 2048;  // samples until the windows are moved back to the start

std::int32_t InnerPlain(std::int16_t* weights, const std::int16_t* step, const std::int16_t* history,
                        std::size_t order, int sign) {
  std::uint32_t sum = 0;
  for (std::size_t i = 0; i < order; ++i) {
    weights[i] = static_cast<std::int16_t>(weights[i] + sign * step[i]);
    sum += static_cast<std::uint32_t>(weights[i] * history[i]);
  }
  return static_cast<std::int32_t>(sum);
}

#if defined(__x86_64__)

// Every x86-64 processor has SSE2.
std::int32_t InnerSse2(std::int16_t* weights, const std::int16_t* step, const std::int16_t* history,
                       std::size_t order, int sign) {
  const __m128i signs = _mm_set1_epi16(static_cast<std::int16_t>(sign));
  __m128i sum = _mm_setzero_si128();
  for (std::size_t i = 0; i < order; i += 8) {
    auto* const at = reinterpret_cast<__m128i*>(weights + i);
    const __m128i steps = _mm_loadu_si128(reinterpret_cast<const __m128i*>(step + i));
    const __m128i past = _mm_loadu_si128(reinterpret_cast<const __m128i*>(history + i));
    const __m128i weight = _mm_add_epi16(_mm_loadu_si128(at), _mm_mullo_epi16(steps, signs));
    _mm_storeu_si128(at, weight);
    sum = _mm_add_epi32(sum, _mm_madd_epi16(weight, past));
  }
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(1, 0, 3, 2)));
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
  return _mm_cvtsi128_si32(sum);
}

__attribute__((target("avx2"))) std::int32_t InnerAvx2(std::int16_t* weights, const std::int16_t* step,
                                                       const std::int16_t* history, std::size_t order,
                                                       int sign) {
  const __m256i signs = _mm256_set1_epi16(static_cast<std::int16_t>(sign));
  __m256i sums = _mm256_setzero_si256();
  for (std::size_t i = 0; i < order; i += 16) {
    auto* const at = reinterpret_cast<__m256i*>(weights + i);
    const __m256i steps = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(step + i));
    const __m256i past = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(history + i));
    const __m256i weight = _mm256_add_epi16(_mm256_loadu_si256(at), _mm256_sign_epi16(steps, signs));
    _mm256_storeu_si256(at, weight);
    sums = _mm256_add_epi32(sums, _mm256_madd_epi16(weight, past));
  }
  __m128i sum = _mm_add_epi32(_mm256_castsi256_si128(sums), _mm256_extracti128_si256(sums, 1));
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(1, 0, 3, 2)));
  sum = _mm_add_epi32(sum, _mm_shuffle_epi32(sum, _MM_SHUFFLE(2, 3, 0, 1)));
  return _mm_cvtsi128_si32(sum);
}

#endif

auto InnerFor(Simd simd) {
#if defined(__x86_64__)
  if (simd == Simd::Avx2) return InnerAvx2;
  if (simd == Simd::Sse2) return InnerSse2;
#else
  (void)simd;
#endif
  return InnerPlain;
}

int SignOf(std::int32_t value) {
  return (value > 0) - (value < 0);
}

// By how much a weight moves for a sample: more for one that is large beside its neighbours.
std::int16_t StepFor(std::int32_t sample, std::int64_t average) {
  const std::int64_t size = std::abs(static_cast<std::int64_t>(sample));
  const int scale = (size > average * 3) + (size > average + average / 3);
  return static_cast<std::int16_t>(SignOf(sample) * (8 << scale));
}

}  // namespace

Simd BestSimd() {
#if defined(__x86_64__)
  static const Simd best = __builtin_cpu_supports("avx2") ? Simd::Avx2 : Simd::Sse2;
  return best;
#else
  return Simd::None;
#endif
}

AdaptiveFilter::AdaptiveFilter(std::size_t order, unsigned shift, Simd simd)
    : order_(order),
      shift_(shift),
      inner_(InnerFor(simd)),
      weights_(order),
      history_(order + kWindowMoves),
      steps_(order + kWindowMoves),
      position_(order) {}

void AdaptiveFilter::Filter(std::span<std::int32_t> samples) {
  const std::int64_t half = std::int64_t{1} << (shift_ - 1);
  // The step of the sample before moves the weights with the window it was computed with, so it is one
  // behind.
  std::int32_t previous = 0;
  int sign = 0;
  for (std::int32_t& sample : samples) {
    history_[position_] = static_cast<std::int16_t>(std::clamp<std::int32_t>(
        previous, std::numeric_limits<std::int16_t>::min(), std::numeric_limits<std::int16_t>::max()));
    const std::size_t start = position_ - order_;
    const std::int32_t product =
        inner_(weights_.data(), steps_.data() + start, history_.data() + start + 1, order_, sign);
    PushStep(previous);
    previous = sample;
    const auto predicted = static_cast<std::uint32_t>((product + half) >> shift_);
    sample = static_cast<std::int32_t>(static_cast<std::uint32_t>(sample) - predicted);
    sign = SignOf(sample);
  }
}

void AdaptiveFilter::PushStep(std::int32_t sample) {
  std::int16_t* const newest = steps_.data() + position_;
  *newest = StepFor(sample, average_);
  for (const std::ptrdiff_t back : {1, 2, 8}) newest[-back] = static_cast<std::int16_t>(newest[-back] >> 1);
  average_ += (static_cast<std::int32_t>(std::abs(static_cast<std::int64_t>(sample))) - average_) / 16;
  if (++position_ == history_.size()) MoveToStart();
}

void AdaptiveFilter::MoveToStart() {
  for (std::vector<std::int16_t>* values : {&history_, &steps_})
    std::copy(values->end() - static_cast<std::ptrdiff_t>(order_), values->end(), values->begin());
  position_ = order_;
}

}  // namespace ts5::ape
