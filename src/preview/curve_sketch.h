// The ties and slurs of a voice.
#pragma once

#include "preview/marked_staff.h"

namespace ts5::preview {

void SketchTies(const MarkedStaff& on, std::size_t voice);
// Over what lies between their ends.
void SketchSlurs(const MarkedStaff& on, std::size_t voice);

}  // namespace ts5::preview
