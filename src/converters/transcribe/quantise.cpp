#include "converters/transcribe/quantise.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numeric>

namespace ts5::transcribe {
namespace {

// A way to divide a beat, and what it costs to use it at all.
struct Division {
  int parts = 1;
  double cost = 0;
};
constexpr std::array<Division, 11> kDivisions = {{
    {1, 0},
    {2, 0.2},
    {4, 0.6},
    {3, 1.2},
    {6, 2.2},
    {8, 2.0},
    {12, 4.5},
    {16, 4.0},
    {5, 5.0},
    {7, 7.0},
    {10, 7.0},
}};
constexpr double kOtherFamily = 0.8;  // between neighbours: twos and threes
constexpr double kSameKey = 9;        // one key struck twice at one place
constexpr double kFarthest = 12;      // an onset that lies nowhere near costs no more
constexpr double kLeastSpread = 0.004;
constexpr std::size_t kBeatsBetween = 64;  // two looks at the stop
constexpr double kUnusual = 1.5;           // a place that the piece does not use otherwise

constexpr bool IsTernary(int parts) {
  return parts % 3 == 0;
}

struct BeatFit {
  std::array<double, kDivisions.size()> cost{};
};

double Snap(double within, int parts) {
  return std::round(within * parts) / parts;
}

// The onsets of one beat, first to last.
BeatFit Fit(std::span<const RawOnset> onsets, std::int64_t beat, const Timing& timing,
            const PlaceCosts& costs) {
  BeatFit fit;
  for (std::size_t d = 0; d < kDivisions.size(); ++d) {
    const int parts = kDivisions[d].parts;
    double cost = kDivisions[d].cost;
    std::array<double, 128> lastPlace{};
    lastPlace.fill(-1);
    double previous = -1;
    for (const RawOnset& onset : onsets) {
      const double within = onset.quarters - static_cast<double>(beat);
      const double place = Snap(within, parts);
      const double miss = (within - place) / timing.onset;
      cost += std::min(miss * miss / 2, kFarthest);
      // The notes of a chord share what their place costs.
      const double placeCost = costs.Of(std::llround(place * static_cast<double>(kUnits)));
      cost += place == previous ? 0.1 * placeCost : placeCost;
      if (lastPlace[onset.key & 0x7F] == place) cost += kSameKey;
      lastPlace[onset.key & 0x7F] = place;
      previous = place;
    }
    fit.cost[d] = cost;
  }
  return fit;
}

double UsualCost(std::int64_t within) {
  if (within == 0) return 0;
  const std::int64_t parts = kUnits / std::gcd(within, kUnits);
  switch (parts) {
    case 2:
      return 0.5;
    case 4:
      return 1.2;
    case 3:
      return 1.4;
    case 6:
      return 2.4;
    case 8:
      return 2.6;
    case 12:
      return 4.0;
    case 16:
      return 4.0;
    case 5:
      return 3.0;
    case 7:
      return 4.0;
    default:
      return 5.0;
  }
}

std::int64_t Within(std::int64_t units) {
  return ((units % kUnits) + kUnits) % kUnits;
}

}  // namespace

PlaceCosts::PlaceCosts(std::span<const std::int64_t> places) {
  std::map<std::int64_t, double> counts;
  double most = 1;
  for (const std::int64_t place : places) most = std::max(most, counts[Within(place)] += 1);
  // What the piece uses as often as scores do otherwise keeps its cost.
  for (const auto& [within, count] : counts)
    learnt_[within] =
        within == 0 ? 0 : std::min(UsualCost(within) + kUnusual, std::log(1.5 * most / (count + 0.5)));
}

double PlaceCosts::Of(std::int64_t units) const {
  const std::int64_t within = Within(units);
  if (learnt_.empty()) return UsualCost(within);
  const auto found = learnt_.find(within);
  return found == learnt_.end() ? UsualCost(within) + kUnusual : std::max(found->second, 0.0);
}

Timing MeasureTiming(std::span<const RawOnset> onsets, double tick, double humanSpread) {
  Timing timing;
  if (onsets.empty()) return timing;
  // A machine hits places that a score can name, but for the rounding to ticks.
  constexpr std::array<int, 4> kExactParts = {32, 24, 10, 7};
  std::size_t exact = 0;
  for (const RawOnset& onset : onsets) {
    const double within = onset.quarters - std::floor(onset.quarters);
    exact += std::ranges::any_of(
        kExactParts, [&](int parts) { return std::abs(within - Snap(within, parts)) <= 0.6 * tick + 1e-9; });
  }
  // By chance the places are hit so often.
  const double chance = std::min((32 + 16 + 8 + 6) * 1.2 * tick, 0.9);
  const double share = static_cast<double>(exact) / static_cast<double>(onsets.size());
  timing.exact = share > chance + 0.85 * (1 - chance);
  timing.onset = timing.exact ? std::max(0.75 * tick, kLeastSpread) : std::clamp(humanSpread, 0.01, 0.12);
  return timing;
}

QuantisedOnsets QuantiseOnsets(std::span<const RawOnset> onsets, const Timing& timing,
                               const PlaceCosts& costs, const CancelCheck& cancelled) {
  QuantisedOnsets result;
  result.places.resize(onsets.size());
  struct Beat {
    std::int64_t number = 0;
    std::size_t first = 0;
    std::size_t last = 0;
    BeatFit fit;
    std::array<std::uint8_t, kDivisions.size()> from{};
  };
  std::vector<Beat> beats;
  for (std::size_t i = 0; i < onsets.size();) {
    Beat beat;
    // An onset shortly before a beat belongs to it.
    beat.number = static_cast<std::int64_t>(std::floor(onsets[i].quarters));
    beat.first = i;
    while (i < onsets.size() && onsets[i].quarters < static_cast<double>(beat.number + 1)) ++i;
    beat.last = i;
    beat.fit = Fit(onsets.subspan(beat.first, beat.last - beat.first), beat.number, timing, costs);
    beats.push_back(beat);
    if (beats.size() % kBeatsBetween == 0 && cancelled && cancelled()) return result;
  }
  std::array<double, kDivisions.size()> sum{};
  for (std::size_t b = 0; b < beats.size(); ++b) {
    std::array<double, kDivisions.size()> next{};
    for (std::size_t d = 0; d < kDivisions.size(); ++d) {
      double best = std::numeric_limits<double>::max();
      for (std::size_t e = 0; e < kDivisions.size(); ++e) {
        const bool near = b > 0 && beats[b].number - beats[b - 1].number <= 2;
        const bool plain = kDivisions[e].parts == 1 || kDivisions[d].parts == 1;
        const bool other = IsTernary(kDivisions[d].parts) != IsTernary(kDivisions[e].parts);
        const double cost = sum[e] + (near && other && !plain ? kOtherFamily : 0);
        if (cost < best) {
          best = cost;
          beats[b].from[d] = static_cast<std::uint8_t>(e);
        }
      }
      next[d] = best + beats[b].fit.cost[d];
    }
    sum = next;
  }
  auto chosen = static_cast<std::size_t>(std::ranges::min_element(sum) - sum.begin());
  for (std::size_t b = beats.size(); b-- > 0;) {
    const Beat& beat = beats[b];
    const int parts = kDivisions[chosen].parts;
    result.divisions[beat.number] = parts;
    for (std::size_t i = beat.first; i < beat.last; ++i) {
      const double within = onsets[i].quarters - static_cast<double>(beat.number);
      result.places[i] = beat.number * kUnits + std::llround(within * parts) * kUnits / parts;
    }
    chosen = beat.from[chosen];
  }
  return result;
}

std::vector<std::int64_t> EndPlaces(const Divisions& divisions, std::int64_t from, std::int64_t to) {
  std::vector<std::int64_t> places;
  for (std::int64_t beat = from / kUnits; beat * kUnits <= to; ++beat) {
    // Plain places beside twos and fours, but not beside triplets.
    const auto known = divisions.find(beat);
    int parts = known == divisions.end() ? 4 : known->second;
    if ((parts & (parts - 1)) == 0) parts = std::max(parts, 4);
    for (int i = 0; i < parts; ++i) {
      const std::int64_t place = beat * kUnits + i * kUnits / parts;
      if (place >= from && place <= to) places.push_back(place);
    }
  }
  return places;
}

}  // namespace ts5::transcribe
