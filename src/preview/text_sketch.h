// What stands beside the notes of a voice: dynamics and hairpins, words, chord names, tempos and octave
// lines.
#pragma once

#include "preview/marked_staff.h"

namespace ts5::preview {

void SketchTexts(const MarkedStaff& on, std::size_t voice);
// The tempos of the systems that no mark says.
void SketchTempos(const MarkedStaff& on);

}  // namespace ts5::preview
