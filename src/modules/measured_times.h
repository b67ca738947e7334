// The playing times of files: each is measured once, as long as it stays as it is.
#pragma once

#include <cstdint>

#include "frame/file_list.h"

namespace ts5 {

// In units of 100 ns; 0 when it is not known. entry: a file, no track of a disc.
[[nodiscard]] std::uint64_t MeasuredTime(const FileListEntry& entry);

}  // namespace ts5
