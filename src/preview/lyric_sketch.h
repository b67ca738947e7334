// The lyrics of a staff: verses on lines of their own below all else.
#pragma once

#include "preview/marked_staff.h"

namespace ts5::preview {

void SketchLyrics(const MarkedStaff& on);

}  // namespace ts5::preview
