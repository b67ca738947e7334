#include "midi/play_transport.h"

#include <algorithm>
#include <utility>

namespace ts5 {
namespace {

using std::chrono::nanoseconds;

// So that a stop is seen while a device goes on in its own time.
constexpr std::chrono::milliseconds kOwnTimeSlice{50};
// So that the end of a device is seen while nothing is sent.
constexpr std::chrono::milliseconds kLookAtDevice{250};

nanoseconds Times(nanoseconds time, double factor) {
  return factor == 1 ? time
                     : nanoseconds(static_cast<std::int64_t>(static_cast<double>(time.count()) * factor));
}

}  // namespace

void PlayTransport::Stop() {
  const std::lock_guard lock(mutex_);
  stop_ = true;
  steered_.notify_all();
}

void PlayTransport::Pause() {
  const std::lock_guard lock(mutex_);
  if (paused_) return;
  located_ = Elapsed();
  paused_ = true;
  steered_.notify_all();
}

void PlayTransport::Resume() {
  const std::lock_guard lock(mutex_);
  if (!paused_) return;
  paused_ = false;
  locatedAt_ = Clock::now();
  steered_.notify_all();
}

void PlayTransport::Seek(nanoseconds place) {
  const std::lock_guard lock(mutex_);
  seek_ = place;
  steered_.notify_all();
}

void PlayTransport::SetRate(double rate) {
  const std::lock_guard lock(mutex_);
  if (rate == rate_) return;
  SetPlace(Elapsed());
  rate_ = rate;
  steered_.notify_all();
}

void PlayTransport::Change() {
  const std::lock_guard lock(mutex_);
  changed_ = true;
  steered_.notify_all();
}

bool PlayTransport::Paused() const {
  const std::lock_guard lock(mutex_);
  return paused_;
}

nanoseconds PlayTransport::Position() const {
  const std::lock_guard lock(mutex_);
  return seek_.value_or(Elapsed());
}

std::optional<nanoseconds> PlayTransport::Sought() const {
  const std::lock_guard lock(mutex_);
  return seek_;
}

void PlayTransport::Begin() {
  const std::lock_guard lock(mutex_);
  running_ = true;
  SetPlace(nanoseconds{0});
}

bool PlayTransport::End(nanoseconds place) {
  const std::lock_guard lock(mutex_);
  running_ = false;
  located_ = place;
  return stop_;
}

PlayTurn PlayTransport::Await(nanoseconds due) {
  std::unique_lock lock(mutex_);
  while (true) {
    if (stop_) return PlayTurn::Stop;
    if (!output_.Alive()) return PlayTurn::Gone;
    if (std::exchange(changed_, false)) return PlayTurn::Change;
    if (seek_) return PlayTurn::Seek;
    if (paused_) return PlayTurn::Pause;
    const nanoseconds left = due - Elapsed();
    if (left <= nanoseconds{0}) return PlayTurn::Due;
    if (output_.KeepsTime()) {
      const nanoseconds slice = std::min<nanoseconds>(left, kOwnTimeSlice);
      const nanoseconds passed = Times(slice, 1 / rate_);
      lock.unlock();
      output_.Elapse(passed);
      lock.lock();
      located_ += slice;
    } else {
      const auto dueAt = locatedAt_ + Times(due - located_, 1 / rate_);
      steered_.wait_until(lock, std::min(dueAt, Clock::now() + kLookAtDevice));
    }
  }
}

void PlayTransport::AwaitResume() {
  std::unique_lock lock(mutex_);
  while (!stop_ && paused_ && !seek_ && !changed_ && output_.Alive()) steered_.wait_for(lock, kLookAtDevice);
}

nanoseconds PlayTransport::TakeSeek() {
  const std::lock_guard lock(mutex_);
  const nanoseconds place = seek_.value_or(nanoseconds{0});
  seek_.reset();
  return place;
}

void PlayTransport::Locate(nanoseconds place) {
  const std::lock_guard lock(mutex_);
  SetPlace(place);
}

nanoseconds PlayTransport::Elapsed() const {
  if (paused_ || !running_ || output_.KeepsTime()) return located_;
  return located_ + Times(Clock::now() - locatedAt_, rate_);
}

void PlayTransport::SetPlace(nanoseconds place) {
  located_ = place;
  locatedAt_ = Clock::now();
}

}  // namespace ts5
