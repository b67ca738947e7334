// Draws one staff of one system: signs, notes with stems and beams, rests, ties and slurs, and the texts and
// marks around them. y 0 is the top line, 4 the bottom one.
#pragma once

#include "preview/engraving.h"
#include "preview/sketch.h"
#include "preview/system_places.h"

namespace ts5::preview {

struct StaffSketch {
  Sketch sketch;
  double top = 0;     // above which nothing is drawn
  double bottom = 4;  // below which nothing is drawn
};
// first: the top staff of the system, which has its bar numbers, tempos and endings.
[[nodiscard]] StaffSketch SketchStaff(const Engraving& engraving, const SystemPlaces& places,
                                      std::size_t staff, bool first);

}  // namespace ts5::preview
