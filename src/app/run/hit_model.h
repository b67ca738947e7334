// The rows of the list of hits: a view on the results of a search, with one row per place where the melody
// was found. It keeps nothing but how many of the results it shows.
#pragma once

#include <QAbstractTableModel>

#include "search/search_results.h"

namespace ts5 {

class HitModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  // The results outlive the model.
  explicit HitModel(const SearchResults& results, QObject* parent = nullptr);

  void SetWholePaths(bool wholePaths);
  [[nodiscard]] bool WholePaths() const { return wholePaths_; }
  // The results have grown: rows for what is new.
  void ShowNew();
  // The results were begun anew or cleared.
  void ShowAnew();
  [[nodiscard]] const SearchResults& Results() const { return results_; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  const SearchResults& results_;
  int shown_ = 0;
  bool wholePaths_ = false;
};

}  // namespace ts5
