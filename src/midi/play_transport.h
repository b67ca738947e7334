// The steering of what plays in time on a MIDI device: one thread plays, any other may stop it, let it pause
// and go on, or send it to another place.
//
//   transport.Begin();
//   for (;;) switch (transport.Await(due)) {
//     case PlayTurn::Due: send what is due; break;
//     case PlayTurn::Pause: silence; transport.AwaitResume(); break;
//     case PlayTurn::Seek: go to transport.TakeSeek(); transport.Locate(there); break;
//     case PlayTurn::Stop: case PlayTurn::Gone: return;
//   }
//
// Times are kept against an absolute schedule, so that delays do not add up. With a device that has a time of
// its own nothing waits.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>

#include "platform/sound/midi_out.h"

namespace ts5 {

// Gone: the device is no longer there. Change: somebody has called it.
enum class PlayTurn : std::uint8_t { Due, Pause, Seek, Change, Stop, Gone };

class PlayTransport {
 public:
  explicit PlayTransport(MidiOutput& output) : output_(output) {}

  // --- from any thread
  void Stop();
  void Pause();
  void Resume();
  void Seek(std::chrono::nanoseconds place);
  // So much of the music's time passes in one second.
  void SetRate(double rate);
  // What is played has changed, beside its place.
  void Change();
  [[nodiscard]] bool Paused() const;
  // Where the music is; where it is sent to, as long as it is not there yet.
  [[nodiscard]] std::chrono::nanoseconds Position() const;
  [[nodiscard]] std::optional<std::chrono::nanoseconds> Sought() const;

  // --- the thread that plays
  void Begin();                              // time goes on from 0
  bool End(std::chrono::nanoseconds place);  // it stands there; true when Stop was called
  // Until it is due, or something else is wanted.
  [[nodiscard]] PlayTurn Await(std::chrono::nanoseconds due);
  void AwaitResume();                                 // or a seek, or a stop, or the end of the device
  [[nodiscard]] std::chrono::nanoseconds TakeSeek();  // 0 when there is none
  void Locate(std::chrono::nanoseconds place);        // the schedule is made anew from here

 private:
  using Clock = std::chrono::steady_clock;

  [[nodiscard]] std::chrono::nanoseconds Elapsed() const;
  void SetPlace(std::chrono::nanoseconds place);

  MidiOutput& output_;
  mutable std::mutex mutex_;
  std::condition_variable steered_;
  bool stop_ = false;
  bool paused_ = false;
  bool running_ = false;
  bool changed_ = false;
  double rate_ = 1;
  std::optional<std::chrono::nanoseconds> seek_;
  std::chrono::nanoseconds located_{};  // position at
  Clock::time_point locatedAt_{};       // this time; without meaning while paused
};

}  // namespace ts5
