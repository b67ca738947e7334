// The rests and chords of the voices of a staff in one system: heads, accidentals, dots, stems, beams, rests
// and tuplets.
#pragma once

#include <vector>

#include "preview/canvas.h"
#include "preview/placed_slice.h"

namespace ts5::preview {

// Of each voice, in order of time.
[[nodiscard]] std::vector<PlacedVoice> SketchVoices(const Engraving& engraving, const SystemPlaces& places,
                                                    std::size_t staff, Canvas& canvas);

}  // namespace ts5::preview
