// A melody as it is looked for in one file: in the ticks of the file, with the tolerances of the search.
#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "search/search_melody.h"
#include "search/search_options.h"

namespace ts5 {

// A melody note in a file's own ticks. Durations wrap around at 16 bits.
struct PreparedNote {
  int key = 0;
  std::uint16_t duration = 0;

  bool operator==(const PreparedNote&) const = default;
};

using PreparedMelody = std::vector<PreparedNote>;

// The notes of a melody for files of the division. The rest directly behind a note lengthens it; further
// rests are left out.
[[nodiscard]] PreparedMelody PrepareMelody(const std::vector<MelodyElement>& elements,
                                           std::uint16_t division);

// The played key when it may be the melody's first note.
[[nodiscard]] inline std::optional<int> FirstNoteMatches(PitchMode mode, int melodyKey, int playedKey) {
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

// By how many ticks a played duration may differ from a prepared one; truncated.
[[nodiscard]] std::uint64_t DurationTolerance(std::uint16_t duration, Tolerance tolerance);

}  // namespace ts5
