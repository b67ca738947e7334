#include "audio/sample_codec.h"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstring>
#include <limits>

namespace ts5 {
namespace {

constexpr std::size_t kBlock = 1024;  // samples that are scaled and dithered together
constexpr double kMostFloat = std::numeric_limits<float>::max();

// Little-endian bytes in and out of numbers, whatever the machine; compilers make one instruction of it.
template <typename T>
T Load(const std::uint8_t* in) {
  std::array<std::uint8_t, sizeof(T)> bytes{};
  std::memcpy(bytes.data(), in, sizeof(T));
  if constexpr (std::endian::native == std::endian::big) std::ranges::reverse(bytes);
  return std::bit_cast<T>(bytes);
}
template <typename T>
void Store(T value, std::uint8_t* out) {
  auto bytes = std::bit_cast<std::array<std::uint8_t, sizeof(T)>>(value);
  if constexpr (std::endian::native == std::endian::big) std::ranges::reverse(bytes);
  std::memcpy(out, bytes.data(), sizeof(T));
}

std::int32_t Load24(const std::uint8_t* in) {
  const auto bits = static_cast<std::uint32_t>(in[0]) << 8 | static_cast<std::uint32_t>(in[1]) << 16 |
                    static_cast<std::uint32_t>(in[2]) << 24;
  return static_cast<std::int32_t>(bits) >> 8;
}

template <typename T>
void DecodeFloats(const std::uint8_t* in, std::span<double> out) {
  for (std::size_t i = 0; i < out.size(); ++i) {
    const T sample = Load<T>(in + i * sizeof(T));
    out[i] = std::isfinite(sample) ? std::clamp<double>(sample, -kMostFloat, kMostFloat) : 0.0;
  }
}

// The nearest whole number, halves to even, as two's complement in the low bits of what comes back: adding
// 1.5 * 2^52 leaves no room for a fraction.
std::int32_t Nearest(double value) {
  return static_cast<std::int32_t>(
      static_cast<std::uint32_t>(std::bit_cast<std::uint64_t>(value + 6755399441055744.0)));
}

std::int32_t Limited(double steps, double full) {
  return Nearest(std::min(std::max(steps, -full), full - 1));
}

// Numbers first, then their bytes: so the compiler takes several at once.
template <typename T>
void StoreAll(std::span<const double> steps, double full, std::uint8_t* out) {
  std::array<T, kBlock> whole;
  for (std::size_t i = 0; i < steps.size(); ++i) whole[i] = static_cast<T>(Limited(steps[i], full));
  for (std::size_t i = 0; i < steps.size(); ++i) Store(whole[i], out + i * sizeof(T));
}

void StoreSteps(SampleType type, std::span<const double> steps, double full, std::uint8_t* out) {
  switch (type) {
    case SampleType::Unsigned8:
      for (std::size_t i = 0; i < steps.size(); ++i)
        out[i] = static_cast<std::uint8_t>(Limited(steps[i], full) + 128);
      break;
    case SampleType::Signed16:
      StoreAll<std::int16_t>(steps, full, out);
      break;
    case SampleType::Signed24:
      for (std::size_t i = 0; i < steps.size(); ++i) {
        const auto bits = static_cast<std::uint32_t>(Limited(steps[i], full));
        out[i * 3] = static_cast<std::uint8_t>(bits);
        out[i * 3 + 1] = static_cast<std::uint8_t>(bits >> 8);
        out[i * 3 + 2] = static_cast<std::uint8_t>(bits >> 16);
      }
      break;
    default:
      StoreAll<std::int32_t>(steps, full, out);
      break;
  }
}

}  // namespace

void DecodeSamples(SampleType type, ByteView in, std::span<double> out) {
  const std::uint8_t* const bytes = in.data();
  switch (type) {
    case SampleType::Unsigned8:
      for (std::size_t i = 0; i < out.size(); ++i) out[i] = (bytes[i] - 128) * (1.0 / 128);
      break;
    case SampleType::Signed16:
      for (std::size_t i = 0; i < out.size(); ++i) out[i] = Load<std::int16_t>(bytes + i * 2) * (1.0 / 32768);
      break;
    case SampleType::Signed24:
      for (std::size_t i = 0; i < out.size(); ++i) out[i] = Load24(bytes + i * 3) * (1.0 / 8388608);
      break;
    case SampleType::Signed32:
      for (std::size_t i = 0; i < out.size(); ++i)
        out[i] = Load<std::int32_t>(bytes + i * 4) * (1.0 / 2147483648.0);
      break;
    case SampleType::Float32:
      DecodeFloats<float>(bytes, out);
      break;
    case SampleType::Float64:
      DecodeFloats<double>(bytes, out);
      break;
  }
}

Dither::Dither() {
  std::uint32_t seed = 0x9E3779B9;
  for (std::uint32_t& lane : state_) {
    lane = seed;
    seed = seed * 747796405U + 2891336453U;
  }
}

void Dither::Draw() {
  for (std::uint32_t& lane : state_) {
    lane ^= lane << 13;
    lane ^= lane >> 17;
    lane ^= lane << 5;
  }
}

void Dither::Add(std::span<double> steps) {
  // The sum of two even distributions of one step each: the halves of one random number.
  const auto triangular = [](std::uint32_t random) {
    return (static_cast<std::int32_t>(random >> 16) + static_cast<std::int32_t>(random & 0xFFFF) - 65535) *
           (1.0 / 65536);
  };
  std::size_t i = 0;
  for (; i + kLanes <= steps.size(); i += kLanes) {
    Draw();
    for (std::size_t lane = 0; lane < kLanes; ++lane) steps[i + lane] += triangular(state_[lane]);
  }
  if (i == steps.size()) return;
  Draw();
  for (std::size_t lane = 0; i < steps.size(); ++i, ++lane) steps[i] += triangular(state_[lane]);
}

void SampleEncoder::Encode(std::span<const double> in, std::span<std::uint8_t> out) {
  std::uint8_t* to = out.data();
  if (type_ == SampleType::Float32 || type_ == SampleType::Float64) {
    for (const double sample : in) {
      if (type_ == SampleType::Float32) {
        Store(static_cast<float>(std::min(std::max(sample, -kMostFloat), kMostFloat)), to);
      } else {
        Store(sample, to);
      }
      to += SampleSize(type_);
    }
    return;
  }
  const double full = std::ldexp(1.0, static_cast<int>(SampleBits(type_)) - 1);
  std::array<double, kBlock> block;
  while (!in.empty()) {
    const std::span<double> steps = std::span(block).first(std::min(kBlock, in.size()));
    for (std::size_t i = 0; i < steps.size(); ++i) steps[i] = in[i] * full;
    const auto sounds = [](double step) { return step != 0; };
    if (dithered_ && std::ranges::any_of(steps, sounds)) dither_.Add(steps);
    StoreSteps(type_, steps, full, to);
    to += steps.size() * SampleSize(type_);
    in = in.subspan(steps.size());
  }
}

}  // namespace ts5
