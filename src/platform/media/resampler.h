// Changes the sample rate at the best quality of libsoxr (28 bits, linear phase).
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/base/outcome.h"

namespace ts5 {

// How many frames come out of so many, to the nearest.
[[nodiscard]] std::uint64_t ResampledLength(std::uint64_t frames, std::uint32_t fromRate,
                                            std::uint32_t toRate);

class Resampler {
 public:
  // FormatRefused: rates that are more than 1 to 1024 apart. OutOfMemory.
  [[nodiscard]] static Result<Resampler> Create(std::uint32_t fromRate, std::uint32_t toRate,
                                                std::uint32_t channels);
  Resampler(Resampler&&) noexcept;
  Resampler& operator=(Resampler&&) noexcept;
  ~Resampler();

  // Takes all of in and appends what comes out so far.
  [[nodiscard]] Outcome Process(std::span<const double> in, std::vector<double>& out);
  // Appends the rest, so that ResampledLength() frames have come out in all.
  [[nodiscard]] Outcome Finish(std::vector<double>& out);
  // Begins anew.
  void Reset();

 private:
  struct State;
  explicit Resampler(std::unique_ptr<State> state);
  std::unique_ptr<State> state_;
};

}  // namespace ts5
