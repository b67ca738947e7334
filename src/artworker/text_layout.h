// How the text of a field is laid out: its size, its lines and where they stand. The same plan serves the
// screen, the printer and files, as all measures are hundredths of a millimetre.
#pragma once

#include <QRectF>
#include <string>

#include "artworker/layout.h"
#include "artworker/text_plan.h"

namespace ts5::artworker {

// A text of one line that begins with it is no larger than its field allows, whatever it is to fill. Such a
// text comes from filling a layout for drawing and never stands in a file.
inline const std::string kFitMark = "\v";

// field: its rectangle; inset: border and gap, on every side.
[[nodiscard]] TextPlan PlanText(const TextField& field, const QRectF& rect, double inset);

}  // namespace ts5::artworker
