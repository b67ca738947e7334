#include "converters/transcribe/staves.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>

#include "score/score_document.h"

namespace ts5::transcribe {
namespace {

constexpr int kLowestBorder = 45;
constexpr int kHighestBorder = 76;
constexpr std::size_t kBorders = kHighestBorder - kLowestBorder + 1;
constexpr int kReach = 13;  // semitones of a hand
constexpr std::size_t kFingers = 5;
constexpr std::size_t kPlacesBetween = 1024;  // two looks at the stop
constexpr double kMove = 0.12;                // of the border, for a semitone

// What it costs that the notes that sound are divided here. keys in order.
double BorderCost(const std::vector<int>& keys, int border) {
  const auto first = std::ranges::lower_bound(keys, border);
  double cost = 0.02 * std::abs(border - 60);
  const auto hand = [&cost](auto from, auto to) {
    if (from == to) return;
    cost += 0.7 * std::max(*std::prev(to) - *from - kReach, 0);
    if (static_cast<std::size_t>(to - from) > kFingers) cost += 2;
  };
  hand(keys.begin(), first);
  hand(first, keys.end());
  // A wide gap is where hands part.
  if (first != keys.begin() && first != keys.end()) cost -= 0.08 * std::min(*first - *std::prev(first), 12);
  return cost;
}

// How badly keys read under a clef: ledger lines.
double ClefCost(const std::vector<std::uint8_t>& keys, std::uint8_t clef) {
  // The keys between which a staff needs no more than one ledger line.
  constexpr std::array<std::array<int, 2>, 3> kComfort = {{{60, 81}, {50, 71}, {40, 61}}};
  double cost = 0;
  for (const int key : keys) {
    const int outside = std::max({kComfort[clef][0] - key, key - kComfort[clef][1], 0});
    cost += outside;
  }
  return keys.empty() ? 0 : cost / static_cast<double>(keys.size());
}

}  // namespace

bool NeedsTwoStaves(std::span<const HandNote> notes, bool keyboard) {
  std::size_t low = 0;
  std::size_t high = 0;
  std::size_t wide = 0;
  std::size_t places = 0;
  for (std::size_t i = 0; i < notes.size();) {
    const double start = notes[i].start;
    int lowest = 127;
    int highest = 0;
    for (; i < notes.size() && notes[i].start - start < 0.06; ++i) {
      low += notes[i].key < 57 ? 1 : 0;
      high += notes[i].key > 62 ? 1 : 0;
      lowest = std::min<int>(lowest, notes[i].key);
      highest = std::max<int>(highest, notes[i].key);
    }
    ++places;
    wide += highest - lowest > 16 ? 1 : 0;
  }
  const std::size_t least = notes.size() / 8;
  if (low <= least || high <= least) return false;
  return wide * (keyboard ? 10 : 5) > places;
}

std::vector<bool> LowerHand(std::span<const HandNote> notes, const CancelCheck& cancelled) {
  std::vector<bool> lower(notes.size());
  struct Place {
    std::size_t first = 0;
    std::array<std::uint8_t, kBorders> from{};
  };
  std::vector<Place> places;
  std::array<double, kBorders> sum{};
  std::vector<std::size_t> sounding;
  for (std::size_t i = 0; i < notes.size();) {
    Place place{.first = i};
    const double start = notes[i].start;
    std::erase_if(sounding, [&](std::size_t note) { return notes[note].end <= start + 0.1; });
    for (; i < notes.size() && notes[i].start - start < 0.06; ++i) sounding.push_back(i);
    if (sounding.size() > 64) sounding.erase(sounding.begin(), sounding.end() - 64);
    std::vector<int> keys;
    for (const std::size_t note : sounding) keys.push_back(notes[note].key);
    std::ranges::sort(keys);
    std::array<double, kBorders> next{};
    for (std::size_t to = 0; to < kBorders; ++to) {
      double best = std::numeric_limits<double>::max();
      for (std::size_t from = 0; from < kBorders; ++from) {
        const double cost = sum[from] + kMove * std::abs(static_cast<double>(to) - static_cast<double>(from));
        if (cost < best) {
          best = cost;
          place.from[to] = static_cast<std::uint8_t>(from);
        }
      }
      next[to] = best + BorderCost(keys, kLowestBorder + static_cast<int>(to));
    }
    sum = next;
    places.push_back(place);
    if (places.size() % kPlacesBetween == 0 && cancelled && cancelled()) return lower;
  }
  auto border = static_cast<std::size_t>(std::ranges::min_element(sum) - sum.begin());
  std::size_t end = notes.size();
  for (std::size_t p = places.size(); p-- > 0;) {
    for (std::size_t i = places[p].first; i < end; ++i)
      lower[i] = notes[i].key < kLowestBorder + static_cast<int>(border);
    end = places[p].first;
    border = places[p].from[border];
  }
  return lower;
}

std::vector<std::uint8_t> ChooseClefs(std::span<const std::vector<std::uint8_t>> keysOfBars, bool viola) {
  constexpr double kChange = 7;
  constexpr std::size_t kClefs = 3;
  std::vector<std::array<std::uint8_t, kClefs>> from(keysOfBars.size());
  std::array<double, kClefs> sum{};
  for (std::size_t bar = 0; bar < keysOfBars.size(); ++bar) {
    std::array<double, kClefs> next{};
    for (std::uint8_t to = 0; to < kClefs; ++to) {
      double best = std::numeric_limits<double>::max();
      for (std::uint8_t before = 0; before < kClefs; ++before) {
        const double cost = sum[before] + (before == to || bar == 0 ? 0 : kChange);
        if (cost < best) {
          best = cost;
          from[bar][to] = before;
        }
      }
      const bool allowed = to != kClefC || viola;
      next[to] = best + ClefCost(keysOfBars[bar], to) + (allowed ? 0 : 1000);
      if (viola && to == kClefG) next[to] += 0.5;
    }
    sum = next;
  }
  std::vector<std::uint8_t> clefs(keysOfBars.size());
  auto clef = static_cast<std::uint8_t>(std::ranges::min_element(sum) - sum.begin());
  for (std::size_t bar = keysOfBars.size(); bar-- > 0;) {
    clefs[bar] = clef;
    clef = from[bar][clef];
  }
  return clefs;
}

}  // namespace ts5::transcribe
