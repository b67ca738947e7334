// Which frame of a title sounds when so many frames have been played: one after the other, until the title
// jumps to another place or goes at another speed. Used by one thread that plans ahead and others that look.
#pragma once

#include <cstdint>
#include <deque>
#include <mutex>

namespace ts5 {

class PlayedFrames {
 public:
  // From here nothing has been played yet.
  void Begin(std::uint64_t frame, double speed) {
    const std::lock_guard lock(mutex_);
    legs_ = {{0, frame}};
    speed_ = speed;
  }
  // When so many have been played it goes on at another frame.
  void Jump(std::uint64_t played, std::uint64_t frame) {
    const std::lock_guard lock(mutex_);
    legs_.push_back({played, frame});
  }
  [[nodiscard]] std::uint64_t FrameAt(std::uint64_t played) {
    const std::lock_guard lock(mutex_);
    while (legs_.size() > 1 && legs_[1].played <= played) legs_.pop_front();
    const Leg& leg = legs_.front();
    const std::uint64_t since = played > leg.played ? played - leg.played : 0;
    return leg.frame + static_cast<std::uint64_t>(static_cast<double>(since) * speed_);
  }

 private:
  struct Leg {
    std::uint64_t played = 0;
    std::uint64_t frame = 0;
  };
  std::mutex mutex_;
  std::deque<Leg> legs_{{0, 0}};
  double speed_ = 1;
};

}  // namespace ts5
