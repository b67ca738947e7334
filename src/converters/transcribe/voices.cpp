#include "converters/transcribe/voices.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <numeric>
#include <tuple>

namespace ts5::transcribe {
namespace {

constexpr std::size_t kBeam = 24;
constexpr std::size_t kPlacesBetween = 64;  // two looks at the stop
// What a way through the staff pays for.
constexpr double kCut = 10;     // a note that the next one of its voice cuts short, for a quarter note
constexpr double kLeap = 0.06;  // a semitone
constexpr double kGap = 0.25;   // a rest, for a quarter note, up to kLongestGap
constexpr double kLongestGap = 2;
constexpr double kCrossing = 2.5;  // a voice above a higher one
constexpr double kDivide = 2.5;    // a chord that could stand in one voice
constexpr double kDivideAmongTwo = -0.6;
constexpr double kRecent = 0.5;  // quarter notes since the second voice
constexpr std::array<double, kMostVoices> kUse = {0, 1.6, 8, 14};

// Notes that begin and end together.
struct Chord {
  std::vector<std::size_t> notes;
  double end = 0;
  double pitch = 0;  // mean key
};

struct Line {
  double end = -1e18;
  float pitch = 0;
  bool used = false;
};
// What a way does at a place.
struct Step {
  std::uint8_t before = 0;                         // index of the way at the place before
  std::uint8_t taken = 0;                          // how it takes the notes
  std::array<std::uint8_t, kMostVoices> voices{};  // of the chords of this place
};
struct Way {
  std::array<Line, kMostVoices> lines;
  double cost = 0;
  Step last;
};

// How much shorter a note may be written than it seems, units.
double Slack(double length, const Timing& timing) {
  if (timing.exact) return std::max(0.06 * length, 0.04 * static_cast<double>(kUnits));
  return std::max(0.3 * length, 0.12 * static_cast<double>(kUnits));
}

// The chords of one place, high to low; at most kMostVoices, what is more joins the nearest.
std::vector<Chord> ChordsOf(std::span<const StaffNote> notes, std::size_t first, std::size_t last,
                            const Timing& timing) {
  std::vector<std::size_t> byLength(last - first);
  std::iota(byLength.begin(), byLength.end(), first);
  std::ranges::sort(byLength, {}, [&](std::size_t i) { return notes[i].length; });
  std::vector<Chord> chords;
  double longest = 0;
  for (const std::size_t i : byLength) {
    const double length = notes[i].length;
    const double reach = timing.exact ? 1.08 : 1.6;
    if (chords.empty() ||
        (length > longest * reach && length - longest > 0.06 * static_cast<double>(kUnits) &&
         chords.size() < kMostVoices)) {
      chords.emplace_back();
      longest = length;
    }
    chords.back().notes.push_back(i);
  }
  for (Chord& chord : chords) {
    double length = 0;
    for (const std::size_t i : chord.notes) {
      length += notes[i].length;
      chord.pitch += notes[i].key;
    }
    const auto count = static_cast<double>(chord.notes.size());
    chord.pitch /= count;
    chord.end = static_cast<double>(notes[first].place) + length / count;
  }
  std::ranges::sort(chords, std::greater<>(), &Chord::pitch);
  return chords;
}

// The ways to take the notes of a place: as they are, or a chord with its highest or lowest note in a voice
// of its own.
std::vector<std::vector<Chord>> WaysToTake(std::vector<Chord> chords, std::span<const StaffNote> notes) {
  std::vector<std::vector<Chord>> ways;
  if (chords.size() == 1 && chords[0].notes.size() > 1) {
    std::vector<std::size_t> byKey = chords[0].notes;
    std::ranges::sort(byKey, std::greater<>(), [&](std::size_t i) { return notes[i].key; });
    for (const std::size_t upper : {std::size_t{1}, byKey.size() - 1}) {
      if (!ways.empty() && byKey.size() == 2) break;
      std::vector<Chord> divided(2, Chord{{}, chords[0].end, 0});
      for (std::size_t i = 0; i < byKey.size(); ++i) {
        Chord& chord = divided[i < upper ? 0 : 1];
        chord.notes.push_back(byKey[i]);
        chord.pitch += notes[byKey[i]].key;
      }
      for (Chord& chord : divided) chord.pitch /= static_cast<double>(chord.notes.size());
      ways.push_back(std::move(divided));
    }
  }
  ways.insert(ways.begin(), std::move(chords));
  return ways;
}

class Beam {
 public:
  explicit Beam(const Timing& timing) : timing_(timing), ways_(1) {}

  // taken: the ways to take the notes of the place.
  void Add(const std::vector<std::vector<Chord>>& taken, std::int64_t place) {
    std::vector<Way> next;
    const auto at = static_cast<double>(place);
    for (std::size_t w = 0; w < ways_.size(); ++w) {
      for (std::size_t i = 0; i < taken.size(); ++i) {
        Way way = ways_[w];
        way.last = {static_cast<std::uint8_t>(w), static_cast<std::uint8_t>(i), {}};
        // A chord is divided where there have been two voices anyway.
        const bool two = way.lines[1].end > at - kRecent * static_cast<double>(kUnits);
        if (i > 0) way.cost += two ? kDivideAmongTwo : kDivide;
        Place(taken[i], at, 0, 0, way, next);
      }
    }
    const std::size_t kept = std::min(kBeam, next.size());
    std::ranges::partial_sort(next, next.begin() + static_cast<std::ptrdiff_t>(kept), {}, &Way::cost);
    next.resize(kept);
    ways_ = std::move(next);
    auto& steps = steps_.emplace_back();
    for (const Way& way : ways_) steps.push_back(way.last);
  }

  // The voices of the chords of each place.
  [[nodiscard]] std::vector<Step> Best() const {
    std::vector<Step> best(steps_.size());
    std::size_t at = 0;
    for (std::size_t i = steps_.size(); i-- > 0;) {
      best[i] = steps_[i][at];
      at = steps_[i][at].before;
    }
    return best;
  }

 private:
  void Place(const std::vector<Chord>& chords, double place, std::size_t index, unsigned taken,
             const Way& way, std::vector<Way>& next) const {
    if (index == chords.size()) {
      next.push_back(way);
      next.back().cost += Crossings(way, place);
      return;
    }
    const Chord& chord = chords[index];
    for (std::size_t voice = 0; voice < kMostVoices; ++voice) {
      if ((taken >> voice & 1U) != 0) continue;
      // Voices open one after the other.
      if (voice > 1 && !way.lines[voice].used && !way.lines[voice - 1].used) break;
      Way changed = way;
      Line& line = changed.lines[voice];
      changed.cost += kUse[voice] * 0.5 + (line.used ? 0 : kUse[voice]);
      if (line.used) {
        const double over = line.end - place;
        if (over > 0) {
          changed.cost += kCut * over / static_cast<double>(kUnits);
        } else if (-over > 0) {
          changed.cost += kGap * std::min(-over / static_cast<double>(kUnits), kLongestGap);
        }
        changed.cost += kLeap * std::min(std::abs(line.pitch - chord.pitch), 24.0);
      }
      const double length = chord.end - place;
      line = {place + length - Slack(length, timing_), static_cast<float>(chord.pitch), true};
      changed.last.voices[index] = static_cast<std::uint8_t>(voice);
      Place(chords, place, index + 1, taken | 1U << voice, changed, next);
    }
  }

  // Lines that sound at this place and lie the wrong way round.
  [[nodiscard]] static double Crossings(const Way& way, double place) {
    double cost = 0;
    for (std::size_t high = 0; high < kMostVoices; ++high) {
      if (way.lines[high].end <= place) continue;
      for (std::size_t low = high + 1; low < kMostVoices; ++low) {
        if (way.lines[low].end > place && way.lines[low].pitch > way.lines[high].pitch) cost += kCrossing;
      }
    }
    return cost;
  }

  const Timing& timing_;
  std::vector<Way> ways_;
  std::vector<std::vector<Step>> steps_;  // of the ways that were kept at each place
};

}  // namespace

std::vector<std::uint8_t> SeparateVoices(std::span<const StaffNote> notes, const Timing& timing,
                                         const CancelCheck& cancelled) {
  std::vector<std::uint8_t> voices(notes.size());
  std::vector<std::vector<std::vector<Chord>>> places;
  Beam beam(timing);
  for (std::size_t i = 0; i < notes.size();) {
    const std::size_t first = i;
    while (i < notes.size() && notes[i].place == notes[first].place) ++i;
    places.push_back(WaysToTake(ChordsOf(notes, first, i, timing), notes));
    beam.Add(places.back(), notes[first].place);
    if (places.size() % kPlacesBetween == 0 && cancelled && cancelled()) return voices;
  }
  const std::vector<Step> best = beam.Best();
  for (std::size_t p = 0; p < places.size(); ++p) {
    const std::vector<Chord>& chords = places[p][best[p].taken];
    for (std::size_t c = 0; c < chords.size(); ++c) {
      for (const std::size_t note : chords[c].notes) voices[note] = best[p].voices[c];
    }
  }
  return voices;
}

}  // namespace ts5::transcribe
