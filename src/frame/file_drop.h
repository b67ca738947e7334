// Files dropped on the free file list: which names become entries, and what the user is told.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/cd_tracks.h"
#include "frame/file_list.h"
#include "frame/filter_id.h"
#include "platform/base/strings.h"

namespace ts5 {

// A text for a message box, filled in, with the row that it was made from.
struct UserMessage {
  TextId id;
  std::string text;
};

struct DropEnvironment {
  // The name of the drive that a .cda file lies on; nothing when that is no disc drive.
  std::function<std::optional<DriveName>(const std::string& path)> driveOf;
  // Playing time in units of 100 ns, 0 when it is not known. Asked for the burner only.
  std::function<std::uint64_t(const FileListEntry& entry)> durationOf;
};

struct DropResult {
  std::size_t added = 0;
  std::size_t rejected = 0;           // each of them with a beep
  std::vector<UserMessage> messages;  // in the order in which they are shown
};

// Appends the dropped files, and tracks by their entries, in their order. Not taken, and counted as rejected:
// files of a type that is not supported, directories, paths that are too long, score files for the burner,
// .cda files without a drive. A burner list takes at most kMaxBurnerEntries; the first file too many ends the
// adding.
[[nodiscard]] DropResult DropFiles(FreeFileList& list, FilterId filter, const std::vector<std::string>& paths,
                                   const DropEnvironment& environment);

// The message for a drop outside the free file list, or while it is hidden.
[[nodiscard]] UserMessage DropWithoutList();

}  // namespace ts5
