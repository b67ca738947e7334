#include "support/power_cut.h"

#include <sys/stat.h>

#include <algorithm>

namespace ts5::test {
namespace {

std::uint64_t NodeOf(int file) {
  struct stat status {};
  return ::fstat(file, &status) == 0 ? status.st_ino : 0;
}

}  // namespace

PowerCut::Node PowerCut::NodeAt(const std::string& path) {
  struct stat status {};
  return ::lstat(path.c_str(), &status) == 0 ? status.st_ino : 0;
}

std::vector<PowerCut::Node>& PowerCut::History(const std::string& path) {
  auto& history = names_[path];
  if (history.empty()) history.push_back(NodeAt(path));
  return history;
}

void PowerCut::Watch(const std::string& path) {
  watched_[path] = History(path).back();
}

bool PowerCut::IsWhole(const std::string& path) {
  return std::ranges::none_of(History(path),
                              [&](Node node) { return node == 0 || unflushed_.contains(node); });
}

void PowerCut::Check(const std::string& call) {
  ++calls_;
  for (const auto& [path, old] : watched_) {
    const bool safe = std::ranges::all_of(History(path), [&, was = old](Node node) {
      return node == was || (node != 0 && !unflushed_.contains(node));
    });
    if (!safe) harm_.push_back(call + ": " + path);
  }
  for (const auto& [from, to] : moves_) {
    if (!IsWhole(from) && !IsWhole(to)) harm_.push_back(call + ": " + from);
  }
}

int PowerCut::Create(const std::string& path, mode_t mode) {
  const std::lock_guard lock(mutex_);
  (void)History(path);
  const int file = DiskCalls::Create(path, mode);
  if (file < 0) return file;
  unflushed_.insert(NodeOf(file));
  History(path).push_back(NodeOf(file));
  Check("create");
  return file;
}

ssize_t PowerCut::Write(int file, ByteView bytes, std::uint64_t offset) {
  const std::lock_guard lock(mutex_);
  unflushed_.insert(NodeOf(file));
  const ssize_t written = DiskCalls::Write(file, bytes, offset);
  Check("write");
  return written;
}

int PowerCut::Truncate(int file, std::uint64_t size) {
  const std::lock_guard lock(mutex_);
  unflushed_.insert(NodeOf(file));
  const int result = DiskCalls::Truncate(file, size);
  Check("truncate");
  return result;
}

int PowerCut::Flush(int file) {
  const std::lock_guard lock(mutex_);
  ++flushes_;
  unflushed_.erase(NodeOf(file));
  Check("flush");
  return 0;
}

int PowerCut::FlushFileSystem(const std::string& /*directory*/) {
  const std::lock_guard lock(mutex_);
  ++flushes_;
  unflushed_.clear();
  for (auto& [path, history] : names_) history = {history.back()};
  Check("flush all");
  return 0;
}

int PowerCut::FlushDirectory(const std::string& directory) {
  const std::lock_guard lock(mutex_);
  ++flushes_;
  for (auto& [path, history] : names_) {
    if (path.substr(0, path.rfind('/')) == directory) history = {history.back()};
  }
  Check("flush directory");
  return 0;
}

int PowerCut::Moved(const std::string& from, const std::string& to, int result) {
  if (result == 0) {
    const Node node = NodeAt(to);
    History(to).push_back(node);
    names_[from].push_back(0);
    Check("rename");
  }
  return result;
}

int PowerCut::Rename(const std::string& from, const std::string& to) {
  const std::lock_guard lock(mutex_);
  (void)History(from);
  (void)History(to);
  return Moved(from, to, DiskCalls::Rename(from, to));
}

int PowerCut::RenameKeeping(const std::string& from, const std::string& to) {
  const std::lock_guard lock(mutex_);
  if (refusals-- > 0) {
    errno = EXDEV;
    return -1;
  }
  (void)History(from);
  (void)History(to);
  return Moved(from, to, DiskCalls::RenameKeeping(from, to));
}

int PowerCut::Unlink(const std::string& path) {
  const std::lock_guard lock(mutex_);
  (void)History(path);
  const int result = DiskCalls::Unlink(path);
  if (result == 0) History(path).push_back(0);
  Check("unlink");
  return result;
}

}  // namespace ts5::test
