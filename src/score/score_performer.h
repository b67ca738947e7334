// Plays a score on a MIDI device in real time. One thread runs it; any other may steer it meanwhile.
//
//   ScorePerformer performer(score, repeats, stage, *output);
//   std::jthread thread([&] { result = performer.Run(); });
//   performer.Seek(30s); performer.Pause(); performer.Resume(); performer.Stop();
//
// What is sent is what the engine gives out, step by step; parameters and tempo are those that the stage has
// at each step. A pause and a stop end what sounds. A seek interprets the score from its start without sound
// and then sends the programs and volumes that straight play would have left.
//
// A passage that is practised goes over and over; its end is such a seek.
//
// Places are in the score's own time, which a tempo held by the user does not change.
#pragma once

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "frame/player_control.h"
#include "midi/play_transport.h"
#include "platform/base/outcome.h"
#include "platform/sound/midi_out.h"
#include "score/score_engine.h"
#include "score/score_midi.h"
#include "score/score_stage.h"

namespace ts5 {

class ScorePerformer final : private ScoreSink {
 public:
  // All must outlive the performer; the stage has this score.
  ScorePerformer(const OpenScore& score, bool repeats, ScoreStage& stage, MidiOutput& output);

  // From the start, or where Seek has put it, to the end; with an end, until so much time has been played.
  // Success when it has come to the end, Cancelled after Stop, WriteFailed when the device has gone,
  // DamagedScore.
  [[nodiscard]] Outcome Run(std::optional<std::chrono::nanoseconds> end = {});

  void Stop() { transport_.Stop(); }
  void Pause() { transport_.Pause(); }
  void Resume() { transport_.Resume(); }
  void Seek(std::chrono::nanoseconds place) { transport_.Seek(place); }
  // Passage, speed and the staves that sound.
  void Practise(const Practice& practice);

  [[nodiscard]] std::chrono::nanoseconds Position() const;
  [[nodiscard]] std::chrono::nanoseconds Duration() const;
  [[nodiscard]] BarBeat Place() const;

 private:
  // What a channel has been set to.
  struct Channel {
    std::uint32_t program = 0;  // the message; 0: none yet
    std::uint32_t volume = 0;
    std::array<std::uint16_t, 128> sounding{};  // how often each key was struck and not released
    std::array<std::uint16_t, 128>
        unheard{};  // releases to come that a pause or a seek has taken the note of
  };

  void Message(std::size_t track, std::uint32_t message) override;
  void Meta(std::size_t /*track*/, std::uint8_t /*type*/, ByteView /*data*/) override {}
  void Advance(std::uint64_t /*ticks*/) override {}

  [[nodiscard]] Outcome Start(std::chrono::nanoseconds place);
  [[nodiscard]] Outcome JumpTo(std::chrono::nanoseconds place);
  [[nodiscard]] Outcome Step();
  void TakeChanges();
  void SendSounds(const PlaybackParameters& before);
  void Send(std::uint32_t message);
  void Silence();
  void Show();
  [[nodiscard]] std::chrono::nanoseconds Played() const;

  const OpenScore& score_;
  bool repeats_;
  ScoreStage& stage_;
  MidiOutput& output_;
  PlayTransport transport_;

  std::mutex mutex_;
  Practice wanted_;

  // the running thread's own
  Practice practice_;
  PlaybackParameters parameters_;
  std::uint32_t revision_ = 0;
  std::unique_ptr<ScoreEngine> engine_;
  bool seeking_ = false;  // nothing is sent
  Outcome sent_ = Outcome::Success;
  std::array<Channel, 16> channels_{};
  std::vector<std::uint32_t> sounding_;  // notes by staff
  std::vector<bool> shown_;

  std::atomic<std::int64_t> position_ = 0;  // ns
  std::atomic<std::uint64_t> place_ = 0;    // bar in the upper half, beat in the lower one
};

}  // namespace ts5
