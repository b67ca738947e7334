#include "search/ui/melody_list_model.h"

#include <algorithm>
#include <utility>

#include "frame/ui/qt_text.h"
#include "search/texts.h"

namespace ts5 {

void MelodyListModel::Fill(std::vector<StoredMelodyInfo> melodies) {
  beginResetModel();
  melodies_ = std::move(melodies);
  SortMelodies(melodies_, column_, ascending_);
  endResetModel();
}

std::string MelodyListModel::NameAt(int row) const {
  const auto index = static_cast<std::size_t>(row);
  return row >= 0 && index < melodies_.size() ? melodies_[index].name : std::string{};
}

int MelodyListModel::RowOf(const std::string& name) const {
  const auto found = std::ranges::find(melodies_, name, &StoredMelodyInfo::name);
  return found == melodies_.end() ? -1 : static_cast<int>(found - melodies_.begin());
}

int MelodyListModel::rowCount(const QModelIndex& parent) const {
  // An empty list says so in its only row.
  return parent.isValid() ? 0 : std::max(static_cast<int>(melodies_.size()), 1);
}

int MelodyListModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : 2;
}

QVariant MelodyListModel::data(const QModelIndex& index, int role) const {
  const bool name = index.column() == 0;
  if (Empty()) return name && role == Qt::DisplayRole ? QtText(texts::NoMelodyFound) : QVariant{};
  const StoredMelodyInfo& melody = melodies_[static_cast<std::size_t>(index.row())];
  if (role == Qt::DisplayRole || role == Qt::EditRole) {
    return name ? QVariant(ToQt(melody.name)) : QVariant(static_cast<qulonglong>(melody.noteCount));
  }
  return role == Qt::TextAlignmentRole && !name ? QVariant(int(Qt::AlignRight | Qt::AlignVCenter))
                                                : QVariant{};
}

QVariant MelodyListModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return QtText(section == 0 ? texts::ColumnMelody : texts::ColumnNoteCount);
}

Qt::ItemFlags MelodyListModel::flags(const QModelIndex& index) const {
  if (!index.isValid() || Empty()) return Qt::NoItemFlags;
  const Qt::ItemFlags flags = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
  return index.column() == 0 ? flags | Qt::ItemIsEditable : flags;
}

bool MelodyListModel::setData(const QModelIndex& index, const QVariant& value, int role) {
  if (role != Qt::EditRole || index.column() != 0) return false;
  const std::string from = NameAt(index.row());
  const std::string to = FromQt(value.toString());
  if (from.empty() || from == to) return false;
  emit NameEdited(from, to);
  return true;
}

void MelodyListModel::sort(int column, Qt::SortOrder order) {
  column_ = column == 0 ? MelodyColumn::Name : MelodyColumn::NoteCount;
  ascending_ = order == Qt::AscendingOrder;
  Fill(std::move(melodies_));
}

}  // namespace ts5
