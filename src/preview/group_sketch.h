// What joins the chords of a voice: beams, with the stems that reach them, and the numbers of tuplets.
#pragma once

#include <span>

#include "preview/canvas.h"
#include "preview/placed_slice.h"

namespace ts5::preview {

// From the heads to the tip, with flags and the stroke of a slashed grace note.
void SketchStem(Canvas& canvas, const PlacedSlice& placed, int flags);
// The slices under one beam; settles the tips of their stems.
void SketchBeams(Canvas& canvas, std::span<PlacedSlice> run);
void SketchTuplets(Canvas& canvas, const PlacedVoice& voice);

}  // namespace ts5::preview
