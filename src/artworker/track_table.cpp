#include "artworker/track_table.h"

#include <QFontMetricsF>
#include <QStringList>
#include <algorithm>

#include "artworker/ink.h"

namespace ts5::artworker {
namespace {

constexpr std::size_t kMostColumns = 5;
constexpr double kLeading = 1.2;    // line spacing in line heights
constexpr double kCellGap = 0.5;    // between the cells of a line, in letter heights
constexpr double kColumnGap = 1.5;  // between columns, likewise

struct Row {
  QStringList cells;  // number, title, time
};

// The widths of the cells over all rows, in base font pixels.
struct Widths {
  double number = 0;
  double title = 0;
  double time = 0;
};

std::vector<Row> RowsOf(const TextField& field) {
  std::vector<Row> rows;
  for (const QString& line : QString::fromStdString(field.text.substr(kTableMark.size())).split('\n')) {
    QStringList cells = line.split('\t');
    cells.resize(3);
    rows.push_back({std::move(cells)});
  }
  return rows;
}

struct Shape {
  std::size_t columns = 1;
  std::size_t lines = 1;  // in the longest column
  double scale = 0;
};

}  // namespace

TextPlan PlanTracks(const TextField& field, const QRectF& rect, double inset) {
  TextPlan plan;
  plan.font = FontOf(field.font);
  const QRectF inner = rect.adjusted(inset, inset, -inset, -inset);
  if (inner.width() <= 0 || inner.height() <= 0) return plan;
  const QFontMetricsF metrics(plan.font);
  const double height = metrics.ascent() + metrics.descent();
  const std::vector<Row> rows = RowsOf(field);
  Widths widths;
  for (const Row& row : rows) {
    widths.number = std::max(widths.number, metrics.horizontalAdvance(row.cells[0]));
    widths.title = std::max(widths.title, metrics.horizontalAdvance(row.cells[1]));
    widths.time = std::max(widths.time, metrics.horizontalAdvance(row.cells[2]));
  }
  const double gap = kCellGap * height;
  const double width = widths.number + gap + widths.title + (widths.time > 0 ? gap + widths.time : 0);

  Shape best;
  for (std::size_t columns = 1; columns <= std::min(kMostColumns, rows.size()); ++columns) {
    const std::size_t lines = (rows.size() + columns - 1) / columns;
    const double whole =
        static_cast<double>(columns) * width + static_cast<double>(columns - 1) * kColumnGap * height;
    const double byHeight = inner.height() / (height * (1 + kLeading * static_cast<double>(lines - 1)));
    const double bySpacing = field.lineSpacing * kUnitsPerTenth / (kLeading * height);
    const double scale = std::min({inner.width() / whole, byHeight, bySpacing});
    // More columns only for letters that are larger.
    constexpr double kWorth = 1.02;
    if (scale > best.scale * kWorth) best = {columns, lines, scale};
  }
  if (qFuzzyIsNull(best.scale)) return plan;  // no room between the lines: nothing that could be seen

  const QSizeF room = inner.size() / best.scale;
  const double columns = static_cast<double>(best.columns);
  const double columnGap = kColumnGap * height;
  // One column is as wide as its rows; several share the field.
  const double columnWidth = best.columns == 1 && field.horizontal != Across::Justified
                                 ? width
                                 : (room.width() - (columns - 1) * columnGap) / columns;
  const double block = height * (1 + kLeading * static_cast<double>(best.lines - 1));
  const auto offset = [](double space, int place) {
    return place == 0 ? 0.0 : place == 1 ? space / 2 : space;
  };
  const double left =
      best.columns == 1 ? offset(room.width() - columnWidth, static_cast<int>(field.horizontal) % 3) : 0;
  const double top = offset(room.height() - block, static_cast<int>(field.vertical)) + metrics.ascent();
  for (std::size_t i = 0; i < rows.size(); ++i) {
    const std::size_t column = i / best.lines;
    const double x = left + static_cast<double>(column) * (columnWidth + columnGap);
    const double y = top + static_cast<double>(i % best.lines) * kLeading * height;
    const QStringList& cells = rows[i].cells;
    const auto add = [&](const QString& text, double at) {
      if (!text.isEmpty()) plan.runs.push_back({text, QPointF(at, y)});
    };
    add(cells[0], x + widths.number - metrics.horizontalAdvance(cells[0]));
    add(cells[1], x + widths.number + gap);
    add(cells[2], x + columnWidth - metrics.horizontalAdvance(cells[2]));
  }
  plan.transform =
      QTransform::fromScale(best.scale, best.scale) * QTransform::fromTranslate(inner.left(), inner.top());
  return plan;
}

}  // namespace ts5::artworker
