#include "app/source/column_layout.h"

#include <QHeaderView>
#include <QMouseEvent>
#include <QScopedValueRollback>
#include <algorithm>
#include <utility>

#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

constexpr int kSortSignWidth = 12;   // in the title of the column by which the list is sorted
constexpr int kColumnMargin = 12;    // beside the text of a column
constexpr int kNarrowestName = 240;  // of a column with names
constexpr int kNameShare = 3;        // of what is left, beside that of any other wide column
constexpr int kOtherShare = 2;

}  // namespace

ColumnLayout::ColumnLayout(QTreeView& view, const FileViewModel& model)
    : QObject(&view), view_(view), model_(model) {
  view.header()->viewport()->installEventFilter(this);
  connect(view.header(), &QHeaderView::sectionResized, this, [this](int section, int, int width) {
    const auto column = model_.ColumnAt(section);
    if (laying_ || !column || width <= 0 || !KeepsWidth(*column)) return;
    widths_[*column] = width;
    dragged_ = true;
    emit WidthsChanged(widths_);
  });
}

// While a border is dragged it stays under the mouse; the names take the rest when it is let go.
bool ColumnLayout::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::MouseButtonRelease && std::exchange(dragged_, false))
    QMetaObject::invokeMethod(this, &ColumnLayout::Fit, Qt::QueuedConnection);
  return QObject::eventFilter(watched, event);
}

void ColumnLayout::Choose(ColumnWidths widths, bool fitting) {
  widths_ = std::move(widths);
  fitting_ = fitting;
  Fit();
}

ShownColumns ColumnLayout::Shown() const {
  ShownColumns shown;
  for (int i = 0; i < view_.header()->count(); ++i) {
    const auto column = model_.ColumnAt(i);
    if (column && FindFactColumn(*column) != nullptr && !view_.isColumnHidden(i)) shown.insert(*column);
  }
  return shown;
}

int ColumnLayout::WidthOf(FileColumn column, int otherwise) const {
  const auto own = widths_.find(column);
  return own == widths_.end() ? otherwise : own->second;
}

int ColumnLayout::FactWidth(const FactColumn& fact) const {
  const QFontMetrics metrics = view_.fontMetrics();
  const int title = metrics.horizontalAdvance(QtText(fact.title)) + kSortSignWidth;
  return std::max(metrics.horizontalAdvance(ToQt(fact.sample)), title) + kColumnMargin;
}

void ColumnLayout::Lay() {
  const QScopedValueRollback laying(laying_, true);
  QHeaderView& titles = *view_.header();
  titles.setStretchLastSection(false);
  for (int i = 0; i < titles.count(); ++i) {
    const auto column = model_.ColumnAt(i);
    titles.setSectionResizeMode(
        i, !column || KeepsWidth(*column) ? QHeaderView::Interactive : QHeaderView::ResizeToContents);
  }
  titles.setSectionsClickable(model_.MayArrange());
  Fit();
}

void ColumnLayout::Fit() {
  const QScopedValueRollback laying(laying_, true);
  QHeaderView& titles = *view_.header();
  struct Wide {
    int section;
    int share;
    std::optional<FileColumn> column;
  };
  std::vector<Wide> wide;
  int shares = 0;
  int left = view_.viewport()->width();
  for (int i = 0; i < titles.count(); ++i) {
    const auto column = model_.ColumnAt(i);
    if (column && FindFactColumn(*column) != nullptr) continue;
    titles.setSectionHidden(i, false);  // as a column may have been that was here before
    if (!column) continue;
    if (KeepsWidth(*column)) {
      wide.push_back({i, i == 0 ? kNameShare : kOtherShare, column});
      shares += wide.back().share;
    } else {
      left -= titles.sectionSize(i);
    }
  }
  // Texts of tracks are as wide as names, and belong to no column that is kept.
  for (int i = 0; i < titles.count(); ++i) {
    if (model_.ColumnAt(i)) continue;
    wide.push_back({i, kOtherShare, std::nullopt});
    shares += kOtherShare;
  }
  bool room = true;
  const int names = kNarrowestName * shares / kNameShare;
  for (int i = 0; i < titles.count(); ++i) {
    const auto column = model_.ColumnAt(i);
    const FactColumn* const fact = column ? FindFactColumn(*column) : nullptr;
    if (fact == nullptr) continue;
    const int width = WidthOf(*column, FactWidth(*fact));
    room = room && left - width >= names;
    titles.setSectionHidden(i, fitting_ && !room);
    if (titles.isSectionHidden(i)) continue;
    titles.resizeSection(i, width);
    left -= width;
  }
  for (const Wide& one : wide) {
    const int most = std::max(left * one.share / shares, kNarrowestName * one.share / kNameShare);
    const int width = one.column ? std::min(most, WidthOf(*one.column, most)) : most;
    titles.resizeSection(one.section, width);
    left -= width;
    shares -= one.share;
  }
}

}  // namespace ts5
