#include "app/source/directory_tree_model.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "frame/directory_listing.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "resources/icons.h"

namespace ts5 {

struct DirectoryTreeModel::Node {
  enum class Reading { Not, UnderWay, Done };

  std::string path;
  QString label;
  Node* parent = nullptr;
  bool mayHaveChildren = true;
  Reading reading = Reading::Not;
  std::vector<std::unique_ptr<Node>> children;

  // What stands below a directory until its own directories have been read.
  static std::unique_ptr<Node> Placeholder(Node* parent) {
    auto node = std::make_unique<Node>();
    node->label = QtText(texts::TreePlaceholder);
    node->parent = parent;
    node->mayHaveChildren = false;
    return node;
  }
  [[nodiscard]] bool IsPlaceholder() const { return path.empty(); }
};

namespace {

// Directories that change are read again once it has been quiet for so long.
constexpr int kQuietMilliseconds = 600;

bool IsInside(std::string_view path, std::string_view directory) {
  if (directory.empty()) return false;
  if (directory == "/") return path.starts_with('/');
  return path == directory ||
         (path.starts_with(directory) && path.size() > directory.size() && path[directory.size()] == '/');
}

}  // namespace

DirectoryTreeModel::DirectoryTreeModel(QObject* parent)
    : QAbstractItemModel(parent), root_(std::make_unique<Node>()), closedIcon_(Icon("closeddiricon")) {
  quiet_.setSingleShot(true);
  quiet_.setInterval(kQuietMilliseconds);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, [this](const QString& path) {
    changed_.insert(FromQt(path));
    quiet_.start();
  });
  connect(&quiet_, &QTimer::timeout, this, &DirectoryTreeModel::ReadChanged);
}
DirectoryTreeModel::~DirectoryTreeModel() = default;

void DirectoryTreeModel::SetRoot(const std::string& path, const QString& label) {
  worker_.DropAll();
  wanted_.reset();
  changed_.clear();
  if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
  beginResetModel();
  root_ = std::make_unique<Node>();
  root_->path = path;
  root_->label = label;
  endResetModel();
}

const std::string& DirectoryTreeModel::RootPath() const {
  return root_->path;
}
QModelIndex DirectoryTreeModel::RootIndex() const {
  return index(0, 0);
}

DirectoryTreeModel::Node* DirectoryTreeModel::NodeOf(const QModelIndex& index) const {
  return static_cast<Node*>(index.internalPointer());
}

QModelIndex DirectoryTreeModel::IndexOf(const Node* node) const {
  if (node->parent == nullptr) return createIndex(0, 0, node);
  const auto& siblings = node->parent->children;
  const auto at = std::ranges::find(siblings, node, [](const auto& child) { return child.get(); });
  return createIndex(static_cast<int>(at - siblings.begin()), 0, node);
}

std::string DirectoryTreeModel::PathOf(const QModelIndex& index) const {
  return index.isValid() ? NodeOf(index)->path : std::string{};
}

QModelIndex DirectoryTreeModel::index(int row, int column, const QModelIndex& parent) const {
  if (column != 0 || row < 0) return {};
  if (!parent.isValid())
    return row == 0 && !root_->path.empty() ? createIndex(0, 0, root_.get()) : QModelIndex();
  const Node* node = NodeOf(parent);
  if (row >= std::ssize(node->children)) return {};
  return createIndex(row, 0, node->children[static_cast<std::size_t>(row)].get());
}

QModelIndex DirectoryTreeModel::parent(const QModelIndex& child) const {
  if (!child.isValid()) return {};
  const Node* parent = NodeOf(child)->parent;
  return parent == nullptr ? QModelIndex() : IndexOf(parent);
}

int DirectoryTreeModel::rowCount(const QModelIndex& parent) const {
  if (!parent.isValid()) return root_->path.empty() ? 0 : 1;
  return static_cast<int>(NodeOf(parent)->children.size());
}
int DirectoryTreeModel::columnCount(const QModelIndex& /*parent*/) const {
  return 1;
}

bool DirectoryTreeModel::hasChildren(const QModelIndex& parent) const {
  if (!parent.isValid()) return rowCount() > 0;
  const Node* node = NodeOf(parent);
  return node->reading == Node::Reading::Done ? !node->children.empty() : node->mayHaveChildren;
}

QVariant DirectoryTreeModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid()) return {};
  switch (role) {
    case Qt::DisplayRole:
    case Qt::AccessibleTextRole:
      return NodeOf(index)->label;
    case Qt::DecorationRole:
      return NodeOf(index)->IsPlaceholder() ? QVariant() : QVariant(closedIcon_);
    case Qt::ToolTipRole:
      return ToQt(NodeOf(index)->path);
    default:
      return {};
  }
}

Qt::ItemFlags DirectoryTreeModel::flags(const QModelIndex& index) const {
  if (!index.isValid() || NodeOf(index)->IsPlaceholder()) return Qt::NoItemFlags;
  return Qt::ItemIsEnabled | Qt::ItemIsSelectable;
}

bool DirectoryTreeModel::canFetchMore(const QModelIndex& parent) const {
  return parent.isValid() && NodeOf(parent)->reading == Node::Reading::Not && NodeOf(parent)->mayHaveChildren;
}
void DirectoryTreeModel::fetchMore(const QModelIndex& parent) {
  if (canFetchMore(parent)) Load(*NodeOf(parent));
}
void DirectoryTreeModel::Refresh(const QModelIndex& index) {
  if (index.isValid() && NodeOf(index)->reading == Node::Reading::Done) Load(*NodeOf(index));
}

void DirectoryTreeModel::Load(Node& node) {
  node.reading = Node::Reading::UnderWay;
  worker_.Start([this, path = node.path]() -> BackgroundWorker::Done {
    auto found = std::make_shared<std::vector<std::unique_ptr<Node>>>();
    for (const std::string& name : Subdirectories(path)) {
      auto made = std::make_unique<Node>();
      made->path = JoinPath(path, name);
      made->label = ToQt(name);
      made->mayHaveChildren = HasSubdirectories(made->path);
      if (made->mayHaveChildren) made->children.push_back(Node::Placeholder(made.get()));
      found->push_back(std::move(made));
    }
    return [this, path, found] { TakeChildren(path, std::move(*found)); };
  });
}

// A directory that is gone has had its parent changed too, unless it is the root, which stays.
void DirectoryTreeModel::ReadChanged() {
  for (const std::string& path : std::exchange(changed_, {})) {
    if (Node* node = Find(path); node != nullptr && node->reading == Node::Reading::Done) Load(*node);
  }
}

void DirectoryTreeModel::Remove(Node& parent, std::size_t row) {
  const QModelIndex above = IndexOf(&parent);
  const int at = static_cast<int>(row);
  const std::string gone = parent.children[row]->path;
  emit Vanishing(index(at, 0, above));
  beginRemoveRows(above, at, at);
  parent.children.erase(parent.children.begin() + at);
  endRemoveRows();
  for (const QString& watched : watcher_.directories()) {
    if (IsInside(FromQt(watched), gone)) watcher_.removePath(watched);
  }
}

// Children that stay keep their nodes, and so what is open below them.
void DirectoryTreeModel::TakeChildren(const std::string& path, std::vector<std::unique_ptr<Node>> children) {
  Node* node = Find(path);
  if (node == nullptr) return;
  node->reading = Node::Reading::Done;
  node->mayHaveChildren = !children.empty();
  const QModelIndex parent = IndexOf(node);
  const auto holds = [](const auto& list, const std::string& wanted) {
    return std::ranges::any_of(list, [&](const auto& child) { return child->path == wanted; });
  };
  for (std::size_t i = node->children.size(); i-- > 0;) {
    if (!holds(children, node->children[i]->path)) Remove(*node, i);
  }
  if (node->children.empty()) {
    if (!children.empty()) {
      beginInsertRows(parent, 0, static_cast<int>(children.size()) - 1);
      for (auto& child : children) child->parent = node;
      node->children = std::move(children);
      endInsertRows();
    }
  } else {
    for (std::size_t i = 0; i < children.size(); ++i) {
      if (i < node->children.size() && node->children[i]->path == children[i]->path) continue;
      beginInsertRows(parent, static_cast<int>(i), static_cast<int>(i));
      children[i]->parent = node;
      node->children.insert(node->children.begin() + static_cast<std::ptrdiff_t>(i), std::move(children[i]));
      endInsertRows();
    }
  }
  // Only a directory that has answered is watched: watching one that hangs would hang as well.
  watcher_.addPath(ToQt(path));
  emit dataChanged(parent, parent);
  ContinueReveal();
}

DirectoryTreeModel::Node* DirectoryTreeModel::Find(const std::string& path) const {
  Node* node = root_.get();
  while (node != nullptr && node->path != path) {
    Node* next = nullptr;
    for (const auto& child : node->children) {
      if (IsInside(path, child->path)) next = child.get();
    }
    node = next;
  }
  return node;
}

void DirectoryTreeModel::Reveal(const std::string& path) {
  wanted_ = NormalisedPath(path);
  lookedAgain_ = false;
  ContinueReveal();
}

void DirectoryTreeModel::ContinueReveal() {
  if (!wanted_ || root_->path.empty()) return;
  Node* node = root_.get();
  while (node->path != *wanted_) {
    if (node->reading != Node::Reading::Done) {
      if (node->reading == Node::Reading::Not) Load(*node);
      return;  // goes on when the children are there
    }
    const auto next = std::ranges::find_if(
        node->children, [&](const auto& child) { return IsInside(*wanted_, child->path); });
    if (next == node->children.end()) {
      // It may be a new one.
      if (std::exchange(lookedAgain_, true)) break;
      return Load(*node);
    }
    node = next->get();
  }
  wanted_.reset();
  emit Revealed(IndexOf(node));
}

}  // namespace ts5
