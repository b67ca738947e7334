#include "app/source/file_view_model.h"

#include "app/texts.h"
#include "frame/file_types.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr int kTextColumns = 2;

}  // namespace

FileViewModel::FileViewModel(QObject* parent)
    : QAbstractTableModel(parent), columns_(DirectoryColumns(false)) {}

void FileViewModel::ShowList(const FreeFileList& list, FilterId filter) {
  beginResetModel();
  list_ = &list;
  files_.clear();
  columns_ = ListColumns(filter);
  if (!Has(filter, kTimedList)) textOf_ = {};
  endResetModel();
}

void FileViewModel::ShowTexts(TextOfEntry textOf) {
  if (!textOf && !textOf_) return;
  beginResetModel();
  textOf_ = std::move(textOf);
  endResetModel();
}

std::optional<FileViewModel::TrackText> FileViewModel::TextColumn(int column) const {
  if (!ShowsList() || !textOf_ || column < static_cast<int>(columns_.size())) return std::nullopt;
  return column == static_cast<int>(columns_.size()) ? TrackText::Title : TrackText::Performer;
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
  if (parent.isValid()) return 0;
  return static_cast<int>(columns_.size()) + (ShowsList() && textOf_ ? kTextColumns : 0);
}

const QIcon& FileViewModel::IconOf(FileTypeId type) const {
  const auto found = icons_.find(type);
  if (found != icons_.end()) return found->second;
  return icons_.emplace(type, StripIcon(static_cast<int>(type))).first->second;
}

QVariant FileViewModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const FileListEntry& entry = At(static_cast<std::size_t>(index.row()));
  if (const auto which = TextColumn(index.column())) {
    const bool text = role == Qt::DisplayRole || role == Qt::EditRole || role == Qt::ToolTipRole;
    return text ? QVariant(textOf_(entry, *which)) : QVariant();
  }
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
  if (const auto which = TextColumn(section))
    return QtText(*which == TrackText::Title ? texts::TrackTitleColumn : texts::TrackPerformerColumn);
  return QtText(columns_[static_cast<std::size_t>(section)].title);
}

Qt::ItemFlags FileViewModel::flags(const QModelIndex& index) const {
  if (!index.isValid()) return Qt::ItemIsDropEnabled;
  Qt::ItemFlags flags =
      Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsDragEnabled | Qt::ItemNeverHasChildren;
  if (TextColumn(index.column())) flags |= Qt::ItemIsEditable;
  if (index.column() == 0 && !At(static_cast<std::size_t>(index.row())).cdTrack) flags |= Qt::ItemIsEditable;
  return flags;
}

bool FileViewModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || !index.isValid()) return false;
  const auto row = static_cast<std::size_t>(index.row());
  if (const auto which = TextColumn(index.column())) {
    emit TextEdited(row, *which, value.toString());
  } else {
    emit LabelEdited(row, value.toString());
  }
  return false;
}

}  // namespace ts5
