// Where a rectangle that is being dragged wants to rest: at edges and middles of the object and of other
// elements, and at equal gaps to its neighbours. Pure; all in one unit.
#pragma once

#include <QPointF>
#include <QRectF>
#include <span>
#include <vector>

#include "artworker/layout_edit.h"

namespace ts5::artworker {

// A line that shows why the rectangle rests: across or down the page.
struct Guide {
  QPointF from;
  QPointF to;
};

struct Snap {
  QPointF offset;  // what is to be added to the drag
  std::vector<Guide> guides;
};

struct SnapGround {
  QRectF object;
  std::vector<double> folds = {};   // lines down the object: spines, the middle of a booklet
  std::vector<QRectF> others = {};  // the elements that stay
  double reach = 0;                 // how near is near
};

// rect: where the drag has brought it; zone: which edges it has moved, or the whole.
[[nodiscard]] Snap SnapOf(const QRectF& rect, const Zone& zone, const SnapGround& ground);

}  // namespace ts5::artworker
