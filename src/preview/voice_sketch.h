// The rests and chords of the voices of a staff in one system: heads, accidentals, dots, stems, beams, rests
// and tuplets.
#pragma once

#include <vector>

#include "preview/canvas.h"
#include "preview/system_places.h"

namespace ts5::preview {

// A slice that is drawn.
struct PlacedSlice {
  const NotationSlice* slice = nullptr;
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

// Of each voice, in order of time.
[[nodiscard]] std::vector<PlacedVoice> SketchVoices(const Engraving& engraving, const SystemPlaces& places,
                                                    std::size_t staff, Canvas& canvas);

}  // namespace ts5::preview
