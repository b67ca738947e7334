// Where the window of a player and its worker meet: the window gives orders, the worker carries them out and
// reports where it is. There is one per job, so the window can stay open from title to title. Every member
// may be used from any thread.
#pragma once

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "frame/level_meter.h"
#include "frame/practice.h"

namespace ts5 {

// A place in a piece as musicians count it, from 1.
struct BarBeat {
  std::uint64_t bar = 1;
  std::uint32_t beat = 1;
  bool operator==(const BarBeat&) const = default;
};

struct PlayerSound {
  std::int32_t volume = 0;   // hundredths of a decibel, -10000..0
  std::int32_t balance = 0;  // -10000 left .. 10000 right
  bool operator==(const PlayerSound&) const = default;
};

// The outline of a title from its start to its end: the peak of each of its equal parts, 0 to 1.
using Waveform = std::vector<float>;

// What a title is made of, as far as it can be practised with.
struct PlayerScore {
  std::vector<std::string> tracks = {};             // their names; without any they cannot be taken apart
  std::vector<std::chrono::nanoseconds> bars = {};  // where they begin, in order; empty for sound
  bool shifts = false;                              // it may be played higher or lower
};

struct PlayerStatus {
  std::string title = {};  // path of what is played; "" while nothing is
  std::string name = {};   // what it is called; "" for the name of its file
  std::chrono::nanoseconds position{};
  std::chrono::nanoseconds duration{};
  std::optional<BarBeat> place = {};  // where the title has bars
  bool paused = false;
  std::shared_ptr<const Waveform> waveform = {};
  std::shared_ptr<const PlayerScore> score = {};
};

enum class PlayerStep : std::int8_t { Previous = -1, Restart = 0, Next = 1 };

struct PlayerOrders {
  bool togglePause = false;
  std::optional<PlayerStep> step;
  std::optional<std::chrono::nanoseconds> seek;
  bool sound = false;  // volume or balance has changed
};

// What a player of one kind shares with the pages of its own in the window, for as long as it plays.
class PlayerStage {
 public:
  virtual ~PlayerStage() = default;
};

class PlayerControl {
 public:
  // --- the window's side
  void TogglePause();
  void Step(PlayerStep step);
  void Seek(std::chrono::nanoseconds position);
  void Move(std::chrono::nanoseconds by);  // from where it is, or where it is sent already
  void SetSound(PlayerSound sound);
  void SetPractice(Practice practice);
  [[nodiscard]] PlayerStatus Status() const;
  // nullptr while nothing plays, and for players without one.
  [[nodiscard]] std::shared_ptr<PlayerStage> Stage() const;
  // Fed by players that have samples.
  [[nodiscard]] LevelTap& Levels() { return levels_; }

  // --- the worker's side
  // The orders since the last call, as soon as there are some or Wake is called, at the latest after
  // patience.
  [[nodiscard]] PlayerOrders Take(std::chrono::milliseconds patience);
  void Wake();
  // Forgets orders that were meant for what is over.
  void Clear();
  [[nodiscard]] PlayerSound Sound() const;
  // Of the title that plays; the window may ask as well.
  [[nodiscard]] Practice GetPractice() const;
  // A title begins, and is practised so from the start.
  void BeginPractice(Practice practice);
  void SetStage(std::shared_ptr<PlayerStage> stage);
  void Report(PlayerStatus status);
  void ReportPosition(std::chrono::nanoseconds position, std::optional<BarBeat> place, bool paused);
  void ReportWaveform(const std::string& title, std::shared_ptr<const Waveform> waveform);

 private:
  LevelTap levels_;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
  bool woken_ = false;
  PlayerOrders orders_;
  PlayerSound sound_;
  Practice practice_;
  PlayerStatus status_;
  std::shared_ptr<PlayerStage> stage_;
};

}  // namespace ts5
