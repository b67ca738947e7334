// The states that an editor can go back to and forward again: a bounded row of snapshots.
#pragma once

#include <cstddef>
#include <deque>
#include <optional>
#include <utility>

namespace ts5::artworker {

template <typename State>
class History {
 public:
  // most: changes that can be taken back, at least one.
  explicit History(std::size_t most) : most_(most) {}

  void SetMost(std::size_t most) {
    most_ = most;
    Trim();
  }

  // The state is about to change: what could be redone is forgotten, and so is the oldest of too many.
  void Record(State before) {
    states_.resize(position_);
    states_.push_back(std::move(before));
    ++position_;
    Trim();
  }

  [[nodiscard]] bool CanUndo() const { return position_ > 0; }
  [[nodiscard]] bool CanRedo() const { return position_ + 1 < states_.size(); }

  // The state before the last change; the present one is kept for redoing.
  [[nodiscard]] std::optional<State> Undo(const State& present) {
    if (!CanUndo()) return std::nullopt;
    if (position_ == states_.size()) states_.push_back(present);
    return states_[--position_];
  }
  [[nodiscard]] std::optional<State> Redo() {
    if (!CanRedo()) return std::nullopt;
    return states_[++position_];
  }

  // Something in all states alike, which is no change of its own.
  template <typename Rewrite>
  void ForEach(const Rewrite& rewrite) {
    for (State& state : states_) rewrite(state);
  }

 private:
  // The states before the position count as changes; those behind it go first of all when it is at their end.
  void Trim() {
    while (position_ > most_) {
      states_.pop_front();
      --position_;
    }
  }

  std::size_t most_;
  std::deque<State> states_;
  std::size_t position_ = 0;  // of the present state; states_.size() while it is not among them
};

}  // namespace ts5::artworker
