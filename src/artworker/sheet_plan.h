// What a printing puts on which sheet: each object on its own, several labels on one, the front of the
// booklet and the inlay together. In millimetres from the top left corner of the sheet.
#pragma once

#include <QPointF>
#include <QRectF>
#include <vector>

#include "artworker/artworker_parameters.h"
#include "artworker/layout.h"

namespace ts5::artworker {

struct PlacedObject {
  ArtworkObjectId id = ArtworkObjectId::Label;
  QPointF corner;          // of the object's rectangle
  bool frontOnly = false;  // of the booklet nothing but its right half, the front of the folded one

  bool operator==(const PlacedObject&) const = default;
};

struct Sheet {
  Size size;  // as it is printed; the wider side across is a landscape
  std::vector<PlacedObject> objects;

  bool operator==(const Sheet&) const = default;
};

struct SheetPlan {
  std::vector<Sheet> sheets;
  bool apart = false;  // front and inlay were to share a sheet, which is too small for them
};

// Of the objects that are chosen to be printed.
[[nodiscard]] SheetPlan PlanSheets(const ArtworkerParameters& parameters);

// Its sheets in their order, as plans of sheets of one paper each.
[[nodiscard]] std::vector<SheetPlan> ByPaper(const SheetPlan& plan);

// What is to be seen of the object on its sheet.
[[nodiscard]] QRectF RectOf(const ArtworkLayout& layout, const PlacedObject& placed);

}  // namespace ts5::artworker
