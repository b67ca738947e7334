// What becomes of a registry file that is damaged: it is kept beside, and a sound one takes its place.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <string>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/store/registry_salvage.h"

namespace ts5 {

inline constexpr std::uint64_t kMaxRegistryFile = std::uint64_t{256} << 20;  // a longer one is not searched

// The new name of a file that makes room for a new one.
[[nodiscard]] Result<std::string> SetRegistryAside(const std::string& path);
// Puts a sound file of the rows in the place of a damaged one, in one step; where that is kept.
[[nodiscard]] Result<std::string> MendRegistry(const std::string& path, const std::vector<RegistryRow>& rows);

// What tells one state of a file from the next.
class FileState {
 public:
  explicit FileState(const std::string& path) {
    if (::stat(path.c_str(), &state_) != 0) state_ = {};
  }
  bool operator==(const FileState& other) const {
    return state_.st_dev == other.state_.st_dev && state_.st_ino == other.state_.st_ino &&
           state_.st_mtim.tv_sec == other.state_.st_mtim.tv_sec &&
           state_.st_mtim.tv_nsec == other.state_.st_mtim.tv_nsec;
  }

 private:
  struct stat state_ {};
};

}  // namespace ts5
