// Paints a line of music into a place, as large as it fits.
#pragma once

#include <QColor>
#include <QPainter>

#include "preview/hit_line.h"

namespace ts5::preview {

// largest: pixels of a staff space at most. It stands at the left, in the middle of the height.
void PaintLine(QPainter& painter, const QRectF& place, const MusicLine& line, double largest,
               const QColor& ink);

}  // namespace ts5::preview
