// How a list of titles is laid out in its field: as a table in as many columns as give it the largest
// letters.
#pragma once

#include <QRectF>
#include <string>

#include "artworker/layout.h"
#include "artworker/text_plan.h"

namespace ts5::artworker {

// A text that begins with it is such a list: a title a line, its number, name and time parted by tabs. It
// comes from filling a layout for drawing and never stands in a file.
inline const std::string kTableMark = "\f";

// As PlanText. The letters are no higher than the field's line spacing allows; what is longer than its column
// shrinks with all others.
[[nodiscard]] TextPlan PlanTracks(const TextField& field, const QRectF& rect, double inset);

}  // namespace ts5::artworker
