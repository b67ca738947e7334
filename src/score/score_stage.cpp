#include "score/score_stage.h"

#include <utility>

namespace ts5 {

ScoreStage::ScoreStage(const ScoreParameters& parameters) : base_(parameters), parameters_(parameters) {}

ScoreStage::View ScoreStage::Look() const {
  const std::lock_guard lock(mutex_);
  View view = view_;
  view.tempoHeld = held_.has_value();
  return view;
}

ScoreParameters ScoreStage::Parameters() const {
  const std::lock_guard lock(mutex_);
  return parameters_;
}

void ScoreStage::SetParameters(const ScoreParameters& parameters) {
  const std::lock_guard lock(mutex_);
  base_ = parameters_ = parameters;
  ++revision_;
}

void ScoreStage::HoldTempo(std::optional<std::uint32_t> tempo) {
  const std::lock_guard lock(mutex_);
  if (held_ == tempo) return;
  held_ = tempo;
  ++revision_;
}

ScoreParameters ScoreStage::Base() const {
  const std::lock_guard lock(mutex_);
  return base_;
}

void ScoreStage::Open(std::shared_ptr<const ScoreAtHand> score, ScoreParameters parameters) {
  const std::lock_guard lock(mutex_);
  parameters_ = std::move(parameters);
  held_.reset();
  view_ = {.score = std::move(score), .titles = view_.titles + 1};
  ++revision_;
}

std::optional<ScoreStage::Orders> ScoreStage::TakeChanges(std::uint32_t& revision) const {
  if (revision == revision_) return std::nullopt;
  const std::lock_guard lock(mutex_);
  revision = revision_;
  return Orders{parameters_, held_};
}

void ScoreStage::Show(std::uint32_t tempo, const std::vector<bool>& sounding) {
  const std::lock_guard lock(mutex_);
  view_.tempo = tempo;
  view_.sounding = sounding;
}

}  // namespace ts5
