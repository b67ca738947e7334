// Lets a hit sound: reads its file, opens the device and plays the passage with all tracks of the file, from
// the beginning of its bar to the end of the bar in which the melody ends, on a thread of its own.
#pragma once

#include <atomic>
#include <functional>
#include <memory>
#include <thread>

#include "frame/search_hit.h"
#include "platform/base/outcome.h"
#include "platform/sound/midi_out.h"

namespace ts5 {

class HitPlayer {
 public:
  using Opener = std::function<Result<std::unique_ptr<MidiOutput>>()>;

  HitPlayer() = default;
  ~HitPlayer() { Stop(); }
  HitPlayer(const HitPlayer&) = delete;
  HitPlayer& operator=(const HitPlayer&) = delete;

  // Stops what still plays and starts. notes: how many the melody has. open is called on the player's thread,
  // and so is ended, as the last step, with Success at the end of the passage, Cancelled after Stop,
  // SourceFailed when the file does not have the hit any more, TargetFailed when the device cannot be opened,
  // WriteFailed when it has gone.
  void Start(const SearchHit& hit, std::size_t notes, Opener open, std::function<void(Outcome)> ended);
  // The sound ends at once. Returns without waiting for the device to close; Start and the end of the player
  // wait for it.
  void Stop() { thread_.request_stop(); }
  [[nodiscard]] bool Playing() const { return playing_; }

 private:
  std::atomic<bool> playing_ = false;
  std::jthread thread_;
};

}  // namespace ts5
