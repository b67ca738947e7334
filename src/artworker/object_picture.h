// Objects of a layout as small pictures, cut to their shapes.
#pragma once

#include "artworker/object_painter.h"

namespace ts5::artworker {

// The object in the middle of the rectangle, as large as it fits.
void PaintInto(QPainter& painter, const ObjectPainting& painting, ArtworkObjectId id, const QRectF& rect);

}  // namespace ts5::artworker
