#include "search/match_starts.h"

#include <algorithm>
#include <cstring>

namespace ts5 {
namespace {

// Below this a scaled distance is so coarse that the rule for chords would pass over too much.
constexpr int kLeastDurationForChords = 16;

struct Range {
  std::int32_t low = 0;
  std::int32_t high = 0;
};

Range RangeOf(const PreparedNote& note, const SearchOptions& options) {
  const auto tolerance = static_cast<std::int32_t>(DurationTolerance(note.duration, options.tolerance));
  return {note.duration - tolerance, note.duration + tolerance};
}

// 1 or 0. Without a branch, so that the compiler compares many notes at once; 0 is a distance not known here.
std::uint8_t UnknownOrWithin(std::int32_t distance, Range range) {
  return static_cast<std::uint8_t>((distance == 0) | ((distance >= range.low) & (distance <= range.high)));
}

// The second note of a match lies about where the duration of the first one ends: never in the first half of
// it, for any tolerance.
std::uint8_t IsNoChord(std::int32_t gap, std::int32_t distance) {
  return static_cast<std::uint8_t>(gap >= distance - gap);
}

}  // namespace

MatchStarts::MatchStarts(const PreparedMelody& melody, const SearchOptions& options)
    : melody_(melody), options_(options) {}

void MatchStarts::Sift(const NoteStream& notes) {
  size_ = notes.Size();
  const std::size_t end = size_ == 0 ? 0 : std::min(notes.Settled(), size_ - 1);
  const bool sifts = melody_.size() > 1;
  if (sifts && options_.pitch != PitchMode::Ignore) {
    SiftPitches(notes, end);
  } else if (sifts && options_.rhythm == RhythmMode::Exact) {
    SiftExactRhythm(notes, end);
  } else if (sifts && options_.rhythm == RhythmMode::Relative && melody_.size() > 2) {
    SiftRelativeRhythm(notes, end);
  } else {
    std::fill_n(may_.begin(), size_, std::uint8_t{1});
    return;
  }
  std::fill(may_.begin() + static_cast<std::ptrdiff_t>(end),
            may_.begin() + static_cast<std::ptrdiff_t>(size_), std::uint8_t{1});
}

std::size_t MatchStarts::Next(std::size_t note) const {
  const void* const found = std::memchr(may_.data() + note, 1, size_ - note);
  return found == nullptr ? size_
                          : static_cast<std::size_t>(static_cast<const std::uint8_t*>(found) - may_.data());
}

void MatchStarts::SiftPitches(const NoteStream& notes, std::size_t end) {
  const std::int16_t* const keys = notes.Keys();
  const int interval = melody_[1].key - melody_[0].key;
  const int first = melody_[0].key;
  const bool any = options_.pitch != PitchMode::Absolute;
  for (std::size_t i = 0; i < end; ++i) {
    may_[i] = static_cast<std::uint8_t>((keys[i + 1] - keys[i] == interval) & (any | (keys[i] == first)));
  }
}

void MatchStarts::SiftExactRhythm(const NoteStream& notes, std::size_t end) {
  const std::int32_t* const gaps = notes.Gaps();
  const std::int32_t* const distances = notes.Distances();
  const Range first = RangeOf(melody_[0], options_);
  for (std::size_t i = 0; i < end; ++i) may_[i] = UnknownOrWithin(distances[i], first);
  if (melody_.size() < 3) return;
  const Range second = RangeOf(melody_[1], options_);
  for (std::size_t i = 0; i < end; ++i) {
    may_[i] = static_cast<std::uint8_t>(may_[i] & UnknownOrWithin(distances[i + 1], second) &
                                        IsNoChord(gaps[i], distances[i]));
  }
}

// The second duration lies to the first as in the melody; compared in single precision with a tick to spare
// at either end for what the exact rules cut off.
void MatchStarts::SiftRelativeRhythm(const NoteStream& notes, std::size_t end) {
  const std::int32_t* const gaps = notes.Gaps();
  const std::int32_t* const distances = notes.Distances();
  const Range second = RangeOf(melody_[1], options_);
  const auto wanted = static_cast<float>(melody_[0].duration);
  const auto low = static_cast<float>(second.low - 1);
  const auto high = static_cast<float>(second.high + 2);
  const bool chords = melody_[0].duration < kLeastDurationForChords;
  for (std::size_t i = 0; i < end; ++i) {
    const auto before = static_cast<float>(distances[i]);
    const auto after = static_cast<float>(distances[i + 1]);
    const bool unknown = (distances[i] == 0) | (distances[i + 1] == 0);
    const bool fits = (after * wanted >= low * before) & (after * wanted <= high * before);
    const bool noChord = chords | (IsNoChord(gaps[i], distances[i]) != 0);
    may_[i] = static_cast<std::uint8_t>((unknown | fits) & noChord);
  }
}

}  // namespace ts5
