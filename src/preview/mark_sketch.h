// What stands around the notes of a staff: ties, slurs, articulations and ornaments, dynamics and hairpins,
// words, chord names, lyrics, endings and tempos.
#pragma once

#include <vector>

#include "preview/canvas.h"
#include "preview/voice_sketch.h"

namespace ts5::preview {

// first: the staff has the endings, tempos and jumps of the system.
void SketchMarks(const Engraving& engraving, const SystemPlaces& places, std::size_t staff, bool first,
                 const std::vector<PlacedVoice>& voices, Canvas& canvas);

}  // namespace ts5::preview
