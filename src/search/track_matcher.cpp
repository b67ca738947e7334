#include "search/track_matcher.h"

#include <algorithm>
#include <array>
#include <limits>

#include "platform/casts.h"
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
        notes_(track, !context.options.drumTrack) {
    for (int key = 0; key < 256; ++key) {
      first_[static_cast<std::size_t>(key)] =
          FirstNoteMatches(context.options.pitch, melody_.front().key, key).has_value();
    }
  }

  SearchOutcome Search() {
    while (notes_.NextBlock()) {
      if (context_.cancelled && context_.cancelled()) return {Outcome::Cancelled, hits_};
      for (std::size_t note = 0; note < notes_.Size(); ++note) {
        if (matched_ == 0 && (note = NextCandidate(note)) == notes_.Size()) break;
        if (const Outcome outcome = Try(note); Failed(outcome)) {
          return {outcome, outcome == Outcome::DamagedMidi ? 0 : hits_};
        }
      }
    }
    if (notes_.Damaged()) return {Outcome::DamagedMidi, 0};
    return {Outcome::Success, hits_};
  }

 private:
  enum class Fit { Accepted, Refused, Damaged };

  // The next note of the block that may begin a match. Where the onset behind a note is certain to be found,
  // a note whose successor has the wrong interval is passed over: it would be given up there anyway.
  std::size_t NextCandidate(std::size_t note) const {
    const std::size_t size = notes_.Size();
    if (melody_.size() > 1 && context_.options.pitch != PitchMode::Ignore) {
      const int interval = melody_[1].key - melody_[0].key;
      const std::size_t end = std::min(notes_.Settled(), size - 1);
      while (note < end) {
        if (note + kStride <= end && !MayBeginIn(note, interval)) {
          note += kStride;
          continue;
        }
        for (const std::size_t stop = std::min(note + kStride, end); note < stop; ++note) {
          if (notes_.Key(note + 1) - notes_.Key(note) == interval && first_[KeyIndex(note)]) return note;
        }
      }
    }
    while (note < size && !first_[KeyIndex(note)]) ++note;
    return note;
  }

  std::size_t KeyIndex(std::size_t note) const { return static_cast<std::size_t>(notes_.Key(note)); }

  // Whether one of the next kStride notes has the interval behind it, and in the absolute mode the first key.
  // Without a branch inside, so that the compiler compares many notes at once.
  static constexpr std::size_t kStride = 16;
  bool MayBeginIn(std::size_t note, int interval) const {
    const std::int16_t* const keys = notes_.Keys() + note;
    const auto step = static_cast<std::int16_t>(interval);
    const auto firstKey = static_cast<std::int16_t>(melody_[0].key);
    const auto anyKey = static_cast<std::int16_t>(context_.options.pitch == PitchMode::Absolute ? 0 : -1);
    std::int16_t found = 0;
    for (std::size_t i = 0; i < kStride; ++i) {
      const auto hasStep =
          static_cast<std::int16_t>(static_cast<std::int16_t>(keys[i + 1] - keys[i]) == step ? -1 : 0);
      const auto hasKey = static_cast<std::int16_t>((keys[i] == firstKey ? -1 : 0) | anyKey);
      found = static_cast<std::int16_t>(found | (hasStep & hasKey));
    }
    return found != 0;
  }

  // One note-on, and when it breaks a match, the same one again as a first note.
  Outcome Try(std::size_t note) {
    const int key = notes_.Key(note);
    if (matched_ > 0 && !IntervalFits(key)) matched_ = 0;
    for (;;) {
      if (matched_ == 0 && !first_[static_cast<std::size_t>(key)]) return Outcome::Success;
      const Fit fit = Rhythm(note);
      if (fit == Fit::Damaged) return Outcome::DamagedMidi;
      if (fit == Fit::Accepted) break;
      if (matched_ == 0) return Outcome::Success;
      matched_ = 0;
    }
    previousKey_ = key;
    if (++matched_ < melody_.size()) return Outcome::Success;
    matched_ = 0;
    ++hits_;
    return SendHit();
  }

  bool IntervalFits(int key) const {
    if (context_.options.pitch == PitchMode::Ignore) return true;
    return melody_[matched_].key - melody_[matched_ - 1].key == key - previousKey_;
  }

  Fit Rhythm(std::size_t note) {
    const auto distance = notes_.NextOnset(note);
    if (!distance) return Fit::Damaged;
    const std::uint64_t tick = notes_.Tick(note);
    const std::uint16_t wanted = melody_[matched_].duration;
    if (matched_ == 0) {
      firstTick_ = tick;
      const bool relative = context_.options.rhythm == RhythmMode::Relative;
      factor_ = relative ? static_cast<float>(wanted) / static_cast<float>(*distance) : 1.0F;
    }
    const std::uint64_t scaled = Scaled(*distance);
    const bool last = matched_ + 1 == melody_.size();
    if (context_.options.rhythm != RhythmMode::Any && !last) {
      if (!Within(scaled, wanted, Truncated(wanted * double{kHundredth} * percent_))) return Fit::Refused;
      if (matched_ > 0 && !OnsetFits(tick)) return Fit::Refused;
    }
    previousOnset_ = tick;
    previousScaled_ = scaled;
    return Fit::Accepted;
  }

  bool OnsetFits(std::uint64_t tick) const {
    const std::uint64_t tolerance = Truncated(percent_ * (static_cast<double>(previousScaled_) * 0.01));
    return Within(Scaled(tick - previousOnset_), previousScaled_, tolerance);
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
  const std::vector<PreparedNote>& melody_;
  const int percent_;
  const std::int32_t trackNumber_;
  NoteStream notes_;
  std::array<bool, 256> first_{};  // keys that may be the first note

  std::size_t matched_ = 0;
  int previousKey_ = 0;
  std::uint64_t previousOnset_ = 0;
  std::uint64_t previousScaled_ = 0;
  std::uint64_t firstTick_ = 0;
  float factor_ = 1.0F;
  std::uint64_t hits_ = 0;
};

}  // namespace

std::vector<PreparedNote> PrepareMelody(const std::vector<MelodyElement>& elements, std::uint16_t division) {
  const float factor = static_cast<float>(division) * kPerMelodyTick;
  std::vector<PreparedNote> notes;
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

std::int32_t HitTime(std::uint64_t tick, std::uint16_t division, std::uint32_t tempo) {
  if (division == 0 || tempo == 0) return 0;
  const double time = (1000.0 / division) * (60.0 / tempo) * static_cast<double>(tick);
  return ClampTo<std::int32_t>(Truncated(time));
}

SearchOutcome SearchMidiTrack(ByteView track, std::int32_t trackNumber, const TrackContext& context) {
  if (context.melody.empty()) return {};
  return TrackMatcher(track, trackNumber, context).Search();
}

}  // namespace ts5
