// An event loop for tests: runs on the test's own thread what others have posted.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/programs/event_loop.h"

namespace ts5::test {

class TestLoop final : public EventLoop {
 public:
  void Post(std::function<void()> event) override {
    const std::lock_guard lock(mutex_);
    events_.push_back(std::move(event));
    arrived_.notify_one();
  }

  // Runs events until done() is true, which is asked first and after every event. False: no event came.
  bool RunUntil(const std::function<bool()>& done) {
    constexpr std::chrono::seconds kPatience{30};
    while (!done()) {
      std::unique_lock lock(mutex_);
      if (!arrived_.wait_for(lock, kPatience, [this] { return !events_.empty(); })) return false;
      const auto event = std::move(events_.front());
      events_.pop_front();
      lock.unlock();
      event();
    }
    return true;
  }

  // Runs what is there now.
  void RunPending() {
    bool last = false;
    Post([&last] { last = true; });
    RunUntil([&last] { return last; });
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::function<void()>> events_;
};

}  // namespace ts5::test
