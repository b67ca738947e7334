// Work on a thread of its own that may be left behind: what hangs in the system must not hold up those who
// wait for it, nor the end of the program. So the work owns all that it uses.
#pragma once

#include <chrono>
#include <functional>
#include <memory>
#include <optional>

namespace ts5 {

class DetachedTask {
 public:
  // Nothing when the system gives no thread: then nothing was begun. The work throws nothing; it is gone,
  // with all it holds, before the task counts as ended.
  [[nodiscard]] static std::optional<DetachedTask> Start(std::function<void()> work);

  [[nodiscard]] bool HasEnded() const;
  void Wait() const;
  // Whether it has ended by then.
  bool WaitUntil(std::chrono::steady_clock::time_point end) const;
  bool WaitFor(std::chrono::milliseconds patience) const {
    return WaitUntil(std::chrono::steady_clock::now() + patience);
  }

 private:
  struct State;
  explicit DetachedTask(std::shared_ptr<State> state) : state_(std::move(state)) {}
  std::shared_ptr<State> state_;
};

}  // namespace ts5
