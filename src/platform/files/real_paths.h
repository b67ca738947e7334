// Where paths lead: from the current directory on, and behind links. Native paths, '/' separates.
#pragma once

#include <optional>
#include <string>

namespace ts5 {

// The path from the root on, so that it means the same in every directory. "." and separators that say
// nothing are taken off, at the end too; what ".." leads to is left to the file system, which may have a link
// there.
[[nodiscard]] std::string FullPath(const std::string& path);

// Where the links of the last name lead in the end, also when nothing is there yet; a path that is no link
// leads to itself. Nothing when they go round in a circle or cannot be read.
[[nodiscard]] std::optional<std::string> BehindLinks(std::string path);

}  // namespace ts5
