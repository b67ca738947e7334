// The stored melodies as a list with the columns name and number of notes; names can be edited in place.
#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "search/melody_store.h"

namespace ts5 {

class MelodyListModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  using QAbstractTableModel::QAbstractTableModel;

  void Fill(std::vector<StoredMelodyInfo> melodies);
  [[nodiscard]] bool Empty() const { return melodies_.empty(); }
  // "" for the row of an empty list.
  [[nodiscard]] std::string NameAt(int row) const;
  [[nodiscard]] int RowOf(const std::string& name) const;  // -1 when it is not there

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  bool setData(const QModelIndex& index, const QVariant& value, int role) override;
  void sort(int column, Qt::SortOrder order) override;

 signals:
  // The user typed another name; the store has not changed yet.
  void NameEdited(const std::string& from, const std::string& to);

 private:
  std::vector<StoredMelodyInfo> melodies_;
  MelodyColumn column_ = MelodyColumn::Name;
  bool ascending_ = true;
};

}  // namespace ts5
