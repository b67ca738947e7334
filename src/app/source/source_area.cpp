#include "app/source/source_area.h"

#include <QDragEnterEvent>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QMimeData>
#include <QMouseEvent>
#include <QStyle>
#include <QVBoxLayout>

#include "app/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5 {

namespace {

// A click beside the directories takes the mark off none.
class DirectoryTree final : public QTreeView {
 public:
  using QTreeView::QTreeView;

 protected:
  QItemSelectionModel::SelectionFlags selectionCommand(const QModelIndex& index,
                                                       const QEvent* event) const override {
    return index.isValid() ? QTreeView::selectionCommand(index, event) : QItemSelectionModel::NoUpdate;
  }
};

constexpr int kFilterWidth = 200;  // of the field that narrows the list down
constexpr int kNarrowest = 50;     // of what is beside the drive

}  // namespace

FreeListStrip::FreeListStrip(QWidget* parent) : QLabel(parent) {
  setObjectName("freeListStrip");
  setAcceptDrops(true);
  setProperty("role", "dropStrip");
  setAlignment(Qt::AlignCenter);
  setTextFormat(Qt::PlainText);
  setMinimumHeight(30);
  setSizePolicy(QSizePolicy::Ignored, QSizePolicy::Fixed);
  setCursor(Qt::PointingHandCursor);
  setToolTip(QtText(texts::FreeListStripTip));
  SetCount(0);
}

void FreeListStrip::SetCount(std::size_t files) {
  setText(ToQt(Format(Text(texts::FreeListStrip), files)));
  setAccessibleName(text());
}

void FreeListStrip::Mark(bool marked) {
  setProperty("dropTarget", marked);
  style()->unpolish(this);
  style()->polish(this);
}

void FreeListStrip::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() == Qt::LeftButton && rect().contains(event->pos())) emit Clicked();
}
void FreeListStrip::dragEnterEvent(QDragEnterEvent* event) {
  if (!HoldsFiles(*event->mimeData())) return;
  event->acceptProposedAction();
  Mark(true);
}
void FreeListStrip::dragLeaveEvent(QDragLeaveEvent* /*event*/) {
  Mark(false);
}
void FreeListStrip::dropEvent(QDropEvent* event) {
  Mark(false);
  event->acceptProposedAction();
  emit FilesDropped(PathsOf(*event->mimeData()));
}

SourceArea::SourceArea(QWidget* parent)
    : QWidget(parent),
      drives_(new DriveSelector(this)),
      driveLabel_(new QLabel(QtText(texts::SourceAreaName), this)),
      subdirectories_(new QCheckBox(QtText(texts::WithSubdirectories), this)),
      filter_(new QLineEdit(this)),
      count_(new QLabel(this)),
      splitter_(new QSplitter(Qt::Horizontal, this)),
      left_(new QWidget(splitter_)),
      tree_(new DirectoryTree(left_)),
      files_(nullptr),
      note_(nullptr),
      strip_(nullptr),
      fill_(nullptr),
      recorder_(nullptr) {
  setObjectName("sourceArea");
  setAccessibleName(QtText(texts::SourceAreaName));
  driveLabel_->setProperty("role", "areaTitle");
  driveLabel_->setBuddy(drives_);

  tree_->setObjectName("directoryTree");
  tree_->setAccessibleName(QtText(texts::TreeName));
  tree_->setHeaderHidden(true);
  tree_->setUniformRowHeights(true);
  tree_->setTabKeyNavigation(false);
  tree_->setEditTriggers(QAbstractItemView::NoEditTriggers);
  tree_->setModel(&treeModel_);
  tree_->header()->setSectionResizeMode(QHeaderView::ResizeToContents);
  tree_->header()->setStretchLastSection(false);

  auto* left = new QVBoxLayout(left_);
  left->setContentsMargins(0, 0, 0, 0);
  left->setSpacing(4);
  left->addWidget(tree_, 1);
  subdirectories_->setObjectName("withSubdirectories");
  subdirectories_->setToolTip(QtText(texts::WithSubdirectoriesTip));
  left->addWidget(subdirectories_);

  auto* right = new QWidget(splitter_);
  auto* column = new QVBoxLayout(right);
  column->setContentsMargins(0, 0, 0, 0);
  column->setSpacing(4);
  files_ = new FileView(right);
  files_->SetFileModel(&model_);
  note_ = new EmptyNote(files_);
  strip_ = new FreeListStrip(right);
  column->addWidget(files_, 1);
  fill_ = new DiscFill(right);
  fill_->hide();
  column->addWidget(strip_);
  auto* const disc = new QHBoxLayout;
  disc->setSpacing(6);
  disc->addWidget(fill_, 1);
  recorder_ = new QToolButton(right);
  recorder_->setObjectName("recorderButton");
  recorder_->setPopupMode(QToolButton::MenuButtonPopup);
  recorder_->setFocusPolicy(Qt::StrongFocus);
  recorder_->hide();
  disc->addWidget(recorder_);
  column->addLayout(disc);
  splitter_->addWidget(left_);
  splitter_->addWidget(right);
  splitter_->setStretchFactor(0, 0);
  splitter_->setStretchFactor(1, 1);
  splitter_->setSizes({240, 560});
  splitter_->setChildrenCollapsible(false);

  auto* top = new QHBoxLayout;
  top->addWidget(driveLabel_);
  top->addWidget(drives_);
  top->addStretch(0);  // what the filter's field does not take
  filter_->setObjectName("listFilter");
  filter_->setAccessibleName(QtText(texts::ListFilterName));
  filter_->setPlaceholderText(QtText(texts::ListFilterName));
  filter_->setToolTip(QtText(texts::ListFilterTip));
  filter_->setClearButtonEnabled(true);
  filter_->setMinimumWidth(kNarrowest);
  filter_->setMaximumWidth(kFilterWidth);
  top->addWidget(filter_, 1);
  count_->setMinimumWidth(kNarrowest);  // its tooltip says it all
  count_->setObjectName("fileCount");
  top->addWidget(count_);
  auto* layout = new QVBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 4);
  layout->setSpacing(6);
  layout->addLayout(top);
  layout->addWidget(splitter_, 1);

  setTabOrder(drives_, filter_);
  setTabOrder(filter_, tree_);
  setTabOrder(tree_, subdirectories_);
  setTabOrder(subdirectories_, files_);
  setTabOrder(files_, recorder_);
  connect(subdirectories_, &QCheckBox::clicked, this, &SourceArea::SubdirectoriesChosen);
  connect(tree_->selectionModel(), &QItemSelectionModel::currentChanged, this, &SourceArea::TakeTreeIndex);
  connect(tree_, &QTreeView::expanded, &treeModel_, &DirectoryTreeModel::Refresh);
  connect(&treeModel_, &DirectoryTreeModel::Vanishing, this, &SourceArea::LeaveVanishing);
  connect(&treeModel_, &DirectoryTreeModel::Revealed, this, [this](const QModelIndex& index) {
    revealing_ = true;
    tree_->expand(treeModel_.RootIndex());
    tree_->setCurrentIndex(index);
    tree_->scrollTo(index);
    revealing_ = false;
  });
}

void SourceArea::AddBelowList(QWidget* widget) {
  auto* const column = static_cast<QVBoxLayout*>(files_->parentWidget()->layout());
  column->insertWidget(column->indexOf(files_) + 1, widget);
}

void SourceArea::TakeTreeIndex(const QModelIndex& index) {
  const std::string path = treeModel_.PathOf(index);
  if (revealing_ || path.empty() || path == shownDirectory_) return;
  // A tree that gets the focus before its directory has been found goes to its root by itself.
  if (treeModel_.Revealing() && index == treeModel_.RootIndex()) return;
  shownDirectory_ = path;
  emit DirectoryChosen(path);
}

// Where the directory that is shown goes, its parent is shown, not a neighbour; while the tree is locked, as
// a run reads the directory, only the mark moves.
void SourceArea::LeaveVanishing(const QModelIndex& index) {
  QModelIndex current = tree_->currentIndex();
  while (current.isValid() && current != index) current = current.parent();
  if (!current.isValid()) return;
  revealing_ = !tree_->isEnabled();
  tree_->setCurrentIndex(index.parent());
  revealing_ = false;
}

void SourceArea::ShowList(const FreeFileList& list, FilterId filter) {
  listMode_ = true;
  drives_->SetCurrent(kListModeDrive);
  files_->setAccessibleName(QtText(texts::FreeListName));
  model_.ShowList(list, filter);
  ClearFilter();
  UpdateVisibility();
}

void SourceArea::ShowDirectory(std::int32_t drive, const std::string& root, const std::string& path,
                               bool subdirectories) {
  listMode_ = false;
  subdirectories_->setChecked(subdirectories);
  drives_->SetCurrent(drive);
  files_->setAccessibleName(QtText(texts::FileViewName));
  model_.ShowDirectory({}, path, subdirectories);
  ClearFilter();
  shownDirectory_ = path;
  if (treeModel_.RootPath() != root) {
    revealing_ = true;
    treeModel_.SetRoot(root, ToQt(TreeRootText(drive)));
    revealing_ = false;
  }
  treeModel_.Reveal(path);
  UpdateVisibility();
  // As long as its files are not there, their view is locked, and the keys would go to the target.
  if (files_->hasFocus()) tree_->setFocus();
}

void SourceArea::ClearFiles(const std::string& directory, bool subdirectories) {
  if (!listMode_) model_.ShowDirectory({}, directory, subdirectories);
}

void SourceArea::Enable(const Enabling& enabling) {
  drives_->setEnabled(enabling.drives);
  tree_->setEnabled(enabling.tree);
  files_->setEnabled(enabling.files);
  filter_->setEnabled(enabling.files);
  subdirectories_->setEnabled(enabling.subdirectories);
}

void SourceArea::ClearFilter() {
  filter_->clear();
  ListOrder order = model_.Order();
  order.filter.clear();
  if (order != model_.Order()) model_.Arrange(order);
}

std::optional<std::vector<std::string>> SourceArea::NarrowedFiles() const {
  if (listMode_ || model_.Order().filter.empty()) return std::nullopt;
  std::vector<std::string> files;
  for (std::size_t row = 0; row < model_.Size(); ++row) files.push_back(model_.At(row).path);
  return files;
}

void SourceArea::ShowCount() {
  const std::vector<std::size_t> rows = files_->SelectedRows();
  const std::size_t files = model_.Total();
  std::string text;
  if (!rows.empty()) {
    text = Format(Text(texts::FilesMarked), rows.size(), files);
    const FileViewModel::Sum sum = model_.LengthOf(rows);
    if (sum.length.count() > 0) text += ", " + SumText(sum.length);
    if (!sum.whole) text += " …";
  } else if (model_.Size() < files) {
    text =
        Format(Text(listMode_ ? texts::FilesFilteredAllCount : texts::FilesFiltered), model_.Size(), files);
  } else if (files > 0) {
    text = files == 1 ? std::string(Text(texts::OneFileShown)) : Format(Text(texts::FilesShown), files);
  }
  count_->setText(ToQt(text));
  count_->setToolTip(ToQt(text));
  filter_->setVisible(model_.MayArrange() && (files > 0 || !filter_->text().isEmpty()));
}

void SourceArea::SetMaximised(bool maximised) {
  maximised_ = maximised;
  UpdateVisibility();
}

void SourceArea::UpdateVisibility() {
  left_->setVisible(!listMode_ && !maximised_);
  strip_->setVisible(!listMode_ && !maximised_);
}

}  // namespace ts5
