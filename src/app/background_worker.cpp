#include "app/background_worker.h"

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <mutex>
#include <thread>
#include <utility>

namespace ts5 {
namespace {

// How long the end of the program waits for work that is under way.
constexpr std::chrono::milliseconds kPatience{300};

}  // namespace

struct BackgroundWorker::State {
  std::mutex mutex;
  std::condition_variable changed;
  std::deque<std::function<Done()>> waiting;
  std::uint64_t round = 0;  // raised by DropAll: results of earlier rounds are dropped
  bool running = false;     // the thread exists
  bool closed = false;
  QObject* owner = nullptr;

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
    changed.notify_all();
  }
};

BackgroundWorker::BackgroundWorker(QObject* parent) : QObject(parent), state_(std::make_shared<State>()) {
  state_->owner = this;
}

BackgroundWorker::~BackgroundWorker() {
  std::unique_lock lock(state_->mutex);
  state_->closed = true;
  state_->waiting.clear();
  state_->changed.wait_for(lock, kPatience, [this] { return !state_->running; });
}

void BackgroundWorker::Start(std::function<Done()> work) {
  const std::lock_guard lock(state_->mutex);
  state_->waiting.push_back(std::move(work));
  if (state_->running) return;
  state_->running = true;
  std::thread([state = state_] { state->Loop(state); }).detach();
}

void BackgroundWorker::DropAll() {
  const std::lock_guard lock(state_->mutex);
  state_->waiting.clear();
  ++state_->round;
}

}  // namespace ts5
