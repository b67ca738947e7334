// The items of a result as a table, whatever their number: a view on the result, which outlives it.
#pragma once

#include <QAbstractTableModel>

#include "frame/run_report.h"
#include "frame/run_result.h"

namespace ts5 {

class ResultItemsModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  // By which a sorting model sorts: failures before cancelled items before successes, names as the user
  // reads.
  static constexpr int kSortRole = Qt::UserRole;

  explicit ResultItemsModel(const RunResult& result, QObject* parent = nullptr);

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  const RunResult& result_;
};

}  // namespace ts5
