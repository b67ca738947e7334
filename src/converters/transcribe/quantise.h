// Places of notes on a score: each beat is divided so that its onsets fit and the division stays simple.
//
// There is no fixed grid. For every quarter note the divisions (halves, triplets, quarters, fives ...)
// compete: how far the onsets lie from the division's places, measured by how exactly this player keeps time,
// against what the places and the division cost. What is found for one beat pulls its neighbours (Viterbi).
#pragma once

#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "platform/base/work_watch.h"

namespace ts5::transcribe {

// Places and lengths on the score: so many units a quarter note, which divisions by 2, 3, 5 and 7 leave
// whole.
inline constexpr std::int64_t kUnits = 3360;

// How this performance keeps time.
struct Timing {
  double onset = 0.01;   // spread of onsets, quarter notes
  bool exact = false;    // made by a machine
  double legato = 0.95;  // which part of its written length a note sounds, usually
  double spread = 0.15;  // of that part
};

struct RawOnset {
  double quarters = 0;
  std::uint8_t key = 0;
};

// The spread of onsets, from how they lie between the places that scores use. tick: the finest step of the
// file; humanSpread: what to expect of a human player at this tempo; both in quarter notes.
[[nodiscard]] Timing MeasureTiming(std::span<const RawOnset> onsets, double tick, double humanSpread);

// Divisions of the beats that have onsets, by the number of the beat.
using Divisions = std::map<std::int64_t, int>;

struct QuantisedOnsets {
  std::vector<std::int64_t> places;  // in units, of each onset
  Divisions divisions;
};
// What a place within a quarter note costs (0 the beat itself): by how rarely scores use it, and, once a
// piece is known, by how rarely this one does.
class PlaceCosts {
 public:
  PlaceCosts() = default;
  // places: of notes, in units, as a first look has them.
  explicit PlaceCosts(std::span<const std::int64_t> places);

  [[nodiscard]] double Of(std::int64_t units) const;

 private:
  std::map<std::int64_t, double> learnt_;  // by place within the quarter note
};

// onsets in order of time. Work that is told to stop gives what it has.
[[nodiscard]] QuantisedOnsets QuantiseOnsets(std::span<const RawOnset> onsets, const Timing& timing,
                                             const PlaceCosts& costs = {}, const CancelCheck& cancelled = {});

// Where a note may end that begins at start: the places of the beat's own division and the plain ones,
// between from and to (units).
[[nodiscard]] std::vector<std::int64_t> EndPlaces(const Divisions& divisions, std::int64_t from,
                                                  std::int64_t to);

}  // namespace ts5::transcribe
