// The state of a job's run, shared between the thread that owns the jobs and the worker of the run.
#pragma once

#include <atomic>
#include <cstdint>

#include "frame/player_control.h"

namespace ts5 {

enum class RunState : std::uint32_t {
  Idle = 0,
  Stopped = 1,  // between two steps: the job may be changed
  Running = 2,
  Paused = 5,
  Waiting = 9,    // a timed pause between two items
  Preparing = 13  // a playback is being prepared: the file list is not to be touched
};

// Filter switch, parameter dialogs and list editing are taken in these states only.
[[nodiscard]] constexpr bool MayChangeJob(RunState state) {
  return state == RunState::Idle || state == RunState::Stopped;
}

// Cancel requests beside those that a filter sets for itself.
inline constexpr std::int32_t kNoCancel = 0;
inline constexpr std::int32_t kUserStop = 1;
inline constexpr std::int32_t kStopWhileWaiting = 7;

// Names a job for as long as it lives, whatever its number; never given twice.
enum class JobId : std::uint64_t {};
[[nodiscard]] inline JobId NewJobId() {
  static std::atomic<std::uint64_t> last = 0;
  return JobId{++last};
}

// One per job. Every member may be used from any thread.
struct JobRun {
  const JobId id = NewJobId();
  std::atomic<RunState> state = RunState::Idle;
  std::atomic<std::int32_t> cancelRequest = kNoCancel;
  std::atomic<bool> closing = false;  // the program ends: a stop that nothing takes back
  std::atomic<std::uint32_t> currentItem = 0;
  PlayerControl player;  // of a player

  [[nodiscard]] bool Cancelled() const {
    return cancelRequest.load(std::memory_order_relaxed) != kNoCancel ||
           closing.load(std::memory_order_relaxed);
  }
};

}  // namespace ts5
