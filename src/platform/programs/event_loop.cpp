#include "platform/programs/event_loop.h"

#include <utility>

namespace ts5 {

using Clock = std::chrono::steady_clock;

void StandardEventLoop::Post(std::function<void()> event) {
  {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
  }
  arrived_.notify_one();
}

void StandardEventLoop::Quit() {
  {
    const std::lock_guard lock(mutex_);
    quit_ = true;
  }
  arrived_.notify_one();
}

// The next event; an empty function after Quit (which is used up by that) or when the time is over.
std::function<void()> StandardEventLoop::Take(Clock::time_point deadline) {
  std::unique_lock lock(mutex_);
  const auto ready = [&] { return quit_ || !events_.empty(); };
  if (deadline == Clock::time_point::max()) {
    arrived_.wait(lock, ready);
  } else if (!arrived_.wait_until(lock, deadline, ready)) {
    return {};
  }
  if (std::exchange(quit_, false)) return {};
  std::function<void()> event = std::move(events_.front());
  events_.pop_front();
  return event;
}

void StandardEventLoop::Run() {
  while (const auto event = Take(Clock::time_point::max())) event();
}

std::size_t StandardEventLoop::RunPending() {
  std::deque<std::function<void()>> pending;
  {
    const std::lock_guard lock(mutex_);
    pending.swap(events_);
  }
  for (const auto& event : pending) event();
  return pending.size();
}

bool StandardEventLoop::RunUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout) {
  const Clock::time_point deadline = Clock::now() + timeout;
  while (!done()) {
    const auto event = Take(deadline);
    if (!event) return false;
    event();
  }
  return true;
}

}  // namespace ts5
