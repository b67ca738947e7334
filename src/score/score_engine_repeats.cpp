// Repeats: snapshots at repeat starts, jumps at repeat ends, first endings passed over the second time.
//
// A voice that meets a repeat's bar line waits there until all voices of the step have been seen, so that the
// music behind the bar line is still to come in the snapshot and in the state that is left by a jump.
#include <algorithm>

#include "score/score_engine.h"

namespace ts5 {
namespace {

// Voices of one bar may come to its end a little apart from each other, by the rounding of tuplets.
constexpr std::int64_t kSameBarLine = 240;

}  // namespace

void ScoreEngine::BarLine(BarLineType type, std::int64_t at, std::size_t by) {
  if (!options_.repeats) return;
  if (type == BarLineType::RepeatStart) return Settle(Pending::Start, at, by);
  if (type != BarLineType::RepeatEnd && type != BarLineType::RepeatBoth) return;
  const bool settled = repeatedAt_ >= 0 && at >= repeatedAt_ && at < repeatedAt_ + kSameBarLine;
  if (settled && by != repeatedBy_) return;
  if (!secondPass_) return Settle(Pending::Jump, at, by);
  Settle(type == BarLineType::RepeatBoth ? Pending::PassAndStart : Pending::Pass, at, by);
}

// Of the bar lines of one step the first one counts; a start right behind an end is both.
void ScoreEngine::Settle(Pending pending, std::int64_t at, std::size_t by) {
  if (pending_ == Pending::None) {
    pending_ = pending;
    pendingAt_ = at;
    pendingBy_ = by;
  } else if (pending_ == Pending::Pass && pending == Pending::Start) {
    pending_ = Pending::PassAndStart;
  }
}

void ScoreEngine::SettleRepeat() {
  if (pending_ != Pending::Start) {
    repeatedAt_ = pendingAt_;
    repeatedBy_ = pendingBy_;
  }
  if (pending_ == Pending::Jump) {
    ++jumps_;
    ReleaseAll(state_);
    state_.now = pendingAt_;
    State reached = std::move(state_);
    GoTo(std::move(snapshot_), pendingAt_);
    snapshot_ = std::move(reached);
    secondPass_ = true;
    endingSkipped_ = false;
    clearSecondPass_ = false;
    afterJump_ = static_cast<std::uint32_t>(info_.staves.size());
    return;
  }
  if (pending_ != Pending::Start) secondPass_ = false;
  if (pending_ != Pending::Pass) {
    ++jumps_;
    snapshot_ = state_;
    snapshot_.now = pendingAt_;
  }
}

// What sounds at the place left is released there; at the place reached nothing sounds yet.
void ScoreEngine::GoTo(State state, std::int64_t at) {
  state_ = std::move(state);
  for (Staff& staff : state_.staves) {
    for (Voice& voice : staff.voices) {
      voice.time += at - state_.now;
      voice.end = 0;
      voice.soundingCount = 0;
      voice.tiedOnward = false;
    }
  }
}

bool ScoreEngine::EndingBegins(std::int64_t& at) {
  for (const std::size_t layout : state_.order) {
    for (const Voice& voice : state_.staves[layout].voices) {
      if (voice.time > static_cast<std::int64_t>(ticks_)) continue;
      ScoreSource in(file_, voice.position);
      for (std::uint32_t i = 0; i < voice.objects && in.Ok(); ++i) {
        const ScoreObject object = ReadObject(in);
        if (!object.IsGroup()) continue;
        at = voice.time;
        if (object.group.marks.firstEnding) return true;
        break;
      }
    }
  }
  return false;
}

void ScoreEngine::SkipEnding(std::int64_t at) {
  ReleaseAll(state_);
  GoTo(snapshot_, at);
  repeatedAt_ = at;
  repeatedBy_ = SIZE_MAX;
  endingSkipped_ = true;
  clearSecondPass_ = true;
}

}  // namespace ts5
