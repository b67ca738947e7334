#include "artworker/sheet_plan.h"

#include <algorithm>
#include <optional>

#include "artworker/element_places.h"

namespace ts5::artworker {
namespace {

constexpr double kLeastGap = 5;  // millimetres around objects that share a sheet; printers need it too
constexpr double kTenths = 10;

using Id = ArtworkObjectId;

QPointF CornerAt(QPointF centre, QSizeF extent) {
  return centre - QPointF(extent.width() / 2, extent.height() / 2);
}

Sheet OwnSheet(const ArtworkLayout& layout, Id id) {
  const ArtworkObject& object = layout.Object(id);
  return {object.sheet, {{id, CornerAt(QPointF(object.x, object.y), ExtentOf(object, id))}}};
}

// One side of a grid of discs: where its centres are.
struct Grid {
  int count;
  double first;
  double step;
};
Grid GridOf(int count, std::int32_t step, double first, double side) {
  if (step > 0) return {count, first, step / kTenths};
  const double even = side / count;
  return {count, even / 2, even};
}

// The places are counted along the rows; those before the first one have been used up.
Sheet LabelSheet(const ArtworkerParameters& parameters) {
  const ArtworkObject& label = parameters.layout.Object(Id::Label);
  const Grid across = GridOf(parameters.labelGrid[0], parameters.labelStep[0], label.x, label.sheet.width);
  const Grid down = GridOf(parameters.labelGrid[1], parameters.labelStep[1], label.y, label.sheet.height);
  const int places = across.count * down.count;
  const int begin = std::min(parameters.labelFirst, places) - 1;
  const int count = parameters.labelCount == 0 ? places : parameters.labelCount;
  Sheet sheet{label.sheet, {}};
  for (int place = begin; place < std::min(places, begin + count); ++place) {
    const QPointF centre(across.first + place % across.count * across.step,
                         down.first + place / across.count * down.step);
    sheet.objects.push_back({Id::Label, CornerAt(centre, ExtentOf(label, Id::Label))});
  }
  return sheet;
}

// Booklet above inlay, each in the middle, with the same space above, between and below; nothing when the
// sheet is too small.
std::optional<Sheet> Stacked(const ArtworkLayout& layout, Size size, bool frontOnly) {
  QSizeF booklet = ExtentOf(layout.Object(Id::Booklet), Id::Booklet);
  if (frontOnly) booklet.setWidth(booklet.width() / 2);
  const QSizeF inlay = ExtentOf(layout.Object(Id::Inlay), Id::Inlay);
  const double gap = (size.height - booklet.height() - inlay.height()) / 3;
  if (gap < kLeastGap || std::max(booklet.width(), inlay.width()) + 2 * kLeastGap > size.width)
    return std::nullopt;
  const QPointF front((size.width - booklet.width()) / 2, gap);
  const QPointF hidden(frontOnly ? booklet.width() : 0, 0);
  const QPointF below((size.width - inlay.width()) / 2, 2 * gap + booklet.height());
  return Sheet{size, {{Id::Inlay, below}, {Id::Booklet, front - hidden, frontOnly}}};
}

// The whole booklet where there is room for it, else its front; the sheet may be turned for either.
std::optional<Sheet> SharedSheet(const ArtworkLayout& layout) {
  const Size sheet = layout.Object(Id::Booklet).sheet;
  for (const bool frontOnly : {false, true}) {
    for (const Size size : {sheet, Size{sheet.height, sheet.width}}) {
      if (auto stacked = Stacked(layout, size, frontOnly)) return stacked;
    }
  }
  return std::nullopt;
}

}  // namespace

SheetPlan PlanSheets(const ArtworkerParameters& parameters) {
  SheetPlan plan;
  const auto chosen = [&](Id id) { return Holds(parameters.printWhat, id); };
  if (chosen(Id::Label)) {
    const bool several = parameters.labelGrid[0] * parameters.labelGrid[1] > 1;
    plan.sheets.push_back(several ? LabelSheet(parameters) : OwnSheet(parameters.layout, Id::Label));
  }
  if (parameters.shareSheet && chosen(Id::Inlay) && chosen(Id::Booklet)) {
    if (auto shared = SharedSheet(parameters.layout)) {
      plan.sheets.push_back(*std::move(shared));
      return plan;
    }
    plan.apart = true;
  }
  for (const Id id : {Id::Inlay, Id::Booklet}) {
    if (chosen(id)) plan.sheets.push_back(OwnSheet(parameters.layout, id));
  }
  return plan;
}

std::vector<SheetPlan> ByPaper(const SheetPlan& plan) {
  std::vector<SheetPlan> plans;
  for (const Sheet& sheet : plan.sheets) {
    if (plans.empty() || Upright(plans.back().sheets.back().size) != Upright(sheet.size))
      plans.emplace_back();
    plans.back().sheets.push_back(sheet);
  }
  return plans;
}

QRectF RectOf(const ArtworkLayout& layout, const PlacedObject& placed) {
  QRectF rect(placed.corner, ExtentOf(layout.Object(placed.id), placed.id));
  if (placed.frontOnly) rect.setLeft(rect.center().x());
  return rect;
}

}  // namespace ts5::artworker
