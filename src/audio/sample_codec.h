// Samples between their bytes in wave files and the numbers that are computed with: 64-bit floats, full scale
// at -1 and +1. A whole number of n bits is divided by 2^(n-1), so every depth up to 32 bits comes back
// exactly; an 8-bit sample counts from 128.
#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "platform/base/bytes.h"
#include "platform/media/wave_format.h"

namespace ts5 {

// in holds out.size() samples. Numbers that are none, and infinite ones, become 0; those beyond what 32-bit
// floats hold are limited to it, so that sums of them stay numbers.
void DecodeSamples(SampleType type, ByteView in, std::span<double> out);

// Triangular dither of two quantisation steps' width, white, the same in every run.
class Dither {
 public:
  Dither();
  // Adds dither, in steps, to samples that are scaled to steps.
  void Add(std::span<double> steps);

 private:
  static constexpr std::size_t kLanes = 8;
  void Draw();

  std::array<std::uint32_t, kLanes> state_{};
};

// Rounds to the nearest step (halves to the even one) and limits to what the depth can hold; never wraps.
// Floats stay as they are.
class SampleEncoder {
 public:
  // dither is for the depths of 8 and 16 bits. Silence of a whole block stays silence.
  SampleEncoder(SampleType type, bool dither) : type_(type), dithered_(dither) {}
  // out has room for in.size() samples.
  void Encode(std::span<const double> in, std::span<std::uint8_t> out);

 private:
  SampleType type_;
  bool dithered_;
  Dither dither_;
};

}  // namespace ts5
