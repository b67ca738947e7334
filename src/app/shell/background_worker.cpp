#include "app/shell/background_worker.h"

#include <chrono>
#include <cstdint>
#include <deque>
#include <mutex>
#include <optional>
#include <utility>

#include "platform/base/detached_task.h"

namespace ts5 {
namespace {

// How long the end of the program waits for work that is under way.
constexpr std::chrono::milliseconds kPatience{300};

}  // namespace

struct BackgroundWorker::State {
  std::mutex mutex;
  std::deque<std::function<Done()>> waiting;
  std::uint64_t round = 0;  // raised by DropAll: results of earlier rounds are dropped
  bool running = false;     // the task takes what is waiting
  bool closed = false;
  QObject* owner = nullptr;
  std::optional<DetachedTask> task;  // the owner's alone

  void Loop(const std::shared_ptr<State>& self) {
    std::unique_lock lock(mutex);
    while (!closed && !waiting.empty()) {
      const auto work = std::move(waiting.front());
      waiting.pop_front();
      const std::uint64_t begunIn = round;
      lock.unlock();
      Done done = work();
      lock.lock();
      if (closed) break;
      // The owner lives: it closes under this lock before it goes.
      QMetaObject::invokeMethod(
          owner,
          [self, begunIn, done = std::move(done)] {
            {
              const std::lock_guard guard(self->mutex);
              if (self->closed || self->round != begunIn) return;
            }
            if (done) done();
          },
          Qt::QueuedConnection);
    }
    running = false;
  }
};

BackgroundWorker::BackgroundWorker(QObject* parent) : QObject(parent), state_(std::make_shared<State>()) {
  state_->owner = this;
}

BackgroundWorker::~BackgroundWorker() {
  {
    const std::lock_guard lock(state_->mutex);
    state_->closed = true;
    state_->waiting.clear();
  }
  if (state_->task) (void)state_->task->WaitFor(kPatience);
}

void BackgroundWorker::Start(std::function<Done()> work) {
  {
    const std::lock_guard lock(state_->mutex);
    state_->waiting.push_back(std::move(work));
    if (state_->running) return;
    state_->running = true;
  }
  // Without a thread the window waits for its work; that is better than to go without.
  state_->task = DetachedTask::Start([state = state_] { state->Loop(state); });
  if (!state_->task) state_->Loop(state_);
}

void BackgroundWorker::DropAll() {
  const std::lock_guard lock(state_->mutex);
  state_->waiting.clear();
  ++state_->round;
}

}  // namespace ts5
