#include "app/run/hit_view.h"

#include <QContextMenuEvent>
#include <QHeaderView>
#include <QHelpEvent>
#include <QKeyEvent>
#include <QPainter>
#include <QToolTip>
#include <algorithm>
#include <chrono>

#include "app/run/hit_model.h"
#include "app/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "search/hit_passage.h"
#include "search/texts.h"

namespace ts5 {
namespace {

constexpr int kNumberColumn = 96;  // width at the start

std::string MapTimeText(std::chrono::nanoseconds time) {
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(time).count();
  return Format(Text(texts::HitMapTime), seconds / 60, seconds % 60);
}

}  // namespace

HitView::HitView(HitModel& model, QWidget* parent) : QTreeView(parent), model_(model) {
  setObjectName("hits");
  setAccessibleName(QtText(texts::HitListName));
  setModel(&model_);
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setUniformRowHeights(true);
  setAlternatingRowColors(true);
  setAllColumnsShowFocus(true);
  setTabKeyNavigation(false);
  setSelectionMode(ExtendedSelection);
  header()->setStretchLastSection(false);
  header()->setSectionsMovable(false);
  header()->setSectionResizeMode(0, QHeaderView::Stretch);
  connect(this, &QTreeView::doubleClicked, this, &HitView::PlayWanted);
  for (int column = 1; column < model_.columnCount(); ++column)
    header()->resizeSection(column, kNumberColumn);
}

std::vector<std::size_t> HitView::SelectedHits() const {
  QItemSelection selection = selectionModel()->selection();
  std::ranges::sort(selection, {}, [](const QItemSelectionRange& range) { return range.top(); });
  std::vector<std::size_t> hits;
  for (const QItemSelectionRange& range : selection) {
    for (int row = range.top(); row <= range.bottom(); ++row) hits.push_back(static_cast<std::size_t>(row));
  }
  return hits;
}

std::optional<std::size_t> HitView::CurrentHit() const {
  const QModelIndex current = currentIndex();
  if (current.isValid() && selectionModel()->isRowSelected(current.row(), {}))
    return static_cast<std::size_t>(current.row());
  const QItemSelection selection = selectionModel()->selection();
  if (selection.isEmpty()) return std::nullopt;
  return static_cast<std::size_t>(selection.front().top());
}

void HitView::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    emit CopyWanted();
  } else if (event->modifiers() == Qt::NoModifier &&
             (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter)) {
    emit PlayWanted();
  } else {
    const QModelIndex before = currentIndex();
    QTreeView::keyPressEvent(event);
    const bool arrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (arrow && event->modifiers() == Qt::NoModifier && currentIndex().row() != before.row()) emit Browsed();
  }
}

void HitView::contextMenuEvent(QContextMenuEvent* event) {
  QPoint position = event->globalPos();
  if (event->reason() == QContextMenuEvent::Keyboard && currentIndex().isValid())
    position = viewport()->mapToGlobal(visualRect(currentIndex()).bottomLeft());
  emit MenuWanted(position);
}

void HitView::selectionChanged(const QItemSelection& selected, const QItemSelection& deselected) {
  QTreeView::selectionChanged(selected, deselected);
  emit SelectionChanged();
}

void HitView::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (model_.rowCount() > 0) return;
  const SearchStatistics& done = model_.Results().Record().statistics;
  const bool inVain = done.searched > 0 && done.hits == 0;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
  painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                   Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap,
                   QtText(inVain ? texts::NoHitsAtAll : texts::NoHitsYet));
}

bool HitView::viewportEvent(QEvent* event) {
  if (event->type() != QEvent::ToolTip) return QTreeView::viewportEvent(event);
  const auto* help = static_cast<QHelpEvent*>(event);
  ShowTip(help->pos(), help->globalPos());
  return true;
}

void HitView::ShowTip(const QPoint& position, const QPoint& globalPosition) {
  worker_.DropAll();
  const QModelIndex index = indexAt(position);
  if (!index.isValid()) {
    QToolTip::hideText();
    return;
  }
  const SearchResults& results = model_.Results();
  const auto row = static_cast<std::size_t>(index.row());
  const SearchHit hit = results.Hit(row);
  const QString file = QStringLiteral("<p>%1</p>").arg(ToQt(hit.file).toHtmlEscaped());
  QToolTip::showText(globalPosition, file, viewport());
  if (results.Record().kind != SearchKind::Midi) return;
  worker_.Start([this, hit, file, globalPosition, notes = results.Notes(row)]() -> BackgroundWorker::Done {
    const auto playable = LoadPlayableHit(hit, notes);
    if (!playable) return {};
    const QString tip = file + ToQt(MapTimeText(playable->onset)).toHtmlEscaped();
    return [this, file, tip, globalPosition] {
      if (QToolTip::isVisible() && QToolTip::text() == file)
        QToolTip::showText(globalPosition, tip, viewport());
    };
  });
}

}  // namespace ts5
