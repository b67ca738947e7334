#include "converters/transcribe/lengths.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace ts5::transcribe {
namespace {

constexpr std::size_t kBins = 44;  // of 0.025, up to 1.1
constexpr double kBin = 0.025;
constexpr std::size_t kMostGraces = 8;
constexpr int kGraceReach = 24;  // semitones
constexpr double kOver = 0.05;   // of a length that may be held too long
constexpr std::int64_t kWindow = 64 * kUnits;

// How far a place lies from where notes of a simple score begin, quarter notes.
double OffBeat(double place) {
  const double quarters = std::abs(place * 4 - std::round(place * 4)) / 4;
  const double thirds = std::abs(place * 3 - std::round(place * 3)) / 3;
  return std::min(quarters, thirds + 0.005);
}

}  // namespace

void MeasureLegato(std::span<const Sounded> notes, Timing& timing) {
  std::array<double, kBins + 1> bins{};
  double total = 0;
  for (std::size_t i = 0; i < notes.size(); ++i) {
    std::size_t next = i + 1;
    while (next < notes.size() && notes[next].start - notes[i].start < kTogether) ++next;
    if (next == notes.size()) break;
    const double ratio = (notes[i].end - notes[i].start) / (notes[next].start - notes[i].start);
    if (ratio < 0.3 || ratio >= 1.1) continue;
    bins[static_cast<std::size_t>(ratio / kBin + 1e-6)] += 1;
    total += 1;
  }
  if (total < 8) {
    timing.legato = timing.exact ? 1.0 : 0.95;
    timing.spread = timing.exact ? 0.1 : 0.2;
    return;
  }
  const auto mode = static_cast<std::size_t>(std::ranges::max_element(bins) - bins.begin());
  double near = bins[mode];
  if (mode > 0) near += bins[mode - 1];
  near += bins[mode + 1 <= kBins ? mode + 1 : mode];
  const bool steady = near > 0.5 * total;
  const double centre = std::min((static_cast<double>(mode) + 0.5) * kBin, 1.0);
  timing.legato = steady ? centre : std::min(centre, 0.97);
  timing.spread = steady ? 0.035 : 0.2;
}

std::int64_t WrittenEnd(std::int64_t place, double played, std::int64_t next, const Divisions& divisions,
                        const Timing& timing) {
  const double wanted = std::max(played, 1.0) / timing.legato;
  const auto farthest = place + static_cast<std::int64_t>(std::min(wanted * 1.6, 1e9)) + kUnits;
  // Of notes that are held very long, ends near the one that is wanted.
  const auto nearest =
      place + std::max<std::int64_t>(static_cast<std::int64_t>(std::min(wanted, 1e9)) - kWindow, 1);
  std::vector<std::int64_t> places =
      EndPlaces(divisions, nearest, std::min({next, farthest, nearest + 2 * kWindow}));
  const bool reaches = next <= farthest;
  if (reaches && (places.empty() || places.back() != next)) places.push_back(next);
  std::int64_t best = next == INT64_MAX ? place + kUnits : next;
  double least = 1e18;
  for (const std::int64_t end : places) {
    const auto length = static_cast<double>(end - place);
    const double miss = (played / length - timing.legato) / timing.spread;
    // What is longer than it sounds is usual, what is shorter is not.
    double cost = std::min(miss * miss / 2, 40.0) * (miss > 0 ? 1.5 : 1);
    // Without a note that follows nothing is held longer than it is written.
    const double over = played / length - 1;
    if (over > 0 && end != next) cost += std::min(over * over / (2 * kOver * kOver), 40.0);
    cost += end == next ? 0 : 0.5 * PlaceCosts().Of(end) + 0.8;
    if (end != next && next != INT64_MAX) {
      const auto rest = static_cast<double>(next - end) / static_cast<double>(kUnits);
      cost += rest < 0.26 ? 1.5 : 0;
      cost += rest < 0.51 ? 0.7 : 0;
    }
    if (cost < least) {
      least = cost;
      best = end;
    }
  }
  return std::max(best, place + 1);
}

namespace {

// Notes that begin together.
struct Together {
  std::size_t first = 0;
  std::size_t last = 0;
};

class GraceFinder {
 public:
  GraceFinder(std::span<const Sounded> notes, std::span<const std::uint8_t> keys, double shortest)
      : notes_(notes), keys_(keys), shortest_(shortest) {
    for (std::size_t i = 0; i < notes.size();) {
      Together group{i, i};
      while (group.last < notes.size() && notes[group.last].start - notes[i].start < kAtOnce) ++group.last;
      i = group.last;
      groups_.push_back(group);
    }
  }

  std::vector<Grace> Find() const {
    std::vector<Grace> graces;
    for (std::size_t g = 0; g < groups_.size();) {
      std::vector<std::vector<std::size_t>> chords;
      while (g < groups_.size()) {
        std::vector<std::size_t> chord = GraceChord(g);
        if (chord.empty()) break;
        chords.push_back(std::move(chord));
        ++g;
      }
      if (chords.empty()) {
        ++g;
        continue;
      }
      if (chords.size() > kMostGraces) continue;
      const std::size_t main = MainOf(groups_[g], chords.back());
      // A long row of short notes is a run, and a note as short as its graces is one of them.
      if (Length(main) < 1.8 * Length(chords.back().front())) continue;
      const double start = notes_[chords.front().front()].start;
      graces.push_back({std::move(chords), main, OffBeat(start) <= OffBeat(notes_[main].start)});
    }
    return graces;
  }

 private:
  static constexpr double kAtOnce = 0.015;
  static constexpr std::size_t kMostAtOnce = 128;

  [[nodiscard]] double Length(std::size_t note) const { return notes_[note].end - notes_[note].start; }

  // The notes of a group that are so short and so close before the next group that they lead to it.
  [[nodiscard]] std::vector<std::size_t> GraceChord(std::size_t index) const {
    std::vector<std::size_t> chord;
    if (index + 1 == groups_.size()) return chord;
    const Together group = groups_[index];
    const Together following = groups_[index + 1];
    if (std::max(group.last - group.first, following.last - following.first) > kMostAtOnce) return chord;
    const double next = notes_[following.first].start;
    if (next - notes_[group.first].start > shortest_) return chord;
    for (std::size_t i = group.first; i < group.last; ++i) {
      if (Length(i) > shortest_ || notes_[i].end > next + kTogether) continue;
      const std::size_t main = MainOf(following, {i});
      if (std::abs(keys_[main] - keys_[i]) <= kGraceReach) chord.push_back(i);
    }
    return chord;
  }

  // The note of a group that lies nearest.
  [[nodiscard]] std::size_t MainOf(Together group, const std::vector<std::size_t>& before) const {
    std::size_t best = group.first;
    for (std::size_t i = group.first; i < group.last; ++i) {
      if (std::abs(keys_[i] - keys_[before.front()]) < std::abs(keys_[best] - keys_[before.front()]))
        best = i;
    }
    return best;
  }

  std::span<const Sounded> notes_;
  std::span<const std::uint8_t> keys_;
  double shortest_;
  std::vector<Together> groups_;
};

}  // namespace

std::vector<Grace> FindGraces(std::span<const Sounded> notes, std::span<const std::uint8_t> keys,
                              double secondsOfQuarter) {
  constexpr double kShortestSeconds = 0.09;
  constexpr double kShortestQuarters = 0.16;
  const double shortest = std::min(kShortestSeconds / std::max(secondsOfQuarter, 0.05), kShortestQuarters);
  return GraceFinder(notes, keys, shortest).Find();
}

}  // namespace ts5::transcribe
