// The file view: many rows, in-place renaming, files dragged out of it, files dropped on it or pasted into
// it.
#pragma once

#include <QTreeView>
#include <functional>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "app/source/column_layout.h"
#include "app/source/file_view_model.h"

namespace ts5 {

// The local files among what is dragged or on the clipboard.
[[nodiscard]] std::vector<std::string> PathsOf(const QMimeData& data);
// Whether there are any.
[[nodiscard]] bool HoldsFiles(const QMimeData& data);

class FileView : public QTreeView {
  Q_OBJECT

 public:
  explicit FileView(QWidget* parent = nullptr);

  void SetFileModel(FileViewModel* model);
  // What stands in the place of the files of an empty directory.
  void SetEmptyText(TextId text);
  [[nodiscard]] FileViewModel* FileModel() const { return model_; }

  // Ascending.
  [[nodiscard]] std::vector<std::size_t> SelectedRows() const;
  [[nodiscard]] ColumnLayout& Columns() { return *columns_; }
  // The rows that are in sight, from the first to behind the last one.
  [[nodiscard]] std::pair<std::size_t, std::size_t> RowsInSight() const;
  // Rearranges the model: what is selected and still shown stays selected, and the view where it is.
  void Rearrange(const std::function<void()>& change);
  // The sign in the header of what the list is sorted by.
  void ShowSorting(const ListOrder& order);
  // Selects exactly these rows and gives one the focus; nothing is reported as the user's selection.
  void SelectRows(const std::vector<std::size_t>& rows, std::size_t focus);
  [[nodiscard]] std::size_t FocusRow() const;  // the number of rows when there is none
  void EditLabel(std::size_t row);
  [[nodiscard]] bool IsEditing() const { return state() == QAbstractItemView::EditingState; }

 signals:
  void SelectedByUser();
  void LabelEditingChanged(bool editing);
  // The title of a column was clicked, or the menu of the titles is wanted.
  void TitleClicked(FileColumn column);
  void TitleMenuWanted(const QPoint& globalPosition);
  // Other rows are in sight.
  void SightChanged();
  void FilesDropped(const std::vector<std::string>& paths);
  void DragChanged(bool dragging);

 protected:
  bool edit(const QModelIndex& index, EditTrigger trigger, QEvent* event) override;
  void startDrag(Qt::DropActions actions) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragMoveEvent(QDragMoveEvent* event) override;
  void dropEvent(QDropEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void paintEvent(QPaintEvent* event) override;
  void resizeEvent(QResizeEvent* event) override;

 private:
  [[nodiscard]] QMimeData* SelectedFiles() const;
  void LayColumns();

  FileViewModel* model_ = nullptr;
  TextId emptyText_;
  ColumnLayout* columns_ = nullptr;
  bool selecting_ = false;
};

}  // namespace ts5
