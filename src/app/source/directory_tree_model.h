// The directory tree of the source area: one root per drive, children read when they are needed and away from
// the window's thread, and again when somebody makes or removes directories below one that has been read.
// Hidden directories are left out.
#pragma once

#include <QAbstractItemModel>
#include <QFileSystemWatcher>
#include <QIcon>
#include <QTimer>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/shell/background_worker.h"

namespace ts5 {

class DirectoryTreeModel : public QAbstractItemModel {
  Q_OBJECT

 public:
  explicit DirectoryTreeModel(QObject* parent = nullptr);
  ~DirectoryTreeModel() override;

  // The drive whose directories are shown; label is the text of the root.
  void SetRoot(const std::string& path, const QString& label);
  [[nodiscard]] const std::string& RootPath() const;
  [[nodiscard]] QModelIndex RootIndex() const;
  [[nodiscard]] std::string PathOf(const QModelIndex& index) const;
  // Reads down to the directory and reports Revealed with the index of it, or of its nearest parent that
  // exists.
  void Reveal(const std::string& path);
  [[nodiscard]] bool Revealing() const { return wanted_.has_value(); }
  // Reads the children again, e.g. when a directory is opened a second time.
  void Refresh(const QModelIndex& index);

  [[nodiscard]] QModelIndex index(int row, int column, const QModelIndex& parent = {}) const override;
  [[nodiscard]] QModelIndex parent(const QModelIndex& child) const override;
  [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
  [[nodiscard]] bool hasChildren(const QModelIndex& parent = {}) const override;
  [[nodiscard]] Qt::ItemFlags flags(const QModelIndex& index) const override;
  [[nodiscard]] QVariant data(const QModelIndex& index, int role) const override;
  [[nodiscard]] bool canFetchMore(const QModelIndex& parent) const override;
  void fetchMore(const QModelIndex& parent) override;

 signals:
  void Revealed(const QModelIndex& index);
  // The directory is gone; its row and those below are removed after this.
  void Vanishing(const QModelIndex& index);

 private:
  struct Node;
  [[nodiscard]] Node* NodeOf(const QModelIndex& index) const;
  [[nodiscard]] QModelIndex IndexOf(const Node* node) const;
  [[nodiscard]] Node* Find(const std::string& path) const;
  void Load(Node& node);
  void TakeChildren(const std::string& path, std::vector<std::unique_ptr<Node>> children);
  void Remove(Node& parent, std::size_t row);
  void ReadChanged();
  void ContinueReveal();

  std::unique_ptr<Node> root_;
  std::optional<std::string> wanted_;  // where Reveal is going
  bool lookedAgain_ = false;           // where it should be
  QIcon closedIcon_;
  QFileSystemWatcher watcher_;     // the directories whose children have been read
  std::set<std::string> changed_;  // of these, the ones to be read again
  QTimer quiet_;
  BackgroundWorker worker_;
};

}  // namespace ts5
