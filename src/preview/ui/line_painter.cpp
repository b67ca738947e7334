#include "preview/ui/line_painter.h"

#include <algorithm>

#include "preview/ui/sketch_painter.h"

namespace ts5::preview {

void PaintLine(QPainter& painter, const QRectF& place, const MusicLine& line, double largest,
               const QColor& ink) {
  if (line.width <= 0 || line.Height() <= 0) return;
  const double scale = std::min({largest, place.width() / line.width, place.height() / line.Height()});
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.translate(place.left(),
                    place.top() + (place.height() - line.Height() * scale) / 2 - line.top * scale);
  painter.scale(scale, scale);
  PaintSketch(painter, line.sketch, ink);
  painter.restore();
}

}  // namespace ts5::preview
