#include "frame/ui/result_items_model.h"

#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

// What the user has to look at first.
int Urgency(ItemEnd end) {
  switch (end) {
    case ItemEnd::Failed:
      return 0;
    case ItemEnd::Cancelled:
      return 1;
    case ItemEnd::Unchanged:
      return 2;
    case ItemEnd::Succeeded:
      break;
  }
  return 3;
}

}  // namespace

ResultItemsModel::ResultItemsModel(const RunResult& result, QObject* parent)
    : QAbstractTableModel(parent), result_(result) {}

int ResultItemsModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(result_.items.size());
}

int ResultItemsModel::columnCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(kReportColumns);
}

QVariant ResultItemsModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  const RunItem& item = result_.items[static_cast<std::size_t>(index.row())];
  const auto column = static_cast<ReportColumn>(index.column());
  if (role == kSortRole && column == ReportColumn::Outcome) return Urgency(EndOf(item));
  const QString text = ToQt(RowOf(item).at(static_cast<std::size_t>(column)));
  if (role == Qt::DisplayRole || role == kSortRole) return text;
  if (role == Qt::ToolTipRole) {
    const std::string& path = item.source.empty() ? item.destination : item.source;
    return column == ReportColumn::File ? ToQt(path) : text;
  }
  return {};
}

QVariant ResultItemsModel::headerData(int section, Qt::Orientation orientation, int role) const {
  if (orientation != Qt::Horizontal || role != Qt::DisplayRole) return {};
  return ToQt(ReportTitle(static_cast<ReportColumn>(section)));
}

}  // namespace ts5
