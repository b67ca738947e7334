// How long notes are written: a note that is played sounds shorter, or a little longer, than what it stands
// for.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "converters/transcribe/quantise.h"

namespace ts5::transcribe {

// Notes that begin within this of each other begin together, quarter notes.
inline constexpr double kTogether = 0.03;

struct Sounded {
  double start = 0;  // quarter notes
  double end = 0;
};

// Sets legato and spread from notes that another one follows. notes by start, roughly.
void MeasureLegato(std::span<const Sounded> notes, Timing& timing);

// Where a chord ends on the score. played: how long it sounds, units; next: where its voice goes on
// (INT64_MAX: not at all). Most notes last to the next one; a rest must be worth it.
[[nodiscard]] std::int64_t WrittenEnd(std::int64_t place, double played, std::int64_t next,
                                      const Divisions& divisions, const Timing& timing);

// Grace notes and the note they belong to, by index.
struct Grace {
  std::vector<std::vector<std::size_t>> chords = {};  // one after the other
  std::size_t main = 0;
  bool onTheBeat = false;  // the first of them stands where the main note is written
};
// notes by start. secondsOfQuarter: of a quarter note.
[[nodiscard]] std::vector<Grace> FindGraces(std::span<const Sounded> notes,
                                            std::span<const std::uint8_t> keys, double secondsOfQuarter);

}  // namespace ts5::transcribe
