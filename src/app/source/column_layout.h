// How wide the columns of the file list are. Columns of facts are as wide as most of their texts, names and
// directories share what is left, and a column that the user made wider or narrower stays so. As long as he
// has taken none away, the last ones give way where there is no room for them.
#pragma once

#include <QTreeView>
#include <optional>
#include <vector>

#include "app/source/file_view_model.h"

namespace ts5 {

class ColumnLayout : public QObject {
  Q_OBJECT

 public:
  // The view shows the model already.
  ColumnLayout(QTreeView& view, const FileViewModel& model);

  // widths: what the user gave. fitting: columns without room are not shown.
  void Choose(ColumnWidths widths, bool fitting);
  // Those of facts that are in sight.
  [[nodiscard]] ShownColumns Shown() const;
  void Lay();  // other columns
  void Fit();  // other room

 signals:
  // By the user.
  void WidthsChanged(const ColumnWidths& widths);

 protected:
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  [[nodiscard]] int WidthOf(FileColumn column, int otherwise) const;
  [[nodiscard]] int FactWidth(const FactColumn& fact) const;

  QTreeView& view_;
  const FileViewModel& model_;
  ColumnWidths widths_;
  bool fitting_ = true;
  bool laying_ = false;   // nothing of what happens is the user's doing
  bool dragged_ = false;  // since the mouse was pressed
};

}  // namespace ts5
