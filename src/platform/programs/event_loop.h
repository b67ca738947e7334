// The one thread on which a program's state changes, and the queue by which other threads reach it.
//
// Whoever has something to report posts a function; it runs later, in order, on the thread that runs the
// loop.
#pragma once

#include <functional>

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

}  // namespace ts5
