#include "platform/sound/live_level.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace ts5 {
namespace {

constexpr float kTop = 0.95F;           // of full scale
constexpr float kRecovery = 1.005F;     // from block to block, about 4 dB in a second
constexpr std::size_t kFastRamp = 128;  // samples: short, but no click

}  // namespace

void LiveLevel::Apply(std::span<float> interleaved) {
  float peak = 0;
  for (const float sample : interleaved) peak = std::max(peak, std::abs(sample));
  const float room = peak * kLouder > kTop ? kTop / peak : kLouder;
  const float next = std::min(room, gain_ * kRecovery);
  const std::size_t ramp = next < gain_ ? std::min(kFastRamp, interleaved.size()) : interleaved.size();
  const float step = (next - gain_) / static_cast<float>(std::max<std::size_t>(ramp, 1));
  for (std::size_t i = 0; i < interleaved.size(); ++i) {
    if (i < ramp) gain_ += step;
    interleaved[i] = std::clamp(interleaved[i] * gain_, -1.0F, 1.0F);
  }
  gain_ = next;
}

}  // namespace ts5
