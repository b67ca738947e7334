// How long work over many events is watched from outside: asked now and then whether to go on, and told how
// far it is. Without functions it runs through.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>

namespace ts5 {

// Asked now and then whether work is to stop; may be empty.
using CancelCheck = std::function<bool()>;

struct WorkWatch {
  CancelCheck cancelled = {};
  std::function<void(double)> progress = {};  // fraction done, 0 to 1
};

// Call GoOn once per event; false when the work is to stop.
class WatchedWork {
 public:
  WatchedWork(const WorkWatch& watch, std::size_t total) : watch_(watch), total_(total) {}

  [[nodiscard]] bool GoOn(std::size_t done) {
    if (++events_ % kEventsBetween != 0) return true;
    if (watch_.progress && total_ != 0)
      watch_.progress(static_cast<double>(done) / static_cast<double>(total_));
    return !watch_.cancelled || !watch_.cancelled();
  }

 private:
  static constexpr std::uint32_t kEventsBetween = 1U << 14;  // well below a millisecond of work

  const WorkWatch& watch_;
  std::size_t total_;
  std::uint32_t events_ = 0;
};

}  // namespace ts5
