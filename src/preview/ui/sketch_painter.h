// Paints a page of music with the signs of the note editor and those that only scores have.
#pragma once

#include <QPainter>

#include "preview/sketch.h"

namespace ts5::preview {

// One unit of the painter is a staff space.
void PaintSketch(QPainter& painter, const Sketch& sketch, const QColor& ink);

}  // namespace ts5::preview
