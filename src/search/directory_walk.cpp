#include "search/directory_walk.h"

#include <sys/stat.h>

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

bool ComesLater(const std::string& a, const std::string& b) {
  const auto order = CompareIgnoringCase(a, b);
  return order == 0 ? a > b : order > 0;
}

}  // namespace

DirectoryWalk::DirectoryWalk(std::string root, CancelCheck cancelled) : cancelled_(std::move(cancelled)) {
  directories_.push_back(std::move(root));
}

std::optional<std::string> DirectoryWalk::Next() {
  while (files_.empty() && !directories_.empty()) {
    if (cancelled_ && cancelled_()) return std::nullopt;
    const std::string directory = std::move(directories_.back());
    directories_.pop_back();
    Enter(directory);
  }
  if (files_.empty()) return std::nullopt;
  std::string file = std::move(files_.back());
  files_.pop_back();
  return file;
}

void DirectoryWalk::Enter(const std::string& directory) {
  struct stat status {};
  if (::stat(directory.c_str(), &status) != 0 || !visited_.emplace(status.st_dev, status.st_ino).second)
    return;
  std::vector<std::string> subdirectories;
  std::error_code error;
  for (std::filesystem::directory_iterator entry(directory, error), end; !error && entry != end;
       entry.increment(error)) {
    if (cancelled_ && cancelled_()) return;
    std::error_code unknown;
    const bool isDirectory = entry->is_directory(unknown);
    (isDirectory ? subdirectories : files_).push_back(JoinPath(directory, entry->path().filename().string()));
  }
  std::ranges::sort(files_, ComesLater);
  std::ranges::sort(subdirectories, ComesLater);
  directories_.insert(directories_.end(), std::make_move_iterator(subdirectories.begin()),
                      std::make_move_iterator(subdirectories.end()));
}

}  // namespace ts5
