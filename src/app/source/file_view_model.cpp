#include "app/source/file_view_model.h"

#include <algorithm>
#include <utility>

#include "app/texts.h"
#include "frame/file_types.h"
#include "frame/filter_catalogue.h"
#include "frame/ui/qt_text.h"
#include "platform/files/paths.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr int kTextColumns = 2;

}  // namespace

FileViewModel::FileViewModel(QObject* parent) : QAbstractTableModel(parent) {
  LayColumns();
}

// --- what is shown

void FileViewModel::ShowList(const FreeFileList& list, FilterId filter) {
  beginResetModel();
  list_ = &list;
  files_.clear();
  root_.clear();
  timed_ = Has(filter, kTimedList);
  if (!timed_) textOf_ = {};
  LayColumns();
  LayRows();
  endResetModel();
}

void FileViewModel::ShowTexts(TextOfEntry textOf) {
  if (!textOf && !textOf_) return;
  beginResetModel();
  textOf_ = std::move(textOf);
  endResetModel();
}

void FileViewModel::ShowDirectory(std::vector<FileListEntry> files, const std::string& root,
                                  bool subdirectories) {
  beginResetModel();
  list_ = nullptr;
  files_ = std::move(files);
  root_ = root;
  subdirectories_ = subdirectories;
  timed_ = false;
  LayColumns();
  LayRows();
  endResetModel();
}

void FileViewModel::Append(const std::vector<FileListEntry>& files) {
  if (ShowsList() || files.empty()) return;
  if (files_.empty()) return ShowDirectory(files, root_, subdirectories_);
  const std::size_t first = files_.size();
  files_.insert(files_.end(), files.begin(), files.end());
  Recall(first);
  // They get their places when all are there.
  ListOrder order = Order();
  order.column.reset();
  std::vector<std::uint32_t> more = ShownEntries(files, order, root_, {});
  if (more.empty()) return;
  for (std::uint32_t& entry : more) entry += static_cast<std::uint32_t>(first);
  const int row = rowCount();
  beginInsertRows({}, row, row + static_cast<int>(more.size()) - 1);
  rows_.insert(rows_.end(), more.begin(), more.end());
  endInsertRows();
}

void FileViewModel::Changed() {
  beginResetModel();
  LayRows();
  endResetModel();
}

// What is known of the entries from there on.
void FileViewModel::Recall(std::size_t from) {
  known_.resize(from);
  known_.resize(Total());
  if (memory_.Size() == 0) return;
  for (std::size_t i = from; i < known_.size(); ++i) known_[i].facts = memory_.Find(Entries()[i].path);
}

void FileViewModel::LayRows() {
  Recall(0);
  OrderRows();
}

const FileListEntry& FileViewModel::At(std::size_t row) const {
  static const FileListEntry kNone;
  const std::size_t entry = EntryOf(row);
  return entry < Total() ? Entries()[entry] : kNone;
}

// --- the view on the list

void FileViewModel::Arrange(const ListOrder& order) {
  beginResetModel();
  (ShowsList() ? listOrder_ : directoryOrder_) = order;
  OrderRows();
  endResetModel();
}

void FileViewModel::OrderRows() {
  const auto facts = [this](std::size_t entry) { return known_[entry].facts.get(); };
  rows_ = ShownEntries(Entries(), MayArrange() ? Order() : ListOrder{}, root_, facts);
}

std::size_t FileViewModel::EntryOf(std::size_t row) const {
  return row < rows_.size() ? rows_[row] : Total();
}

std::vector<std::size_t> FileViewModel::EntriesOf(const std::vector<std::size_t>& rows) const {
  std::vector<std::size_t> entries;
  entries.reserve(rows.size());
  for (const std::size_t row : rows) entries.push_back(EntryOf(row));
  return entries;
}

std::vector<std::size_t> FileViewModel::RowsOf(const std::vector<std::size_t>& entries) const {
  std::vector<bool> wanted(Total());
  for (const std::size_t entry : entries) {
    if (entry < wanted.size()) wanted[entry] = true;
  }
  std::vector<std::size_t> rows;
  for (std::size_t row = 0; row < rows_.size(); ++row) {
    if (rows_[row] < wanted.size() && wanted[rows_[row]]) rows.push_back(row);
  }
  return rows;
}

// --- columns and facts

void FileViewModel::SetColumns(const ShownColumns& columns) {
  beginResetModel();
  shown_ = columns;
  LayColumns();
  endResetModel();
}

void FileViewModel::LayColumns() {
  const std::span<const ColumnTitle> fixed = ShowsList()
                                                 ? ListColumns(timed_ ? FilterId::CdBurner : FilterId::None)
                                                 : DirectoryColumns(ShowsAudioCd(), subdirectories_);
  columns_.assign(fixed.begin(), fixed.end());
  if (!MayArrange()) return;
  for (const FactColumn& column : FactColumns()) {
    if (shown_.contains(column.column)) columns_.push_back({column.column, column.title});
  }
}

std::optional<FileColumn> FileViewModel::ColumnAt(int column) const {
  if (column < 0 || column >= static_cast<int>(columns_.size())) return std::nullopt;
  return columns_[static_cast<std::size_t>(column)].column;
}

bool FileViewModel::IsUnread(std::size_t row, bool music) const {
  const std::size_t entry = EntryOf(row);
  if (entry >= known_.size() || (music ? known_[entry].read : known_[entry].dated)) return false;
  return !At(row).cdTrack;
}

SharedFacts FileViewModel::FactsAt(std::size_t row) const {
  const std::size_t entry = EntryOf(row);
  return entry < known_.size() ? known_[entry].facts : nullptr;
}

void FileViewModel::TakeFacts(std::size_t entry, const std::string& path, SharedFacts facts) {
  const bool read = !facts || !facts->unread;
  if (read) memory_.Remember(path, facts);
  if (entry >= known_.size() || entry >= Total() || Entries()[entry].path != path) return;
  known_[entry] = {std::move(facts), true, read};
}

FileViewModel::Sum FileViewModel::LengthOf(const std::vector<std::size_t>& rows) const {
  Sum sum;
  for (const std::size_t row : rows) {
    const FileListEntry& entry = At(row);
    if (entry.cdTrack || timed_) {
      sum.length += std::chrono::seconds(entry.duration);
    } else if (const std::size_t place = EntryOf(row); place < known_.size()) {
      const Known& known = known_[place];
      if (known.facts && known.facts->length) sum.length += *known.facts->length;
      sum.whole = sum.whole && known.read;
    }
  }
  return sum;
}

// --- as a model

int FileViewModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(Size());
}
int FileViewModel::columnCount(const QModelIndex& parent) const {
  if (parent.isValid()) return 0;
  return static_cast<int>(columns_.size()) + (ShowsList() && textOf_ ? kTextColumns : 0);
}

std::optional<FileViewModel::TrackText> FileViewModel::TextColumn(int column) const {
  if (!ShowsList() || !textOf_ || column < static_cast<int>(columns_.size())) return std::nullopt;
  return column == static_cast<int>(columns_.size()) ? TrackText::Title : TrackText::Performer;
}

const QIcon& FileViewModel::IconOf(FileTypeId type) const {
  const auto found = icons_.find(type);
  if (found != icons_.end()) return found->second;
  return icons_.emplace(type, StripIcon(static_cast<int>(type))).first->second;
}

QString FileViewModel::TextAt(const FileListEntry& entry, std::size_t row, FileColumn column) const {
  if (const FactColumn* const fact = FindFactColumn(column)) {
    const SharedFacts facts = FactsAt(row);
    return facts ? ToQt(fact->text(*facts)) : QString();
  }
  std::string text = ColumnText(entry, column);
  // In a directory the part of the path that all have in common says nothing.
  if (column == FileColumn::Directory && !root_.empty()) text = PathBelow(root_, text).value_or(text);
  return ToQt(text);
}

QVariant FileViewModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const auto row = static_cast<std::size_t>(index.row());
  const FileListEntry& entry = At(row);
  if (const auto which = TextColumn(index.column())) {
    const bool text = role == Qt::DisplayRole || role == Qt::EditRole || role == Qt::ToolTipRole;
    return text ? QVariant(textOf_(entry, *which)) : QVariant();
  }
  const auto column = ColumnAt(index.column());
  if (!column) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::EditRole:
      return TextAt(entry, row, *column);
    case Qt::DecorationRole:
      if (*column != FileColumn::Name) return {};
      return IconOf(entry.cdTrack ? FileTypeId::CdTrack : FileTypeOf(entry.path));
    case Qt::ToolTipRole:
      return ToQt(entry.path);
    case Qt::TextAlignmentRole: {
      const FactColumn* const fact = FindFactColumn(*column);
      const bool right =
          fact != nullptr ? fact->number : *column == FileColumn::Time || *column == FileColumn::Pause;
      return right ? QVariant(static_cast<int>(Qt::AlignRight | Qt::AlignVCenter)) : QVariant();
    }
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
