#include "app/run/hit_model.h"

#include "frame/ui/qt_text.h"
#include "platform/base/casts.h"
#include "resources/icons.h"
#include "search/hit_texts.h"

namespace ts5 {

HitModel::HitModel(const SearchResults& results, QObject* parent)
    : QAbstractTableModel(parent), results_(results) {}

void HitModel::SetWholePaths(bool wholePaths) {
  wholePaths_ = wholePaths;
  if (shown_ > 0) emit dataChanged(index(0, 0), index(shown_ - 1, 0), {Qt::DisplayRole});
}

void HitModel::ShowNew() {
  const int size = ClampTo<int>(results_.Size());
  if (size <= shown_) return;
  beginInsertRows({}, shown_, size - 1);
  shown_ = size;
  endInsertRows();
}

void HitModel::ShowAnew() {
  beginResetModel();
  shown_ = ClampTo<int>(results_.Size());
  endResetModel();
}

int HitModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : shown_;
}
int HitModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(HitRow().size());
}

QVariant HitModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  if (role == Qt::DecorationRole && index.column() == 0) return Icon("melodysearchresulticon");
  if (role != Qt::DisplayRole) return {};
  const HitRow row = results_.Columns(static_cast<std::size_t>(index.row()), wholePaths_);
  return ToQt(row.at(static_cast<std::size_t>(index.column())));
}

QVariant HitModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return ToQt(HitColumnTitles(results_.Record().kind).at(static_cast<std::size_t>(section)));
}

}  // namespace ts5
