// Repeats: snapshots at repeat starts, jumps at repeat ends, endings passed over on later passes, and the
// words of jumps.
//
// A voice that meets such a bar line waits there until all voices of the step have been seen, so that the
// music behind the bar line is still to come in the snapshot and in the state that is left by a jump.
//
// A repeat end goes back once. It does so again where the score says that there are more passes: an ending
// for several ("1.-2."), one more ending right behind ("3."), or how often it is played ("3x"). One that
// closes the last ending is passed.
#include <algorithm>
#include <utility>

#include "score/score_engine.h"
#include "score/score_system.h"

namespace ts5 {
namespace {

// Voices of one bar may come to its end a little apart from each other, by the rounding of tuplets.
constexpr std::int64_t kSameBarLine = 240;
// More are not remembered: endings that repeats and jumps pass over, and the brackets of one.
constexpr std::size_t kMaxEndings = 64;
constexpr std::size_t kMaxBrackets = 256;

}  // namespace

bool ScoreEngine::IsOfEnding(const ScoreGroup& group) {
  const bool takesTime = (group.flags & kGroupZeroDuration) == 0;
  return takesTime || IsGrace(group) || group.marks.firstEnding != 0;
}

bool ScoreEngine::IsGrace(const ScoreGroup& group) {
  return !group.isRest && (group.flags & kGroupZeroDuration) != 0 && (group.flags & kGroupGrace) != 0 &&
         group.graceForm != 0;
}

// --- what stands behind

std::optional<ScoreGroup> ScoreEngine::NextGroup(std::size_t position, std::uint32_t objects) const {
  constexpr std::uint32_t kFarthest = 16;  // objects
  ScoreSource in(file_, position);
  for (std::uint32_t i = 0; i < std::min(objects, kFarthest) && in.Ok(); ++i) {
    ScoreObject object = ReadObject(in);
    if (in.Ok() && object.IsGroup()) return std::move(object.group);
  }
  return std::nullopt;
}

// Of every voice, in the next system where this one is over.
bool ScoreEngine::NextGroupOfAny(bool (*is)(const ScoreGroup&, unsigned), unsigned wanted) const {
  const auto found = [&](std::size_t position, std::uint32_t objects) {
    const auto group = NextGroup(position, objects);
    return group && is(*group, wanted);
  };
  bool over = true;
  for (const std::size_t layout : state_.order) {
    for (const Voice& voice : state_.staves[layout].voices) {
      over = over && voice.objects == 0;
      if (found(voice.position, voice.objects)) return true;
    }
  }
  if (!over || state_.system + 1 >= info_.systems) return false;
  ScoreSource in(file_, state_.nextSystem);
  const ScoreSystem next = ts5::ReadSystem(in, info_.staves.size());
  return in.Ok() && std::ranges::any_of(next.staves, [&](const SystemStaff& staff) {
           return std::ranges::any_of(
               staff.places, [&](const VoicePlace& place) { return found(place.position, place.objects); });
         });
}

bool ScoreEngine::HasSegno(const ScoreGroup& group, unsigned /*wanted*/) {
  return (group.marks.jump.words & kJumpSegno) != 0;
}

bool ScoreEngine::BeginsEnding(const ScoreGroup& group, unsigned number) {
  return group.marks.firstEnding == number;
}

// --- bar lines

void ScoreEngine::BarLine(const Voice& voice, BarLineType type, std::size_t by) {
  if (!options_.repeats) return;
  Turn turn{.at = voice.time, .by = by};
  if (state_.words != 0 && voice.time > state_.wordsAt)
    turn.words = std::exchange(state_.words, std::uint8_t{0});
  if (hasSegno_) {
    const auto group = NextGroup(voice.position, voice.objects);
    turn.segno = group && HasSegno(*group, 0);
  }
  const bool both = type == BarLineType::RepeatBoth;
  if (!jumped_ && type == BarLineType::RepeatStart) turn.start = true;
  if (!jumped_ && (both || type == BarLineType::RepeatEnd)) {
    const bool settled = repeatedAt_ >= 0 && turn.at >= repeatedAt_ && turn.at < repeatedAt_ + kSameBarLine;
    if (!settled || by == repeatedBy_) {
      const Section& section = section_;
      turn.end = !section.again || section.lastOf >= section.pass || section.times > section.pass;
      turn.pass = !turn.end;
      turn.start = both && turn.pass;
      turn.both = both;
    }
  }
  // Of the bar lines of one step the first one counts; a start right behind an end is both.
  if (!turn_.Any()) {
    turn_ = turn;
    return;
  }
  if (!turn_.Holds()) turn_.start = turn.start;
  turn_.segno |= turn.segno;
  turn_.words |= turn.words;
}

void ScoreEngine::TakeTurn() {
  Turn turn = turn_;
  if (turn.end || turn.pass) {
    repeatedAt_ = turn.at;
    repeatedBy_ = turn.by;
  }
  if (turn.end) {
    if (const Snapshot target = TurnsBackTo(); target != nullptr) return TurnBack(target, turn.at);
    turn.start = turn.both;
  }
  const bool passed = turn.end || turn.pass;
  if (passed || (turn.start && (!section_.again || section_.ending)))
    section_ = Section{.start = section_.start};
  if (turn.start) section_.start = SnapshotAt(turn.at);
  if (turn.segno) segno_ = SnapshotAt(turn.at);
  if (turn.words != 0) FollowWords(turn.words, turn.at);
}

// Nothing where the repeat is over.
ScoreEngine::Snapshot ScoreEngine::TurnsBackTo() const {
  const Section& section = section_;
  const bool endings = section.lastOf > section.pass ||
                       (section.lastOf == section.pass && NextGroupOfAny(BeginsEnding, section.pass + 1));
  if (section.pass > 1 && (endings || section.times > section.pass)) return section.origin;
  // The last ending may close with a repeat end, too: all passes have been played.
  if (section.pass > 1 && section.inEnding) return nullptr;
  return section.again ? nullptr : section.start;
}

void ScoreEngine::TurnBack(const Snapshot& target, std::int64_t at) {
  std::vector<std::size_t> brackets = std::move(section_.brackets);
  const Snapshot reached = Leave(at);
  if (!brackets.empty()) {
    if (endings_.size() == kMaxEndings) endings_.erase(endings_.begin());
    endings_.push_back({std::move(brackets), reached});
  }
  const unsigned pass = target == section_.origin ? section_.pass + 1 : 2;
  section_ = {.start = reached, .origin = target, .pass = pass, .times = section_.times, .again = true};
  GoTo(*target, at);
  afterJump_ = static_cast<std::uint32_t>(info_.staves.size());
}

void ScoreEngine::FollowWords(std::uint8_t words, std::int64_t at) {
  Snapshot target;
  if (jumped_) {
    if ((words & kJumpFine) != 0) {
      atEnd_ = true;
      return;
    }
    if ((words & kJumpToCoda) != 0) target = coda_;
  } else if ((words & kJumpDaCapo) != 0) {
    target = begin_;
  } else if ((words & kJumpDalSegno) != 0) {
    target = segno_;
  }
  if (target == nullptr) return;
  const Snapshot left = Leave(at);
  if (!jumped_) coda_ = left;
  jumped_ = !jumped_;
  section_ = {.start = target};
  GoTo(*target, at);
  afterJump_ = static_cast<std::uint32_t>(info_.staves.size());
}

ScoreEngine::Snapshot ScoreEngine::SnapshotAt(std::int64_t at) {
  ++jumps_;
  State state = state_;
  state.now = at;
  return std::make_shared<const State>(std::move(state));
}

// What sounds at the place left is released there; at the place reached nothing sounds yet.
ScoreEngine::Snapshot ScoreEngine::Leave(std::int64_t at) {
  ReleaseAll(state_);
  return SnapshotAt(at);
}

void ScoreEngine::GoTo(const State& state, std::int64_t at) {
  state_ = state;
  for (Staff& staff : state_.staves) {
    for (Voice& voice : staff.voices) {
      voice.time += at - state_.now;
      voice.end = 0;
      voice.soundingCount = 0;
      voice.tiedOnward = false;
    }
  }
}

// --- endings

void ScoreEngine::NoteEnding(const ScoreGroup& group, std::size_t position, std::size_t by) {
  section_.lastOf = group.marks.lastEnding;
  section_.inEnding = true;
  section_.endingLeft = group.marks.endingSpan == 0 ? 0 : group.marks.endingSpan + 1U;
  section_.endingOf = by;
  if (section_.brackets.size() < kMaxBrackets) section_.brackets.push_back(position);
}

// Of each chord of a voice.
void ScoreEngine::CountEnding(std::size_t by) {
  if (section_.endingLeft > 0 && section_.endingOf == by && --section_.endingLeft == 0)
    section_.inEnding = false;
}

// An ending that this pass does not play begins where its bracket's group is due, or the grace and other
// groups without time of their own that stand before it in its bar. Where it led, or nothing.
ScoreEngine::Snapshot ScoreEngine::EndingBegins(std::int64_t& at) const {
  if (endings_.empty() || !(section_.again || jumped_)) return nullptr;
  for (const std::size_t layout : state_.order) {
    for (const Voice& voice : state_.staves[layout].voices) {
      if (voice.time > static_cast<std::int64_t>(ticks_)) continue;
      ScoreSource in(file_, voice.position);
      bool grace = false;
      for (std::uint32_t i = 0; i < voice.objects && in.Ok(); ++i) {
        const std::size_t position = in.Position();
        const ScoreObject object = ReadObject(in);
        if (object.Is(ObjectKind::BarLine) && grace) break;
        if (!object.IsGroup()) continue;
        if (const Snapshot behind = BehindEnding(object.group, position); behind != nullptr) {
          at = voice.time;
          return behind;
        }
        if ((object.group.flags & kGroupZeroDuration) == 0) break;
        grace = grace || IsGrace(object.group);
      }
    }
  }
  return nullptr;
}

ScoreEngine::Snapshot ScoreEngine::BehindEnding(const ScoreGroup& group, std::size_t bracket) const {
  if (group.marks.firstEnding == 0 || (!jumped_ && section_.pass <= group.marks.lastEnding)) return nullptr;
  const auto has = [bracket](const Ending& ending) {
    return std::ranges::find(ending.brackets, bracket) != ending.brackets.end();
  };
  const auto found = std::ranges::find_if(endings_, has);
  return found == endings_.end() ? nullptr : found->behind;
}

void ScoreEngine::SkipEnding(const Snapshot& behind, std::int64_t at) {
  ++jumps_;
  ReleaseAll(state_);
  GoTo(*behind, at);
  repeatedAt_ = at;
  repeatedBy_ = SIZE_MAX;
  section_.lastOf = 0;
  section_.inEnding = false;
  section_.brackets.clear();
  section_.ending = true;
}

}  // namespace ts5
