#include "app/source/list_arrangement.h"

#include <QElapsedTimer>
#include <QGuiApplication>
#include <QHeaderView>
#include <QKeyEvent>
#include <algorithm>
#include <numeric>
#include <utility>
#include <vector>

#include "app/texts.h"
#include "frame/ui/qt_text.h"
#include "modules/file_facts.h"

namespace ts5 {
namespace {

constexpr int kTypingRest = 120;      // milliseconds before what was typed narrows the list
constexpr int kCountRest = 150;       // before the sum counts what has been read
constexpr int kSortRest = 400;        // milliseconds at least until the list is sorted again by newer facts
constexpr int kSortShare = 20;        // and so many times as long as the sorting took
constexpr int kWholeListFrom = 2000;  // files: a list that is longer is not sorted while a mouse is pressed

}  // namespace

ListArrangement::ListArrangement(Desk& desk, ActiveJob& active, SourceArea& area, SourceCommands& source,
                                 Settings& settings, std::string memoryFile)
    : desk_(desk),
      active_(active),
      area_(area),
      view_(*area.Files()),
      model_(area.Model()),
      source_(source),
      settings_(settings),
      reading_(view_, ReadFileFacts, std::move(memoryFile)) {
  filterTimer_.setSingleShot(true);
  filterTimer_.setInterval(kTypingRest);
  countTimer_.setSingleShot(true);
  countTimer_.setInterval(kCountRest);
  sortTimer_.setSingleShot(true);
  sortTimer_.setInterval(kSortRest);
  model_.SetColumns(ColumnsFrom(settings_.fileColumns));
  model_.Arrange(SortingFrom(settings_.fileSorting));
  LayColumns();

  connect(&view_.Columns(), &ColumnLayout::WidthsChanged, this,
          [this](const ColumnWidths& widths) { settings_.fileColumns = NamesOf(model_.Columns(), widths); });
  connect(&view_, &FileView::TitleClicked, this, &ListArrangement::SortBy);
  connect(&view_, &FileView::TitleMenuWanted, this, &ListArrangement::ShowMenu);
  connect(&reading_, &FactsReading::Read, this, [this] {
    if (!countTimer_.isActive()) countTimer_.start();
    if (model_.Order().NeedsFacts() && !sortTimer_.isActive()) sortTimer_.start();
  });
  connect(&countTimer_, &QTimer::timeout, &area_, &SourceArea::ShowCount);
  connect(&sortTimer_, &QTimer::timeout, this, &ListArrangement::SortAgain);
  connect(area_.Filter(), &QLineEdit::textChanged, &filterTimer_, qOverload<>(&QTimer::start));
  connect(&filterTimer_, &QTimer::timeout, this, &ListArrangement::TakeFilter);
  connect(&active_, &ActiveJob::Changed, this, &ListArrangement::Refresh);
  area_.Filter()->installEventFilter(this);

  CommandActions& actions = desk_.Actions();
  actions.On(CommandId::FilterList, [this] {
    area_.Filter()->setFocus();
    area_.Filter()->selectAll();
  });
  actions.On(CommandId::ListColumns, [this] {
    const QHeaderView& titles = *view_.header();
    ShowMenu(titles.mapToGlobal(QPoint(titles.sectionViewportPosition(0), titles.height())));
  });
  actions.On(CommandId::TakeOrder, [this] { this->TakeOrder(); });
}

void ListArrangement::Refresh() {
  CommandActions& actions = desk_.Actions();
  actions.SetEnabled(CommandId::FilterList, area_.Filter()->isVisible() && area_.Filter()->isEnabled());
  actions.SetEnabled(CommandId::ListColumns, model_.MayArrange());
  actions.SetEnabled(CommandId::TakeOrder, active_->MayChange() && active_->Mode() == SourceMode::List &&
                                               model_.MayArrange() && model_.Order().column);
}

// --- order and filter

void ListArrangement::Show(const ListOrder& order) {
  view_.Rearrange([&] { model_.Arrange(order); });
  // What is not shown is not selected, and a run goes by the order that is seen.
  source_.TakeSelection();
  reading_.Wake();
}

void ListArrangement::Sort(const ListOrder& order) {
  // The free file list has an order of its own, and begins with it.
  if (!model_.ShowsList()) settings_.fileSorting = StoredSorting(order);
  Show(order);
  active_.Refresh();
}

// The first click sorts, the second one the other way round, the third brings the list's own order back.
void ListArrangement::SortBy(FileColumn column) {
  if (!model_.MayArrange() || view_.IsEditing()) return;
  ListOrder order = model_.Order();
  if (order.column != column) {
    order.column = column;
    order.descending = false;
  } else if (!order.descending) {
    order.descending = true;
  } else {
    order.column.reset();
    order.descending = false;
  }
  Sort(order);
}

void ListArrangement::SortAgain() {
  const bool held = model_.Size() > kWholeListFrom && QGuiApplication::mouseButtons() != Qt::NoButton;
  if (view_.IsEditing() || held) return sortTimer_.start();
  QElapsedTimer time;
  time.start();
  view_.Rearrange([this] { model_.Arrange(model_.Order()); });
  sortTimer_.setInterval(std::max(kSortRest, static_cast<int>(time.elapsed()) * kSortShare));
  if (active_->Mode() == SourceMode::Directory) source_.TakeSelection();
}

void ListArrangement::TakeFilter() {
  ListOrder order = model_.Order();
  order.filter = FromQt(area_.Filter()->text());
  if (order != model_.Order()) Show(order);
}

bool ListArrangement::eventFilter(QObject* watched, QEvent* event) {
  // A directory is read, and the field with it there or not, long after the job has changed.
  const auto type = event->type();
  if (type == QEvent::Show || type == QEvent::Hide || type == QEvent::EnabledChange) Refresh();
  if (type != QEvent::KeyPress) return QObject::eventFilter(watched, event);
  const int key = static_cast<QKeyEvent*>(event)->key();
  const bool leaves =
      key == Qt::Key_Escape || key == Qt::Key_Down || key == Qt::Key_Return || key == Qt::Key_Enter;
  if (!leaves) return QObject::eventFilter(watched, event);
  if (key == Qt::Key_Escape) area_.Filter()->clear();
  filterTimer_.stop();
  TakeFilter();
  view_.setFocus();
  if (!view_.currentIndex().isValid() && model_.Size() > 0) view_.setCurrentIndex(model_.index(0, 0));
  return true;
}

// --- columns

void ListArrangement::ShowColumn(FileColumn column, bool shown) {
  ShownColumns columns = view_.Columns().Shown();
  if (shown) {
    columns.insert(column);
  } else {
    columns.erase(column);
  }
  TakeColumns(NamesOf(columns, WidthsFrom(settings_.fileColumns)));
}

// Where all columns are shown, those that have no room may go.
void ListArrangement::LayColumns() {
  const bool all = ColumnsFrom(settings_.fileColumns).size() == FactColumns().size();
  view_.Columns().Choose(WidthsFrom(settings_.fileColumns), all);
}

void ListArrangement::TakeColumns(std::string stored) {
  settings_.fileColumns = std::move(stored);
  LayColumns();
  view_.Rearrange([this] { model_.SetColumns(ColumnsFrom(settings_.fileColumns)); });
  reading_.Wake();
}

void ListArrangement::ShowMenu(const QPoint& place) {
  if (!model_.MayArrange()) return;
  QMenu menu(view_.window());
  menu.setObjectName("columnMenu");
  const ShownColumns shown = view_.Columns().Shown();
  for (const FactColumn& column : FactColumns()) {
    QAction* const action = menu.addAction(QtText(column.title));
    action->setCheckable(true);
    action->setChecked(shown.contains(column.column));
    connect(action, &QAction::toggled, this,
            [this, one = column.column](bool checked) { ShowColumn(one, checked); });
  }
  QAction* const usual = menu.addAction(QtText(texts::UsualColumns));
  connect(usual, &QAction::triggered, this, [this] { TakeColumns(Settings().fileColumns); });
  menu.addSeparator();
  QAction* const own = menu.addAction(QtText(texts::OwnOrder));
  own->setEnabled(model_.Order().column.has_value());
  connect(own, &QAction::triggered, this, [this] {
    ListOrder order = model_.Order();
    order.column.reset();
    Sort(order);
  });
  menu.addAction(desk_.Actions().Action(CommandId::TakeOrder));
  menu.exec(place);
}

// The list of the job gets the order that is seen. What the filter hides stays behind it, in its own order.
void ListArrangement::TakeOrder() {
  Job& job = *active_;
  if (!job.MayChange() || job.Mode() != SourceMode::List || !model_.MayArrange()) return;
  active_.Settle();
  std::vector<std::size_t> rows(model_.Size());
  std::iota(rows.begin(), rows.end(), std::size_t{0});
  std::vector<std::size_t> order = model_.EntriesOf(rows);
  std::vector<bool> seen(job.files.Size());
  for (const std::size_t entry : order) seen.at(entry) = true;
  for (std::size_t i = 0; i < seen.size(); ++i) {
    if (!seen[i]) order.push_back(i);
  }
  if (!job.files.Reorder(order)) return;
  ListOrder own = model_.Order();
  own.column.reset();
  own.descending = false;
  model_.Arrange(own);
  source_.Reload();
  active_.ChangeFiles();
}

}  // namespace ts5
