// The list of hits of a melody search: one row per place where the melody was found.
#pragma once

#include <QAbstractTableModel>
#include <vector>

#include "frame/filter_id.h"
#include "frame/search_hit.h"

namespace ts5 {

class HitModel : public QAbstractTableModel {
  Q_OBJECT

 public:
  explicit HitModel(QObject* parent = nullptr);

  // scores: the rows name staff line, voice and beat instead of track and time.
  void SetScores(bool scores);
  void SetWholePaths(bool wholePaths);
  void Append(const std::vector<SearchHit>& hits);
  void Clear();
  [[nodiscard]] const std::vector<SearchHit>& Hits() const { return hits_; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  std::vector<SearchHit> hits_;
  bool scores_ = false;
  bool wholePaths_ = false;
};

}  // namespace ts5
