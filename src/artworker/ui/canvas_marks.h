// What the canvas draws over its object: where that is cut and folded, what is selected, what the mouse
// draws. All in pixels of the canvas.
#pragma once

#include <QPainter>
#include <QPalette>
#include <vector>

#include "artworker/snapping.h"

namespace ts5::artworker {

// The edge of a disc and of its hole; what lies beside and inside is not printed.
void PaintDiscEdges(QPainter& painter, const QRectF& disc, double hole, const QPalette& palette);
// The edge of a paper and the places where it is folded, from its left.
void PaintPaperEdges(QPainter& painter, const QRectF& paper, const std::vector<double>& folds,
                     const QPalette& palette);
void PaintSelected(QPainter& painter, const QRectF& element, bool fixed, const QPalette& palette);
// Lines that what is moved has found.
void PaintGuides(QPainter& painter, const std::vector<Guide>& guides, QPointF corner);
// The outline that follows the mouse.
void PaintOutline(QPainter& painter, const QRectF& outline, bool ellipse);

}  // namespace ts5::artworker
