// Monkey's Audio on one core: each level over a minute of something like music, and the long filters with
// each instruction set. "x" are multiples of real time, "%" is the size beside the samples.
#include <benchmark/benchmark.h>

#include <cmath>

#include "audio/ape/adaptive_filter.h"
#include "audio/ape/ape_encoder.h"

namespace ts5 {
namespace {

constexpr std::size_t kRate = 44100;
constexpr std::size_t kSeconds = 60;

// Chords with overtones that fade, over a little noise.
std::vector<std::int32_t> Music() {
  std::vector<std::int32_t> samples;
  std::uint32_t noise = 1;
  for (std::size_t i = 0; i < kRate * kSeconds; ++i) {
    const std::size_t note = i / (kRate / 4);
    const double fade = std::exp(-static_cast<double>(i % (kRate / 4)) / kRate * 6);
    const double turn =
        static_cast<double>(i) * 0.02 * std::pow(2.0, static_cast<double>(note * 7 % 12) / 12);
    double value = 0;
    for (int overtone = 1; overtone <= 6; ++overtone) value += std::sin(turn * overtone) / overtone;
    noise = noise * 1664525 + 1013904223;
    const double hiss = static_cast<double>(noise >> 24) / 8 - 16;
    samples.push_back(static_cast<std::int32_t>(value * fade * 8000 + hiss));
    samples.push_back(static_cast<std::int32_t>(value * fade * 6000 - hiss));
  }
  return samples;
}

void ApeLevel(benchmark::State& state) {
  static const std::vector<std::int32_t> samples = Music();
  Bytes file;
  for (auto _ : state) {
    file.clear();
    auto encoder = ape::Encoder::Create(
        {kRate, 2, 16, ape::LevelOf(static_cast<std::uint32_t>(state.range(0)))}, kRate * kSeconds);
    encoder->Begin(file);
    (void)encoder->Add(samples, file);
    encoder->Finish(file);
    benchmark::DoNotOptimize(encoder->Head());
  }
  state.counters["x"] =
      benchmark::Counter(static_cast<double>(kSeconds * static_cast<std::size_t>(state.iterations())),
                         benchmark::Counter::kIsRate);
  state.counters["%"] = 100 * static_cast<double>(file.size()) / static_cast<double>(samples.size() * 2);
}
BENCHMARK(ApeLevel)->DenseRange(1000, 5000, 1000)->Unit(benchmark::kMillisecond);

void LongFilter(benchmark::State& state) {
  std::vector<std::int32_t> samples(kRate);
  for (std::size_t i = 0; i < samples.size(); ++i) samples[i] = static_cast<std::int16_t>(i * i);
  for (auto _ : state) {
    ape::AdaptiveFilter(static_cast<std::size_t>(state.range(0)), 11, static_cast<ape::Simd>(state.range(1)))
        .Filter(samples);
  }
  state.counters["samples"] =
      benchmark::Counter(static_cast<double>(samples.size()) * static_cast<double>(state.iterations()),
                         benchmark::Counter::kIsRate);
}
BENCHMARK(LongFilter)->ArgsProduct({{64, 1280}, {0, 1, static_cast<int>(ape::BestSimd())}});

}  // namespace
}  // namespace ts5
