// A list of text lines of fixed width, to be read, selected and copied, however many there are.
#pragma once

#include <QAbstractListModel>
#include <QListView>

#include "search/result_lines.h"

namespace ts5 {

class ResultLineModel : public QAbstractListModel {
  Q_OBJECT

 public:
  using QAbstractListModel::QAbstractListModel;

  // size: of every line.
  void Show(ResultLines lines, QSize size);
  [[nodiscard]] const ResultLines& Lines() const { return lines_; }

  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;

 private:
  ResultLines lines_;
  QSize size_;
};

class ResultLineView : public QListView {
  Q_OBJECT

 public:
  explicit ResultLineView(QWidget* parent = nullptr);

  void Show(ResultLines lines);
  [[nodiscard]] const ResultLines& Lines() const { return model_.Lines(); }

 protected:
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void CopySelection();

  ResultLineModel model_;
};

}  // namespace ts5
