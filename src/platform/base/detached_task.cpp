#include "platform/base/detached_task.h"

#include <condition_variable>
#include <mutex>
#include <system_error>
#include <thread>
#include <utility>

namespace ts5 {

struct DetachedTask::State {
  std::mutex mutex;
  std::condition_variable changed;
  bool ended = false;
  std::thread thread;

  ~State() {
    if (thread.joinable()) thread.detach();
  }
  // What the thread keeps for itself goes after its work: whoever has waited for the work finds that gone,
  // too.
  void Join() {
    std::thread over;
    {
      const std::lock_guard lock(mutex);
      over.swap(thread);
    }
    if (over.joinable()) over.join();
  }
};

std::optional<DetachedTask> DetachedTask::Start(std::function<void()> work) {
  auto state = std::make_shared<State>();
  try {
    const std::lock_guard lock(state->mutex);
    state->thread = std::thread([state, work = std::move(work)]() mutable {
      work();
      work = nullptr;
      const std::lock_guard ending(state->mutex);
      state->ended = true;
      state->changed.notify_all();
    });
  } catch (const std::system_error&) {
    return std::nullopt;
  }
  return DetachedTask(std::move(state));
}

bool DetachedTask::HasEnded() const {
  const std::lock_guard lock(state_->mutex);
  return state_->ended;
}

void DetachedTask::Wait() const {
  {
    std::unique_lock lock(state_->mutex);
    state_->changed.wait(lock, [this] { return state_->ended; });
  }
  state_->Join();
}

bool DetachedTask::WaitUntil(std::chrono::steady_clock::time_point end) const {
  {
    std::unique_lock lock(state_->mutex);
    if (!state_->changed.wait_until(lock, end, [this] { return state_->ended; })) return false;
  }
  state_->Join();
  return true;
}

}  // namespace ts5
