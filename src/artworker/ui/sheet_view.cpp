#include "artworker/ui/sheet_view.h"

#include <QPainter>
#include <algorithm>
#include <utility>

#include "artworker/sheet_painter.h"
#include "artworker/sheet_plan.h"

namespace ts5::artworker {
namespace {

constexpr double kGap = 12;  // pixels between sheets

// How large the sheets are in so many columns, in pixels per millimetre.
double ScaleFor(const std::vector<Sheet>& sheets, int columns, QSizeF room) {
  const int rows = (static_cast<int>(sheets.size()) + columns - 1) / columns;
  double width = 1;
  double height = 1;
  for (const Sheet& sheet : sheets) {
    width = std::max(width, double{1} * sheet.size.width);
    height = std::max(height, double{1} * sheet.size.height);
  }
  return std::min((room.width() - kGap * (columns + 1)) / (width * columns),
                  (room.height() - kGap * (rows + 1)) / (height * rows));
}

}  // namespace

SheetView::SheetView(QWidget* parent) : QWidget(parent) {
  setMinimumSize(260, 260);
}

void SheetView::Show(ArtworkerParameters parameters) {
  parameters.layout = FilledLayout(std::move(parameters.layout), parameters.disc);
  parameters_ = std::move(parameters);
  update();
}

QSize SheetView::sizeHint() const {
  return {430, 420};
}

void SheetView::paintEvent(QPaintEvent* /*event*/) {
  const std::vector<Sheet> sheets = PlanSheets(parameters_).sheets;
  if (sheets.empty()) return;
  int columns = 1;
  for (int more = 2; std::cmp_less_equal(more, sheets.size()); ++more) {
    if (ScaleFor(sheets, more, size()) > ScaleFor(sheets, columns, size())) columns = more;
  }
  const double scale = ScaleFor(sheets, columns, size());
  if (scale <= 0) return;
  const int rows = (static_cast<int>(sheets.size()) + columns - 1) / columns;
  const QSizeF cell(1.0 * width() / columns, 1.0 * height() / rows);
  QPainter painter(this);
  painter.setRenderHint(QPainter::Antialiasing);
  for (std::size_t i = 0; i < sheets.size(); ++i) {
    const QSizeF paper = QSizeF(sheets[i].size.width, sheets[i].size.height) * scale;
    const int column = static_cast<int>(i) % columns;
    const int row = static_cast<int>(i) / columns;
    const QPointF middle((column + 0.5) * cell.width(), (row + 0.5) * cell.height());
    const QRectF place(middle - QPointF(paper.width() / 2, paper.height() / 2), paper);
    painter.fillRect(place, Qt::white);
    painter.save();
    painter.setClipRect(place);
    painter.translate(place.topLeft());
    painter.scale(scale, scale);
    for (const PlacedObject& placed : sheets[i].objects) {
      // An outline for the eye, where no line is printed.
      PaintPlaced(painter, {parameters_.layout, parameters_.backgrounds, pictures_, true}, placed);
      if (Holds(parameters_.printMarks, placed.id)) PaintMarks(painter, parameters_.layout, placed);
    }
    painter.restore();
    painter.setPen(palette().color(QPalette::Mid));
    painter.drawRect(place);
  }
}

}  // namespace ts5::artworker
