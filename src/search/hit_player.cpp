#include "search/hit_player.h"

#include <chrono>
#include <condition_variable>
#include <mutex>
#include <stop_token>
#include <utility>

#include "midi/midi_sequencer.h"
#include "search/hit_passage.h"

namespace ts5 {
namespace {

constexpr std::chrono::milliseconds kDecay{400};  // the last notes die away before the device is closed

Outcome Play(const std::stop_token& stop, const SearchHit& hit, std::size_t notes,
             const HitPlayer::Opener& open) {
  const auto playable = LoadPlayableHit(hit, notes, [&stop] { return stop.stop_requested(); });
  if (stop.stop_requested()) return Outcome::Cancelled;
  if (!playable) return Outcome::SourceFailed;
  const auto device = open();
  if (!device) return Outcome::TargetFailed;

  MidiSequencer sequencer(playable->sequence, **device);
  sequencer.Seek(playable->bar);
  Outcome played = Outcome::Cancelled;
  {
    const std::stop_callback onStop(stop, [&sequencer] { sequencer.Stop(); });
    played = sequencer.Run(playable->end);
  }
  if (Succeeded(played)) {
    std::mutex mutex;
    std::condition_variable_any stopped;
    std::unique_lock lock(mutex);
    stopped.wait_for(lock, stop, kDecay, [] { return false; });
  }
  const Outcome closed = (*device)->Close();
  return Succeeded(played) ? closed : played;
}

}  // namespace

void HitPlayer::Start(const SearchHit& hit, std::size_t notes, Opener open,
                      std::function<void(Outcome)> ended) {
  thread_ = {};  // stops and waits
  playing_ = true;
  thread_ = std::jthread(
      [this, hit, notes, open = std::move(open), ended = std::move(ended)](const std::stop_token& stop) {
        const Outcome outcome = Play(stop, hit, notes, open);
        playing_ = false;
        if (ended) ended(outcome);
      });
}

}  // namespace ts5
