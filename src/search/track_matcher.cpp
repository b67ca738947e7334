#include "search/track_matcher.h"

#include <algorithm>
#include <limits>
#include <vector>

#include "platform/base/casts.h"
#include "search/match_starts.h"
#include "search/note_stream.h"

namespace ts5 {
namespace {

// Toward zero; what is too large for the result stays at its end.
std::uint64_t Truncated(double value) {
  constexpr double kEnd = 9223372036854775808.0;
  if (!(value > 0)) return 0;
  return static_cast<std::uint64_t>(value >= kEnd ? std::numeric_limits<std::int64_t>::max()
                                                  : static_cast<std::int64_t>(value));
}

bool Within(std::uint64_t value, std::uint64_t centre, std::uint64_t tolerance) {
  return value >= centre - std::min(centre, tolerance) && value - std::min(value, centre) <= tolerance;
}

// What of a melody was found last: in the notes of a block, the first tick of a match and its last note.
struct Match {
  std::uint64_t firstTick;
  std::size_t lastNote;  // in the block
  std::int32_t melody;
};

// One melody on its way through the track.
class MelodyMatcher {
 public:
  MelodyMatcher(const PreparedMelody& melody, const TrackContext& context)
      : context_(context),
        melody_(melody),
        percent_(Percent(context.options.tolerance)),
        starts_(melody, context.options) {
    for (const PreparedNote& note : melody_) {
      tolerances_.push_back(DurationTolerance(note.duration, context.options.tolerance));
    }
  }

  // Calls found(firstTick, lastNote) for each match that ends in the block.
  template <typename Found>
  Outcome SearchBlock(const NoteStream& notes, const Found& found) {
    starts_.Sift(notes);
    look_.BeginBlock();
    for (std::size_t note = 0; note < notes.Size();) {
      if (matched_ == 0 && (note = starts_.Next(note)) == notes.Size()) break;
      const Fit fit = PitchFits(notes.Key(note)) ? Rhythm(notes, note) : Fit::Refused;
      if (fit == Fit::BrokenOff) {
        const bool cancelled = context_.cancelled && context_.cancelled();
        return cancelled ? Outcome::Cancelled : Outcome::DamagedMidi;
      }
      if (fit == Fit::Refused) {
        // A note that breaks a match is tried again as a first one.
        if (matched_ == 0) ++note;
        matched_ = 0;
        continue;
      }
      previousKey_ = notes.Key(note++);
      if (++matched_ < melody_.size()) continue;
      matched_ = 0;
      if (const Outcome sent = found(firstTick_, note - 1); Failed(sent)) return sent;
    }
    return Outcome::Success;
  }

 private:
  enum class Fit { Accepted, Refused, BrokenOff };

  bool PitchFits(int key) const {
    if (matched_ == 0) return FirstNoteMatches(context_.options.pitch, melody_[0].key, key).has_value();
    return IntervalFits(key);
  }

  bool IntervalFits(int key) const {
    if (context_.options.pitch == PitchMode::Ignore) return true;
    return melody_[matched_].key - melody_[matched_ - 1].key == key - previousKey_;
  }

  Fit Rhythm(const NoteStream& notes, std::size_t note) {
    const std::uint64_t tick = notes.Tick(note);
    if (matched_ == 0) firstTick_ = tick;
    const bool last = matched_ + 1 == melody_.size();
    if (last || context_.options.rhythm == RhythmMode::Any) {
      // The distance does not matter, but the track must not break off before its end.
      return note < notes.Settled() || notes.NextOnsetDistance(note, look_) ? Fit::Accepted : Fit::BrokenOff;
    }
    const auto distance = notes.NextOnsetDistance(note, look_);
    if (!distance) return Fit::BrokenOff;
    const std::uint16_t wanted = melody_[matched_].duration;
    if (matched_ == 0) {
      const bool relative = context_.options.rhythm == RhythmMode::Relative;
      factor_ = relative ? static_cast<float>(wanted) / static_cast<float>(*distance) : 1.0F;
    }
    const std::uint64_t scaled = Scaled(*distance);
    if (!Within(scaled, wanted, tolerances_[matched_])) return Fit::Refused;
    if (matched_ > 0 && !OnsetFits(tick - previousOnset_)) return Fit::Refused;
    previousOnset_ = tick;
    previousDistance_ = *distance;
    previousScaled_ = scaled;
    return Fit::Accepted;
  }

  bool OnsetFits(std::uint64_t gap) const {
    if (gap == previousDistance_) return true;  // but for chords
    const std::uint64_t tolerance = Truncated(percent_ * (static_cast<double>(previousScaled_) * 0.01));
    return Within(Scaled(gap), previousScaled_, tolerance);
  }

  std::uint64_t Scaled(std::uint64_t ticks) const {
    return Truncated(static_cast<double>(ticks) * double{factor_});
  }

  const TrackContext& context_;
  const PreparedMelody& melody_;
  std::vector<std::uint64_t> tolerances_;  // of its durations
  const int percent_;
  MatchStarts starts_;
  NoteStream::Look look_;

  std::size_t matched_ = 0;
  int previousKey_ = 0;
  std::uint64_t previousOnset_ = 0;
  std::uint64_t previousDistance_ = 0;
  std::uint64_t previousScaled_ = 0;
  std::uint64_t firstTick_ = 0;
  float factor_ = 1.0F;
};

// A track is walked once, block by block, and each block shown to all melodies.
class TrackMatcher {
 public:
  TrackMatcher(ByteView track, std::int32_t trackNumber, const TrackContext& context)
      : context_(context),
        trackNumber_(trackNumber),
        notes_(track, !context.options.drumTrack, MatchStarts::NeedsDistances(context.options),
               context.cancelled) {
    matchers_.reserve(context.melodies.size());
    for (std::size_t i = 0; i < context.melodies.size(); ++i) {
      if (context.melodies[i].empty()) continue;
      matchers_.emplace_back(context.melodies[i], context);
      numbers_.push_back(static_cast<std::int32_t>(i));
    }
  }

  TrackOutcome Search() {
    if (matchers_.empty()) return {};
    while (notes_.NextBlock()) {
      if (context_.cancelled && context_.cancelled()) return {{Outcome::Cancelled, hits_}};
      const Outcome outcome = matchers_.size() == 1 ? SearchBlock() : SearchBlockForAll();
      if (Failed(outcome)) return {{outcome, outcome == Outcome::DamagedMidi ? 0 : hits_}};
    }
    if (notes_.Damaged()) return {{Outcome::DamagedMidi, 0}};
    return {{Outcome::Success, hits_}, !notes_.Stopped()};
  }

 private:
  Outcome SearchBlock() {
    return matchers_.front().SearchBlock(
        notes_, [this](std::uint64_t tick, std::size_t) { return SendHit(tick, numbers_.front()); });
  }

  // What breaks off for one melody may do so behind hits of another one, which are sent before.
  Outcome SearchBlockForAll() {
    matches_.clear();
    Outcome outcome = Outcome::Success;
    for (std::size_t i = 0; i < matchers_.size(); ++i) {
      const Outcome one = matchers_[i].SearchBlock(notes_, [&](std::uint64_t tick, std::size_t last) {
        matches_.push_back({tick, last, numbers_[i]});
        return Outcome::Success;
      });
      if (Succeeded(outcome)) outcome = one;
    }
    std::ranges::stable_sort(matches_, {}, &Match::lastNote);
    for (const Match& match : matches_) {
      if (const Outcome sent = SendHit(match.firstTick, match.melody); Failed(sent)) return sent;
    }
    return outcome;
  }

  Outcome SendHit(std::uint64_t tick, std::int32_t melody) {
    ++hits_;
    SearchHit hit;
    hit.file = context_.file;
    hit.track = trackNumber_;
    hit.bar = ClampTo<std::int32_t>(BarOf(context_.signatures, context_.division, tick));
    hit.time = HitTime(tick, context_.division, context_.tempo);
    hit.melody = melody;
    return context_.sink(hit);
  }

  const TrackContext& context_;
  const std::int32_t trackNumber_;
  NoteStream notes_;
  std::vector<MelodyMatcher> matchers_;
  std::vector<std::int32_t> numbers_;  // of their melodies
  std::vector<Match> matches_;         // of a block
  std::uint64_t hits_ = 0;
};

}  // namespace

std::int32_t HitTime(std::uint64_t tick, std::uint16_t division, std::uint32_t tempo) {
  if (division == 0 || tempo == 0) return 0;
  const double time = (1000.0 / division) * (60.0 / tempo) * static_cast<double>(tick);
  return ClampTo<std::int32_t>(Truncated(time));
}

TrackOutcome SearchMidiTrack(ByteView track, std::int32_t trackNumber, const TrackContext& context) {
  return TrackMatcher(track, trackNumber, context).Search();
}

}  // namespace ts5
