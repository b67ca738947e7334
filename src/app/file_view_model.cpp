#include "app/file_view_model.h"

#include "frame/file_types.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace ts5 {

FileViewModel::FileViewModel(QObject* parent)
    : QAbstractTableModel(parent), columns_(DirectoryColumns(false)) {}

void FileViewModel::ShowList(const FreeFileList& list, FilterId filter) {
  beginResetModel();
  list_ = &list;
  files_.clear();
  columns_ = ListColumns(filter);
  endResetModel();
}

void FileViewModel::ShowDirectory(std::vector<FileListEntry> files) {
  beginResetModel();
  list_ = nullptr;
  files_ = std::move(files);
  columns_ = DirectoryColumns(ShowsAudioCd());
  endResetModel();
}

void FileViewModel::Append(const std::vector<FileListEntry>& files) {
  if (ShowsList() || files.empty()) return;
  if (files_.empty()) return ShowDirectory(files);
  const int first = rowCount();
  beginInsertRows({}, first, first + static_cast<int>(files.size()) - 1);
  files_.insert(files_.end(), files.begin(), files.end());
  endInsertRows();
}

void FileViewModel::Changed() {
  beginResetModel();
  endResetModel();
}

int FileViewModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(Size());
}
int FileViewModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(columns_.size());
}

const QIcon& FileViewModel::IconOf(FileTypeId type) const {
  const auto found = icons_.find(type);
  if (found != icons_.end()) return found->second;
  return icons_.emplace(type, StripIcon(static_cast<int>(type))).first->second;
}

QVariant FileViewModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const FileListEntry& entry = At(static_cast<std::size_t>(index.row()));
  const FileColumn column = columns_[static_cast<std::size_t>(index.column())].column;
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
      return ToQt(ColumnText(entry, column));
    case Qt::DecorationRole:
      if (column != FileColumn::Name) return {};
      return IconOf(entry.cdTrack ? FileTypeId::CdTrack : FileTypeOf(entry.path));
    case Qt::ToolTipRole:
      return ToQt(entry.path);
    case Qt::TextAlignmentRole:
      if (column == FileColumn::Time || column == FileColumn::Pause) {
        return static_cast<int>(Qt::AlignRight | Qt::AlignVCenter);
      }
      return {};
    default:
      return {};
  }
}

QVariant FileViewModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return QtText(columns_[static_cast<std::size_t>(section)].title);
}

Qt::ItemFlags FileViewModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  Qt::ItemFlags flags =
      Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
  if (index.column() == 0 && !At(static_cast<std::size_t>(index.row())).cdTrack) flags |= Qt::ItemIsEditable;
  return flags;
}

bool FileViewModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role == Qt::EditRole && index.isValid()) {
    emit LabelEdited(static_cast<std::size_t>(index.row()), value.toString());
  }
  return false;
}

}  // namespace ts5
