#include "audio/channel_mix.h"

#include <algorithm>
#include <array>
#include <bit>
#include <cmath>

namespace ts5 {
namespace {

struct Fold {
  double left;
  double right;
};

constexpr double kHalfPower = 0.70710678118654752440;
// By the bits of the channel mask: front left, right, centre, low frequency, back left, right, front left and
// right of centre, back centre, side left, right.
constexpr std::array<Fold, 11> kFolds{{{1, 0},
                                       {0, 1},
                                       {kHalfPower, kHalfPower},
                                       {0, 0},
                                       {kHalfPower, 0},
                                       {0, kHalfPower},
                                       {kHalfPower, 0},
                                       {0, kHalfPower},
                                       {0.5, 0.5},
                                       {kHalfPower, 0},
                                       {0, kHalfPower}}};

// The loudspeaker of each channel; channels without one count left and right in turn.
std::vector<Fold> FoldsOf(std::uint32_t channels, std::uint32_t mask) {
  std::vector<Fold> folds;
  for (std::uint32_t channel = 0; channel < channels; ++channel) {
    const int bit = mask == 0 ? -1 : std::countr_zero(mask);
    mask &= mask - 1;
    if (bit >= 0 && static_cast<std::size_t>(bit) < kFolds.size()) {
      folds.push_back(kFolds.at(static_cast<std::size_t>(bit)));
    } else {
      folds.push_back(channel % 2 == 0 ? Fold{1, 0} : Fold{0, 1});
    }
  }
  return folds;
}

}  // namespace

ChannelMix::ChannelMix(std::uint32_t from, std::uint32_t to, std::uint32_t mask)
    : from_(from), to_(to), gains_(std::size_t{from} * to) {
  if (from == to) {
    for (std::uint32_t i = 0; i < from; ++i) gains_[std::size_t{i} * from + i] = 1;
    return;
  }
  if (from == 1) {
    std::ranges::fill(gains_, 1.0);
    return;
  }
  const std::vector<Fold> folds = from == 2 ? std::vector<Fold>{{1, 0}, {0, 1}} : FoldsOf(from, mask);
  double left = 0;
  double right = 0;
  for (const Fold& fold : folds) {
    left += fold.left;
    right += fold.right;
  }
  double most = std::max(left, right);
  if (most == 0) most = 1;
  for (std::uint32_t channel = 0; channel < from; ++channel) {
    const Fold fold{folds[channel].left / most, folds[channel].right / most};
    if (to == 1) {
      gains_[channel] = (fold.left + fold.right) / 2;
      continue;
    }
    // Further channels of the target stay silent.
    gains_[channel] = fold.left;
    gains_[std::size_t{from} + channel] = fold.right;
  }
}

void ChannelMix::Apply(std::span<const double> in, std::span<double> out) const {
  const std::size_t frames = in.size() / from_;
  if (!Changes()) {
    std::ranges::copy(in, out.begin());
  } else if (from_ == 1 && to_ == 2) {
    for (std::size_t i = 0; i < frames; ++i) out[2 * i] = out[2 * i + 1] = in[i];
  } else if (from_ == 2 && to_ == 1) {
    for (std::size_t i = 0; i < frames; ++i) out[i] = (in[2 * i] + in[2 * i + 1]) * 0.5;
  } else {
    for (std::size_t i = 0; i < frames; ++i) {
      for (std::size_t target = 0; target < to_; ++target) {
        double sum = 0;
        for (std::size_t source = 0; source < from_; ++source)
          sum += in[i * from_ + source] * gains_[target * from_ + source];
        out[i * to_ + target] = sum;
      }
    }
  }
}

}  // namespace ts5
