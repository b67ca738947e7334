// The files of a directory tree, depth first: those of a directory by name, then those of its subdirectories.
// Directories are read as they are reached, so that the first files come at once.
#pragma once

#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "search/melody_query.h"

namespace ts5 {

class DirectoryWalk {
 public:
  explicit DirectoryWalk(std::string root, CancelCheck cancelled = {});

  // Everything that is no directory. Directories that cannot be read are passed over; one that links and
  // mounts reach again is visited once.
  [[nodiscard]] std::optional<std::string> Next();

 private:
  void Enter(const std::string& directory);

  CancelCheck cancelled_;
  std::vector<std::string> files_;                             // of the current directory, the next one last
  std::vector<std::string> directories_;                       // still to visit, the next one last
  std::set<std::pair<std::uint64_t, std::uint64_t>> visited_;  // device, inode
};

}  // namespace ts5
