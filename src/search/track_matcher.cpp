#include "search/track_matcher.h"

#include <algorithm>
#include <limits>

#include "platform/casts.h"
#include "search/match_starts.h"
#include "search/note_stream.h"

namespace ts5 {
namespace {

constexpr float kPerMelodyTick = 0.004166667F;  // 1/240
constexpr float kHundredth = 0.01F;

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

class TrackMatcher {
 public:
  TrackMatcher(ByteView track, std::int32_t trackNumber, const TrackContext& context)
      : context_(context),
        melody_(context.melody),
        percent_(Percent(context.options.tolerance)),
        trackNumber_(trackNumber),
        notes_(track, !context.options.drumTrack, MatchStarts::NeedsDistances(context.options),
               context.cancelled),
        starts_(context.melody, context.options) {
    for (const PreparedNote& note : melody_) {
      tolerances_.push_back(DurationTolerance(note.duration, context.options.tolerance));
    }
  }

  TrackOutcome Search() {
    while (notes_.NextBlock()) {
      if (Cancelled()) return {{Outcome::Cancelled, hits_}};
      starts_.Sift(notes_);
      if (const Outcome outcome = SearchBlock(); Failed(outcome)) {
        return {{outcome, outcome == Outcome::DamagedMidi ? 0 : hits_}};
      }
    }
    if (notes_.Damaged()) return {{Outcome::DamagedMidi, 0}};
    return {{Outcome::Success, hits_}, !notes_.Stopped()};
  }

 private:
  enum class Fit { Accepted, Refused, BrokenOff };

  bool Cancelled() const { return context_.cancelled && context_.cancelled(); }

  Outcome SearchBlock() {
    for (std::size_t note = 0; note < notes_.Size();) {
      if (matched_ == 0 && (note = starts_.Next(note)) == notes_.Size()) break;
      const Fit fit = PitchFits(notes_.Key(note)) ? Rhythm(note) : Fit::Refused;
      if (fit == Fit::BrokenOff) return Cancelled() ? Outcome::Cancelled : Outcome::DamagedMidi;
      if (fit == Fit::Refused) {
        // A note that breaks a match is tried again as a first one.
        if (matched_ == 0) ++note;
        matched_ = 0;
        continue;
      }
      previousKey_ = notes_.Key(note++);
      if (++matched_ < melody_.size()) continue;
      matched_ = 0;
      ++hits_;
      if (const Outcome sent = SendHit(); Failed(sent)) return sent;
    }
    return Outcome::Success;
  }

  bool PitchFits(int key) const {
    if (matched_ == 0) return FirstNoteMatches(context_.options.pitch, melody_[0].key, key).has_value();
    return IntervalFits(key);
  }

  bool IntervalFits(int key) const {
    if (context_.options.pitch == PitchMode::Ignore) return true;
    return melody_[matched_].key - melody_[matched_ - 1].key == key - previousKey_;
  }

  Fit Rhythm(std::size_t note) {
    const std::uint64_t tick = notes_.Tick(note);
    if (matched_ == 0) firstTick_ = tick;
    const bool last = matched_ + 1 == melody_.size();
    if (last || context_.options.rhythm == RhythmMode::Any) {
      // The distance does not matter, but the track must not break off before its end.
      return note < notes_.Settled() || notes_.NextOnsetDistance(note) ? Fit::Accepted : Fit::BrokenOff;
    }
    const auto distance = notes_.NextOnsetDistance(note);
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

  Outcome SendHit() const {
    SearchHit hit;
    hit.file = context_.file;
    hit.track = trackNumber_;
    hit.bar = ClampTo<std::int32_t>(BarOf(context_.signatures, context_.division, firstTick_));
    hit.time = HitTime(firstTick_, context_.division, context_.tempo);
    return context_.sink(hit);
  }

  const TrackContext& context_;
  const PreparedMelody& melody_;
  std::vector<std::uint64_t> tolerances_;  // of its durations
  const int percent_;
  const std::int32_t trackNumber_;
  NoteStream notes_;
  MatchStarts starts_;

  std::size_t matched_ = 0;
  int previousKey_ = 0;
  std::uint64_t previousOnset_ = 0;
  std::uint64_t previousDistance_ = 0;
  std::uint64_t previousScaled_ = 0;
  std::uint64_t firstTick_ = 0;
  float factor_ = 1.0F;
  std::uint64_t hits_ = 0;
};

}  // namespace

PreparedMelody PrepareMelody(const std::vector<MelodyElement>& elements, std::uint16_t division) {
  const float factor = static_cast<float>(division) * kPerMelodyTick;
  PreparedMelody notes;
  notes.reserve(elements.size());
  for (std::size_t i = 0; i < elements.size(); ++i) {
    if (IsRest(elements[i])) continue;
    int duration = elements[i].duration;
    if (i + 1 < elements.size() && IsRest(elements[i + 1])) duration += elements[i + 1].duration;
    const auto ticks = static_cast<std::int64_t>(duration * double{factor});
    notes.push_back({KeyOf(elements[i].pitch), static_cast<std::uint16_t>(ticks)});
  }
  return notes;
}

std::optional<int> FirstNoteMatches(PitchMode mode, int melodyKey, int playedKey) {
  switch (mode) {
    case PitchMode::Absolute:
      if (playedKey != melodyKey) return std::nullopt;
      break;
    case PitchMode::AnyOctave:
      if (playedKey < 0 || playedKey > 127 || (playedKey - melodyKey) % 12 != 0) return std::nullopt;
      break;
    case PitchMode::Relative:
    case PitchMode::Ignore:
      break;
  }
  return playedKey;
}

std::uint64_t DurationTolerance(std::uint16_t duration, Tolerance tolerance) {
  return Truncated(duration * double{kHundredth} * Percent(tolerance));
}

std::int32_t HitTime(std::uint64_t tick, std::uint16_t division, std::uint32_t tempo) {
  if (division == 0 || tempo == 0) return 0;
  const double time = (1000.0 / division) * (60.0 / tempo) * static_cast<double>(tick);
  return ClampTo<std::int32_t>(Truncated(time));
}

TrackOutcome SearchMidiTrack(ByteView track, std::int32_t trackNumber, const TrackContext& context) {
  if (context.melody.empty()) return {};
  return TrackMatcher(track, trackNumber, context).Search();
}

}  // namespace ts5
