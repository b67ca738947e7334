#include "audio/ape/predictor.h"

#include <array>
#include <utility>

namespace ts5::ape {
namespace {

std::int32_t Wrapped(std::uint32_t value) {
  return static_cast<std::int32_t>(value);
}
std::int32_t Difference(std::int32_t a, std::int32_t b) {
  return Wrapped(static_cast<std::uint32_t>(a) - static_cast<std::uint32_t>(b));
}
std::int32_t SignOf(std::int32_t value) {
  return (value > 0) - (value < 0);
}

// x[n] - 31/32 x[n-1].
class FirstOrder {
 public:
  std::int32_t Next(std::int32_t sample) {
    const std::int32_t left = Difference(sample, Wrapped(static_cast<std::uint32_t>(last_) * 31U) >> 5);
    last_ = sample;
    return left;
  }

 private:
  std::int32_t last_ = 0;
};

// Weights over the newest value and its differences to the ones before, which move by one, in the direction
// of what is left, against the sign of each.
template <std::size_t N>
class Taps {
 public:
  explicit Taps(std::array<std::int32_t, N> weights) : weights_(weights) {}

  void Push(std::int32_t value) {
    for (std::size_t i = N - 1; i > 1; --i) {
      values_[i] = values_[i - 1];
      signs_[i] = signs_[i - 1];
    }
    values_[1] = Difference(value, values_[0]);
    signs_[1] = SignOf(values_[1]);
    values_[0] = value;
    signs_[0] = SignOf(value);
  }

  template <typename Sum>
  [[nodiscard]] Sum Product() const {
    Sum sum = 0;
    for (std::size_t i = 0; i < N; ++i) sum += static_cast<Sum>(values_[i]) * static_cast<Sum>(weights_[i]);
    return sum;
  }

  void Adapt(std::int32_t sign) {
    for (std::size_t i = 0; i < N; ++i) weights_[i] += sign * signs_[i];
  }

 private:
  std::array<std::int32_t, N> weights_;
  std::array<std::int32_t, N> values_{};
  std::array<std::int32_t, N> signs_{};
};

constexpr std::array<std::int32_t, 4> kOwnWeights{360, 317, -109, 98};
constexpr unsigned kShift = 10;

struct Wrap32 {
  using Sum = std::uint32_t;  // the same bits as signed ones, without an overflow
  static std::int32_t Predicted(Sum own, Sum other) {
    return Wrapped(own + static_cast<Sum>(Wrapped(other) >> 1)) >> kShift;
  }
};
struct Full64 {
  using Sum = std::int64_t;
  static std::int32_t Predicted(Sum own, Sum other) {
    return static_cast<std::int32_t>((own + (other >> 1)) >> kShift);
  }
};

template <typename Arithmetic>
class StereoChannel {
 public:
  // other: the newest sample of the other channel that a reader knows by then.
  std::int32_t Next(std::int32_t sample, std::int32_t other) {
    using Sum = typename Arithmetic::Sum;
    const std::int32_t filtered = ownOrder_.Next(sample);
    other_.Push(otherOrder_.Next(other));
    const std::int32_t left = Difference(
        filtered, Arithmetic::Predicted(own_.template Product<Sum>(), other_.template Product<Sum>()));
    own_.Adapt(SignOf(left));
    other_.Adapt(SignOf(left));
    own_.Push(filtered);
    return left;
  }

 private:
  FirstOrder ownOrder_;
  FirstOrder otherOrder_;
  Taps<4> own_{kOwnWeights};
  Taps<5> other_{{}};
};

template <typename Arithmetic>
void Predict(std::span<std::int32_t> first, std::span<std::int32_t> second) {
  StereoChannel<Arithmetic> a;
  StereoChannel<Arithmetic> b;
  std::int32_t lastSecond = 0;
  for (std::size_t i = 0; i < first.size(); ++i) {
    const std::int32_t newFirst = first[i];
    first[i] = a.Next(newFirst, lastSecond);
    lastSecond = second[i];
    second[i] = b.Next(lastSecond, newFirst);
  }
}

}  // namespace

void PredictMono(std::span<std::int32_t> samples) {
  FirstOrder order;
  Taps<4> own{kOwnWeights};
  for (std::int32_t& sample : samples) {
    const std::int32_t filtered = order.Next(sample);
    sample = Difference(filtered, Wrap32::Predicted(own.Product<Wrap32::Sum>(), 0));
    own.Adapt(SignOf(sample));
    own.Push(filtered);
  }
}

void PredictStereo(std::span<std::int32_t> first, std::span<std::int32_t> second, Products products) {
  if (products == Products::Full64) {
    Predict<Full64>(first, second);
  } else {
    Predict<Wrap32>(first, second);
  }
}

}  // namespace ts5::ape
