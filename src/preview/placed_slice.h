// The chords and rests of a voice with their places in a system.
#pragma once

#include <vector>

#include "preview/system_places.h"

namespace ts5::preview {

// Where a step above the bottom line is, from the top line down.
[[nodiscard]] inline double YOf(int step) {
  return 4 - step / 2.0;
}

// A slice that is drawn.
struct PlacedSlice {
  const converters::NotationSlice* slice = nullptr;
  double x = 0;            // left edge of its heads
  double size = 1;         // of a grace note less
  std::vector<int> steps;  // above the bottom line, of each note as it stands in the chord
  bool up = true;          // the stem
  bool shared = false;     // other voices have music in its bar, so that the stem says which voice it is
  bool beamed = false;
  double top = 0;  // of heads and stem
  double bottom = 0;
  double tip = 0;  // of the stem

  [[nodiscard]] double Middle() const { return x + kHeadWidth * size / 2; }
  [[nodiscard]] double StemX() const { return up ? x + (kHeadWidth - 0.06) * size : x + 0.06; }
};
using PlacedVoice = std::vector<PlacedSlice>;

}  // namespace ts5::preview
