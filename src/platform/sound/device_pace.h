// Tells a sound device that works from one that has gone: a device moves samples, and in real time. One that
// has gone stops, or runs away because nothing holds it back any more.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>

namespace ts5 {

class DevicePace {
 public:
  using Clock = std::chrono::steady_clock;

  explicit DevicePace(std::uint32_t sampleRate) : sampleRate_(sampleRate) {}

  // On the device's thread, with every block.
  void Moved(std::uint64_t frames, Clock::time_point at = Clock::now()) {
    const auto now = at.time_since_epoch();
    if (first_.load().count() == 0) first_ = now;
    last_ = now;
    frames_ += frames;
  }

  // From any thread; true before the first block.
  [[nodiscard]] bool Alive(Clock::time_point at = Clock::now()) const {
    if (last_.load().count() == 0) return true;
    const auto now = at.time_since_epoch();
    const std::chrono::seconds moved(frames_.load() / sampleRate_);
    return now - last_.load() < kPatience && moved < now - first_.load() + kMostAhead;
  }

 private:
  static constexpr std::chrono::seconds kPatience{5};   // what a server lets pass between two blocks
  static constexpr std::chrono::seconds kMostAhead{5};  // what a device may buffer

  std::uint32_t sampleRate_;
  std::atomic<Clock::duration> first_{};
  std::atomic<Clock::duration> last_{};
  std::atomic<std::uint64_t> frames_ = 0;
};

}  // namespace ts5
