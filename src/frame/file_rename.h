// Renaming the file of an entry: what the new label means, and the renaming itself.
#pragma once

#include <string>
#include <string_view>

#include "frame/file_list.h"
#include "frame/texts.h"
#include "platform/base/outcome.h"

namespace ts5 {

struct RenamePlan {
  enum class Kind : std::uint8_t {
    Nothing,  // the name stays: empty, the same but for case, or not a file
    Rename,
    Ask,      // texts::AskRenameUnsupported first, No as default
    Refused,  // the new name holds a separator or makes the path too long: texts::RenameFailed
  };
  Kind kind = Kind::Nothing;
  std::string newPath;
};

// What happens when the label of the file at path was edited to newName.
[[nodiscard]] RenamePlan PlanRename(std::string_view path, std::string_view newName);

// Renames on disk, never over another file, and gives the entry its new path. SourceFailed, TargetFailed: the
// message is texts::RenameFailed, and the list is unchanged.
[[nodiscard]] Outcome RenameEntry(FreeFileList& list, std::size_t index, const std::string& newPath);

}  // namespace ts5
