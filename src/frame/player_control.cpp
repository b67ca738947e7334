#include "frame/player_control.h"

#include <algorithm>
#include <utility>

namespace ts5 {

using std::chrono::nanoseconds;

void PlayerControl::Wake() {
  {
    const std::lock_guard lock(mutex_);
    woken_ = true;
  }
  changed_.notify_all();
}

void PlayerControl::TogglePause() {
  {
    const std::lock_guard lock(mutex_);
    orders_.togglePause = !orders_.togglePause;  // two at once undo each other
  }
  Wake();
}

void PlayerControl::Step(PlayerStep step) {
  {
    const std::lock_guard lock(mutex_);
    orders_.step = step;
    orders_.seek.reset();
  }
  Wake();
}

void PlayerControl::Seek(nanoseconds position) {
  {
    const std::lock_guard lock(mutex_);
    if (status_.title.empty()) return;
    orders_.seek = std::clamp(position, nanoseconds{0}, status_.duration);
  }
  Wake();
}

void PlayerControl::Move(nanoseconds by) {
  nanoseconds from{};
  {
    const std::lock_guard lock(mutex_);
    from = orders_.seek.value_or(status_.position);
  }
  Seek(from + by);
}

void PlayerControl::SetSound(PlayerSound sound) {
  {
    const std::lock_guard lock(mutex_);
    if (sound_ == sound) return;
    sound_ = sound;
    orders_.sound = true;
  }
  Wake();
}

void PlayerControl::SetPractice(Practice practice) {
  {
    const std::lock_guard lock(mutex_);
    if (practice_ == practice) return;
    practice_ = std::move(practice);
  }
  Wake();
}

Practice PlayerControl::GetPractice() const {
  const std::lock_guard lock(mutex_);
  return practice_;
}

void PlayerControl::BeginPractice(Practice practice) {
  const std::lock_guard lock(mutex_);
  practice_ = std::move(practice);
}

PlayerStatus PlayerControl::Status() const {
  const std::lock_guard lock(mutex_);
  return status_;
}

PlayerOrders PlayerControl::Take(std::chrono::milliseconds patience) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, patience, [this] { return woken_; });
  woken_ = false;
  return std::exchange(orders_, {});
}

void PlayerControl::Clear() {
  const std::lock_guard lock(mutex_);
  orders_ = {};
}

PlayerSound PlayerControl::Sound() const {
  const std::lock_guard lock(mutex_);
  return sound_;
}

std::shared_ptr<PlayerStage> PlayerControl::Stage() const {
  const std::lock_guard lock(mutex_);
  return stage_;
}

void PlayerControl::SetStage(std::shared_ptr<PlayerStage> stage) {
  const std::lock_guard lock(mutex_);
  stage_ = std::move(stage);
}

void PlayerControl::Report(PlayerStatus status) {
  const std::lock_guard lock(mutex_);
  status_ = std::move(status);
}

void PlayerControl::ReportPosition(nanoseconds position, std::optional<BarBeat> place, bool paused) {
  const std::lock_guard lock(mutex_);
  status_.position = position;
  status_.place = place;
  status_.paused = paused;
}

void PlayerControl::ReportWaveform(const std::string& title, std::shared_ptr<const Waveform> waveform) {
  const std::lock_guard lock(mutex_);
  if (status_.title == title) status_.waveform = std::move(waveform);
}

}  // namespace ts5
