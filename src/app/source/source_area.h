// The source area of the main window: drive selector, directory tree and file view, which shows the files of
// the directory or the free file list. While the directory is shown, a strip below stands for the free file
// list, so that files can be dragged over.
#pragma once

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QSplitter>
#include <QToolButton>
#include <QTreeView>
#include <QWidget>
#include <optional>
#include <string>
#include <vector>

#include "app/source/directory_tree_model.h"
#include "app/source/disc_fill.h"
#include "app/source/drive_selector.h"
#include "app/source/empty_note.h"
#include "app/source/file_view.h"

namespace ts5 {

// The strip that stands for the free file list; files may be dropped on it, and a click shows the list.
class FreeListStrip : public QLabel {
  Q_OBJECT

 public:
  explicit FreeListStrip(QWidget* parent = nullptr);
  void SetCount(std::size_t files);

 signals:
  void FilesDropped(const std::vector<std::string>& paths);
  void Clicked();

 protected:
  void mouseReleaseEvent(QMouseEvent* event) override;
  void dragEnterEvent(QDragEnterEvent* event) override;
  void dragLeaveEvent(QDragLeaveEvent* event) override;
  void dropEvent(QDropEvent* event) override;

 private:
  void Mark(bool marked);
};

class SourceArea : public QWidget {
  Q_OBJECT

 public:
  explicit SourceArea(QWidget* parent = nullptr);

  // Shows the free file list; the tree goes.
  void ShowList(const FreeFileList& list, FilterId filter);
  // Shows a directory of a drive, without its files; they come with AddFiles.
  void ShowDirectory(std::int32_t drive, const std::string& root, const std::string& path,
                     bool subdirectories);
  // Before the files of a directory come.
  void ClearFiles(const std::string& directory, bool subdirectories);
  void AddFiles(const std::vector<FileListEntry>& files) { model_.Append(files); }
  // The free file list that is shown has changed.
  void ListChanged() { model_.Changed(); }
  void SetFreeListCount(std::size_t files) { strip_->SetCount(files); }

  // How many files there are, how many of them are selected, and how long these are.
  void ShowCount();

  struct Enabling {
    bool drives = true;
    bool tree = true;
    bool files = true;
    bool subdirectories = true;
  };
  void Enable(const Enabling& enabling);
  // Only the file view, over the whole area.
  void SetMaximised(bool maximised);

  [[nodiscard]] DriveSelector* Drives() const { return drives_; }
  [[nodiscard]] QTreeView* Tree() const { return tree_; }
  [[nodiscard]] DirectoryTreeModel& TreeModel() { return treeModel_; }
  [[nodiscard]] FileView* Files() const { return files_; }
  // Narrows the list down.
  [[nodiscard]] QLineEdit* Filter() const { return filter_; }
  // Shows all of it again.
  void ClearFilter();
  // The files that are shown of a directory that is narrowed down; nothing when all are.
  [[nodiscard]] std::optional<std::vector<std::string>> NarrowedFiles() const;
  // Directly under the list of files.
  void AddBelowList(QWidget* widget);
  // Over the file view, while there are no files.
  [[nodiscard]] EmptyNote* Note() const { return note_; }
  [[nodiscard]] FreeListStrip* Strip() const { return strip_; }
  [[nodiscard]] QSplitter* Splitter() const { return splitter_; }
  // Below the list of a disc project.
  [[nodiscard]] DiscFill* Fill() const { return fill_; }
  // Beside it, for what can be done with the virtual recorder.
  [[nodiscard]] QToolButton* RecorderButton() const { return recorder_; }
  [[nodiscard]] FileViewModel& Model() { return model_; }
  [[nodiscard]] const FileViewModel& Model() const { return model_; }
  // Whether the directory is shown and is an audio CD.
  [[nodiscard]] bool ShowsAudioCd(const std::string& directory) const {
    return model_.ShowsAudioCd() && shownDirectory_ == directory;
  }

 signals:
  void DirectoryChosen(const std::string& path);
  void SubdirectoriesChosen(bool subdirectories);

 private:
  void TakeTreeIndex(const QModelIndex& index);
  void LeaveVanishing(const QModelIndex& index);
  void UpdateVisibility();

  DriveSelector* drives_;
  QLabel* driveLabel_;
  QCheckBox* subdirectories_;
  QLineEdit* filter_;
  QLabel* count_;  // of files
  QSplitter* splitter_;
  QWidget* left_;  // tree, and what belongs to it
  QTreeView* tree_;
  DirectoryTreeModel treeModel_;
  FileViewModel model_;
  FileView* files_;
  EmptyNote* note_;
  FreeListStrip* strip_;
  DiscFill* fill_;
  QToolButton* recorder_;
  std::string shownDirectory_;
  bool listMode_ = false;
  bool maximised_ = false;
  bool revealing_ = false;
};

}  // namespace ts5
