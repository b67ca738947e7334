// Which player sounds a file.
#pragma once

#include "frame/file_list.h"
#include "frame/filter_id.h"

namespace ts5 {

// None for what no player takes.
[[nodiscard]] FilterId PlayerOf(const FileListEntry& entry);

}  // namespace ts5
