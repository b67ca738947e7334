// The one thread on which a program's state changes, and the queue by which other threads reach it.
//
// Whoever has something to report posts a function; it runs later, in order, on the thread that runs the
// loop. The desktop has a loop of its own behind the same interface.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstddef>
#include <deque>
#include <functional>
#include <mutex>

namespace ts5 {

class EventLoop {
 public:
  EventLoop() = default;
  EventLoop(const EventLoop&) = delete;
  EventLoop& operator=(const EventLoop&) = delete;
  virtual ~EventLoop() = default;

  // From any thread, also from inside an event. Events that are never run are destroyed with the loop.
  virtual void Post(std::function<void()> event) = 0;
};

// The loop of a program without windows. All but Post and Quit belong to one thread.
class StandardEventLoop final : public EventLoop {
 public:
  void Post(std::function<void()> event) override;

  // Runs events, and waits for more, until Quit.
  void Run();
  // From any thread: the running or the next Run or RunUntil returns after the event at hand.
  void Quit();
  // Runs the events that are there now, not those that they post; how many.
  std::size_t RunPending();
  // Runs events until done() is true, which is asked first and after every event. False: Quit, or the time is
  // over.
  bool RunUntil(const std::function<bool()>& done, std::chrono::milliseconds timeout);

 private:
  std::function<void()> Take(std::chrono::steady_clock::time_point deadline);

  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<std::function<void()>> events_;
  bool quit_ = false;
};

}  // namespace ts5
