// Tells whether a file is still the one that was looked at, whatever it is called by now: a file that is
// renamed keeps its mark, one that is written or replaced does not.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "platform/files/files.h"

namespace ts5 {

struct FileMark {
  FileIdentity identity = {};
  std::uint64_t size = 0;
  std::int64_t written = 0;  // nanoseconds since 1970
  bool operator==(const FileMark&) const = default;
};

// Of the file behind all links; nothing when there is none.
[[nodiscard]] std::optional<FileMark> MarkOf(const std::string& path);
// The file of a directory that has the mark. One that is not in its place yet is none.
[[nodiscard]] std::optional<std::string> FindMarked(const std::string& directory, const FileMark& mark);

}  // namespace ts5
