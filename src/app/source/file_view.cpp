#include "app/source/file_view.h"

#include <QApplication>
#include <QClipboard>
#include <QDrag>
#include <QDropEvent>
#include <QHeaderView>
#include <QItemSelection>
#include <QLineEdit>
#include <QMimeData>
#include <QPainter>
#include <QScrollBar>
#include <QStyledItemDelegate>
#include <QUrl>
#include <algorithm>

#include "app/texts.h"
#include "frame/file_columns.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/files/paths.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

// Tracks of an audio CD on the way to the list, which are no files: their entries, one per line.
constexpr const char* kTrackType = "application/x-stavora-cd-tracks";

// Reports the end of an editing, and selects the name without its extension at the beginning.
class LabelDelegate : public QStyledItemDelegate {
 public:
  LabelDelegate(FileView* view, std::function<void(bool)> editing)
      : QStyledItemDelegate(view), editing_(std::move(editing)) {}

  // Names and directories are shortened in the middle, facts at their ends.
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override {
    QStyledItemDelegate::initStyleOption(option, index);
    const auto* const model = qobject_cast<const FileViewModel*>(index.model());
    const auto column = model != nullptr ? model->ColumnAt(index.column()) : std::nullopt;
    if (column && FindFactColumn(*column) != nullptr) option->textElideMode = Qt::ElideRight;
  }
  QWidget* createEditor(QWidget* parent, const QStyleOptionViewItem& option,
                        const QModelIndex& index) const override {
    auto* editor = new QLineEdit(parent);
    editor->setAccessibleName(QtText(texts::NewFileName));
    editor->setFrame(false);
    (void)option;
    (void)index;
    editing_(true);
    return editor;
  }
  void setEditorData(QWidget* editor, const QModelIndex& index) const override {
    auto* line = static_cast<QLineEdit*>(editor);
    const QString name = index.data(Qt::EditRole).toString();
    if (line->text() == name) return;
    line->setText(name);
    const auto stem = index.column() == 0 ? ToQt(WithoutExtension(FromQt(name))).size() : name.size();
    QMetaObject::invokeMethod(
        line, [line, stem] { line->setSelection(0, static_cast<int>(stem)); }, Qt::QueuedConnection);
  }
  void setModelData(QWidget* editor, QAbstractItemModel* model, const QModelIndex& index) const override {
    model->setData(index, static_cast<QLineEdit*>(editor)->text(), Qt::EditRole);
  }
  void destroyEditor(QWidget* editor, const QModelIndex& index) const override {
    QStyledItemDelegate::destroyEditor(editor, index);
    editing_(false);
  }

 private:
  std::function<void(bool)> editing_;
};

}  // namespace

std::vector<std::string> PathsOf(const QMimeData& data) {
  std::vector<std::string> paths;
  for (const QUrl& url : data.urls()) {
    if (url.isLocalFile()) paths.push_back(url.toLocalFile().toStdString());
  }
  const QByteArray tracks = data.data(kTrackType);
  for (const QByteArray& track : tracks.isEmpty() ? QList<QByteArray>() : tracks.split('\n'))
    paths.push_back(track.toStdString());
  return paths;
}

bool HoldsFiles(const QMimeData& data) {
  return data.hasUrls() || data.hasFormat(kTrackType);
}

FileView::FileView(QWidget* parent) : QTreeView(parent), emptyText_(texts::EmptyFileView) {
  setObjectName("fileView");
  setAccessibleName(QtText(texts::FileViewName));
  setRootIsDecorated(false);
  setItemsExpandable(false);
  setUniformRowHeights(true);
  setAllColumnsShowFocus(true);
  setAlternatingRowColors(true);
  setSelectionMode(ExtendedSelection);
  setSelectionBehavior(QAbstractItemView::SelectRows);
  setEditTriggers(EditKeyPressed | DoubleClicked);
  setTabKeyNavigation(false);
  setDragEnabled(true);
  setAcceptDrops(true);
  setDragDropMode(DragDrop);
  setDropIndicatorShown(false);
  setTextElideMode(Qt::ElideMiddle);
  header()->setContextMenuPolicy(Qt::CustomContextMenu);
  connect(header(), &QWidget::customContextMenuRequested, this,
          [this](const QPoint& at) { emit TitleMenuWanted(header()->mapToGlobal(at)); });
  connect(header(), &QHeaderView::sectionClicked, this, [this](int section) {
    if (const auto column = model_->ColumnAt(section)) emit TitleClicked(*column);
  });
  connect(verticalScrollBar(), &QAbstractSlider::valueChanged, this, &FileView::SightChanged);
  setItemDelegate(new LabelDelegate(this, [this](bool editing) { emit LabelEditingChanged(editing); }));
}

void FileView::SetFileModel(FileViewModel* model) {
  model_ = model;
  setModel(model);
  columns_ = new ColumnLayout(*this, *model);
  connect(model, &QAbstractItemModel::modelReset, this, &FileView::LayColumns);
  connect(model, &QAbstractItemModel::modelReset, this, &FileView::SightChanged);
  connect(model, &QAbstractItemModel::rowsInserted, this, &FileView::SightChanged);
  connect(selectionModel(), &QItemSelectionModel::selectionChanged, this, [this] {
    if (!selecting_) emit SelectedByUser();
  });
  connect(selectionModel(), &QItemSelectionModel::currentRowChanged, this, [this] {
    if (!selecting_) emit SelectedByUser();
  });
  LayColumns();
}

void FileView::LayColumns() {
  columns_->Lay();
  ShowSorting(model_->Order());
}

void FileView::resizeEvent(QResizeEvent* event) {
  // What is played stays in sight when the player opens below.
  const QRect row = visualRect(currentIndex());
  const bool inSight = row.isValid() && row.top() >= 0 && row.bottom() < event->oldSize().height();
  QTreeView::resizeEvent(event);
  if (inSight && row.bottom() >= event->size().height()) scrollTo(currentIndex());
  if (columns_ != nullptr) columns_->Fit();
  emit SightChanged();
}

void FileView::ShowSorting(const ListOrder& order) {
  QHeaderView& titles = *header();
  int sorted = -1;
  for (int i = 0; i < titles.count() && order.column && model_->MayArrange(); ++i) {
    if (model_->ColumnAt(i) == order.column) sorted = i;
  }
  titles.setSortIndicatorShown(sorted >= 0);
  titles.setSortIndicator(sorted, order.descending ? Qt::DescendingOrder : Qt::AscendingOrder);
}

std::pair<std::size_t, std::size_t> FileView::RowsInSight() const {
  const QModelIndex first = indexAt(QPoint(0, 0));
  if (!first.isValid()) return {0, 0};
  const QModelIndex last = indexAt(QPoint(0, viewport()->height() - 1));
  return {static_cast<std::size_t>(first.row()),
          last.isValid() ? static_cast<std::size_t>(last.row()) + 1 : model_->Size()};
}

void FileView::Rearrange(const std::function<void()>& change) {
  const std::vector<std::size_t> selected = model_->EntriesOf(SelectedRows());
  const std::size_t focus = model_->EntryOf(FocusRow());
  const int place = verticalScrollBar()->value();
  const bool inSight = currentIndex().isValid() && viewport()->rect().intersects(visualRect(currentIndex()));
  change();
  const std::vector<std::size_t> focused = model_->RowsOf({focus});
  SelectRows(model_->RowsOf(selected), focused.empty() ? model_->Size() : focused.front());
  if (!inSight || focused.empty()) verticalScrollBar()->setValue(place);
}

std::vector<std::size_t> FileView::SelectedRows() const {
  std::vector<std::size_t> rows;
  for (const QItemSelectionRange& range : selectionModel()->selection()) {
    for (int row = range.top(); row <= range.bottom(); ++row) rows.push_back(static_cast<std::size_t>(row));
  }
  if (!std::ranges::is_sorted(rows)) std::ranges::sort(rows);
  rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
  return rows;
}

void FileView::SelectRows(const std::vector<std::size_t>& rows, std::size_t focus) {
  selecting_ = true;
  QItemSelection selection;
  const int columns = model_->columnCount();
  const std::size_t count = model_->Size();
  for (std::size_t i = 0; i < rows.size() && rows[i] < count;) {
    std::size_t last = i;
    while (last + 1 < rows.size() && rows[last + 1] == rows[last] + 1 && rows[last + 1] < count) ++last;
    selection.select(model_->index(static_cast<int>(rows[i]), 0),
                     model_->index(static_cast<int>(rows[last]), columns - 1));
    i = last + 1;
  }
  if (focus < count) {
    selectionModel()->setCurrentIndex(model_->index(static_cast<int>(focus), 0),
                                      QItemSelectionModel::NoUpdate);
    scrollTo(currentIndex());
  }
  selectionModel()->select(selection, QItemSelectionModel::ClearAndSelect);
  selecting_ = false;
}

std::size_t FileView::FocusRow() const {
  return currentIndex().isValid() ? static_cast<std::size_t>(currentIndex().row()) : model_->Size();
}

void FileView::EditLabel(std::size_t row) {
  const QModelIndex index = model_->index(static_cast<int>(row), 0);
  scrollTo(index);
  QTreeView::edit(index);
}

// The label is the name, wherever in the row the editing was asked for, but for the texts of a disc's tracks.
bool FileView::edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) {
  const bool text = index.isValid() && model_->TextColumn(index.column());
  if (text) return QTreeView::edit(index, trigger, event);
  if (trigger == DoubleClicked) return false;
  return QTreeView::edit(index.isValid() ? index.siblingAtColumn(0) : index, trigger, event);
}

QMimeData* FileView::SelectedFiles() const {
  QList<QUrl> urls;
  QStringList tracks;
  for (const std::size_t row : SelectedRows()) {
    const FileListEntry& entry = model_->At(row);
    entry.cdTrack ? tracks.append(ToQt(entry.path)) : urls.append(QUrl::fromLocalFile(ToQt(entry.path)));
  }
  auto* data = new QMimeData;
  data->setUrls(urls);
  if (!tracks.isEmpty()) data->setData(kTrackType, tracks.join('\n').toUtf8());
  return data;
}

void FileView::startDrag(Qt::DropActions /*actions*/) {
  QMimeData* data = SelectedFiles();
  if (!HoldsFiles(*data)) {
    delete data;
    return;
  }
  auto* drag = new QDrag(this);
  drag->setMimeData(data);
  drag->setPixmap(Icon("filesicon").pixmap(32, 32));
  emit DragChanged(true);
  drag->exec(Qt::CopyAction);
  emit DragChanged(false);
}

void FileView::dragEnterEvent(QDragEnterEvent* event) {
  if (HoldsFiles(*event->mimeData()) && event->source() != this) event->acceptProposedAction();
}
void FileView::dragMoveEvent(QDragMoveEvent* event) {
  if (HoldsFiles(*event->mimeData()) && event->source() != this) event->acceptProposedAction();
}
void FileView::dropEvent(QDropEvent* event) {
  event->acceptProposedAction();
  emit FilesDropped(PathsOf(*event->mimeData()));
}

void FileView::keyPressEvent(QKeyEvent* event) {
  if (event->matches(QKeySequence::Copy)) {
    QApplication::clipboard()->setMimeData(SelectedFiles());
    return;
  }
  if (event->matches(QKeySequence::Paste)) {
    const QMimeData* data = QApplication::clipboard()->mimeData();
    if (data != nullptr && HoldsFiles(*data)) emit FilesDropped(PathsOf(*data));
    return;
  }
  // Between the columns of a disc's list, so that the edit key finds the texts.
  const int step = event->key() == Qt::Key_Right ? 1 : event->key() == Qt::Key_Left ? -1 : 0;
  const QModelIndex index = currentIndex();
  if (step != 0 && index.isValid() && event->modifiers() == Qt::NoModifier &&
      model_->TextColumn(model_->columnCount() - 1)) {
    const QModelIndex beside = index.siblingAtColumn(index.column() + step);
    if (beside.isValid()) selectionModel()->setCurrentIndex(beside, QItemSelectionModel::NoUpdate);
    return;
  }
  QTreeView::keyPressEvent(event);
}

void FileView::SetEmptyText(TextId text) {
  if (text == emptyText_) return;
  emptyText_ = text;
  viewport()->update();
}

void FileView::paintEvent(QPaintEvent* event) {
  QTreeView::paintEvent(event);
  if (model_ == nullptr || model_->Size() > 0) return;
  QPainter painter(viewport());
  painter.setPen(palette().color(QPalette::Disabled, QPalette::Text));
  const QString text = QtText(model_->Total() > 0   ? texts::NoFileFits
                              : model_->ShowsList() ? texts::EmptyFreeList
                                                    : emptyText_);
  painter.drawText(viewport()->rect().adjusted(12, 12, -12, -12),
                   Qt::AlignHCenter | Qt::AlignTop | Qt::TextWordWrap, text);
}

}  // namespace ts5
