// Where the windows and the worker of the score player meet while a score plays: the windows change
// parameters and tempo, the worker takes them over at its next step and shows what sounds. Every member may
// be used from any thread.
#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

#include "frame/player_control.h"
#include "score/score_at_hand.h"

namespace ts5 {

// The slider of the window; scores themselves may have any tempo.
inline constexpr std::uint32_t kSlowestTempo = 20;
inline constexpr std::uint32_t kFastestTempo = 400;

class ScoreStage final : public PlayerStage {
 public:
  explicit ScoreStage(const ScoreParameters& parameters);

  // --- the windows
  struct View {
    std::shared_ptr<const ScoreAtHand> score;  // nullptr before the first title
    std::uint32_t titles = 0;                  // that were opened up to now
    std::uint32_t tempo = 0;                   // quarter notes per minute
    bool tempoHeld = false;
    std::vector<bool> sounding = {};  // by staff
  };
  [[nodiscard]] View Look() const;
  // Those in force: of the title with its parameter set.
  [[nodiscard]] ScoreParameters Parameters() const;
  // For this title and those that follow.
  void SetParameters(const ScoreParameters& parameters);
  // For this title; nothing gives it the tempo of the score again.
  void HoldTempo(std::optional<std::uint32_t> tempo);

  // --- the worker
  // What the windows have set last, from which each title takes its own parameters.
  [[nodiscard]] ScoreParameters Base() const;
  void Open(std::shared_ptr<const ScoreAtHand> score, ScoreParameters parameters);
  struct Orders {
    ScoreParameters parameters;
    std::optional<std::uint32_t> tempo;
  };
  // What has changed since the revision that the worker knows; nothing when it is up to date.
  [[nodiscard]] std::optional<Orders> TakeChanges(std::uint32_t& revision) const;
  void Show(std::uint32_t tempo, const std::vector<bool>& sounding);

 private:
  mutable std::mutex mutex_;
  std::atomic<std::uint32_t> revision_ = 1;  // of parameters and tempo
  ScoreParameters base_;
  ScoreParameters parameters_;
  std::optional<std::uint32_t> held_;
  View view_;
};

}  // namespace ts5
