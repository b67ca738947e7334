#include "audio/player_stream.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <thread>

#include "frame/player_parameters.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;

// Decoded ahead, so that a disc or a network that makes a pause is not heard; and what there is of it before
// the device begins.
constexpr std::size_t kSecondsAhead = 8;
constexpr std::size_t kStartParts = 2;  // of a second

}  // namespace

PlayerStream::PlayerStream(std::uint32_t sampleRate, LevelTap& levels)
    : rate_(sampleRate), levels_(levels), fifo_(std::size_t{sampleRate} * kPlayerChannels * kSecondsAhead) {}

void PlayerStream::Render(std::span<float> out) {
  std::size_t count = 0;
  if (flush_.load(std::memory_order_acquire)) {
    fifo_.Drop();
    flush_.store(false, std::memory_order_release);
  } else if (!paused_.load(std::memory_order_relaxed)) {
    count = fifo_.Take(out);
  }
  std::ranges::fill(out.subspan(count), 0.0F);
  // Gains reach their new values within a block, so that nothing clicks.
  const float target[kPlayerChannels] = {left_.load(), right_.load()};
  const float step = 1.0F / static_cast<float>(std::max<std::size_t>(count / kPlayerChannels, 1));
  for (std::size_t i = 0; i < count; ++i) {
    const std::size_t channel = i % kPlayerChannels;
    const std::size_t frame = i / kPlayerChannels;
    const float part = static_cast<float>(frame + 1) * step;
    out[i] *= gain_[channel] + (target[channel] - gain_[channel]) * part;
  }
  std::copy(std::begin(target), std::end(target), std::begin(gain_));
  played_.fetch_add(count / kPlayerChannels, std::memory_order_relaxed);
  levels_.Add(out, kPlayerChannels, rate_);
}

void PlayerStream::SetSound(PlayerSound sound) {
  const auto gain = [](std::int32_t hundredths) {
    return hundredths <= kLowestVolume ? 0.0F : static_cast<float>(std::pow(10.0, hundredths / 2000.0));
  };
  left_ = gain(sound.volume) * gain(std::min(-sound.balance, 0));
  right_ = gain(sound.volume) * gain(std::min(sound.balance, 0));
}

void PlayerStream::Restart(const AudioOutput& output) {
  flush_.store(true, std::memory_order_release);
  const auto patience = std::chrono::steady_clock::now() + 1s;
  while (flush_ && output.Alive() && std::chrono::steady_clock::now() < patience)
    std::this_thread::sleep_for(1ms);
  played_ = 0;
}

bool PlayerStream::HasEnoughToBegin() const {
  return fifo_.Size() >= std::size_t{rate_} * kPlayerChannels / kStartParts;
}

}  // namespace ts5
