#include "search/ui/result_line_view.h"

#include <QApplication>
#include <QClipboard>
#include <QFontMetrics>
#include <QItemSelection>
#include <QKeyEvent>
#include <algorithm>
#include <utility>

#include "frame/ui/qt_text.h"
#include "platform/base/casts.h"

namespace ts5 {
namespace {

constexpr int kTextHeight = 12;  // pixels
constexpr int kMargin = 8;       // beside the longest line

}  // namespace

void ResultLineModel::Show(ResultLines lines, QSize size) {
  beginResetModel();
  lines_ = std::move(lines);
  size_ = size;
  endResetModel();
}

int ResultLineModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : ClampTo<int>(lines_.count);
}

QVariant ResultLineModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (role == Qt::SizeHintRole) return size_;
  return role == Qt::DisplayRole ? ToQt(lines_.line(static_cast<std::size_t>(index.row()))) : QVariant();
}

ResultLineView::ResultLineView(QWidget* parent) : QListView(parent) {
  QFont font(QStringLiteral("Courier New"));
  font.setStyleHint(QFont::TypeWriter);
  font.setPixelSize(kTextHeight);
  setFont(font);
  setUniformItemSizes(true);
  setSelectionMode(ExtendedSelection);
  setEditTriggers(NoEditTriggers);
  setTabKeyNavigation(false);
  setHorizontalScrollMode(ScrollPerPixel);
  setModel(&model_);
}

void ResultLineView::Show(ResultLines lines) {
  const QFontMetrics metrics(font());
  const int width = ClampTo<int>(lines.longest) * metrics.averageCharWidth() + 2 * kMargin;
  model_.Show(std::move(lines), {width, metrics.lineSpacing()});
}

void ResultLineView::keyPressEvent(QKeyEvent* event) {
  event->matches(QKeySequence::Copy) ? CopySelection() : QListView::keyPressEvent(event);
}

void ResultLineView::CopySelection() {
  QItemSelection selection = selectionModel()->selection();
  std::ranges::sort(selection, {}, [](const QItemSelectionRange& range) { return range.top(); });
  std::string text;
  for (const QItemSelectionRange& range : selection)
    text += Lines().Text(static_cast<std::size_t>(range.top()), static_cast<std::size_t>(range.height()));
  QApplication::clipboard()->setText(ToQt(text));
}

}  // namespace ts5
