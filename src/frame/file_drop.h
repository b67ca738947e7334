// Files dropped on the free file list: which names become entries, and what the user is told.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/file_list.h"
#include "frame/filter_id.h"
#include "platform/strings.h"

namespace ts5 {

// A text for a message box, filled in, with the row that it was made from.
struct UserMessage {
  TextId id;
  std::string text;
};

// The two name fields of a disc drive, e.g. "PLEXTOR" and "CD-R PX-W1610A".
struct DriveName {
  std::string vendor;
  std::string product;
};

// The texts of CD track entries. '.' and ':' of the drive's names become blanks, so that the entry is known
// as a track again when it is read back.
[[nodiscard]] std::string CdTrackEntry(const DriveName& drive, int track);  // "... \Track 3"
[[nodiscard]] std::string CdTrackEntry(const DriveName& drive,
                                       std::string_view trackName);  // "... \Track 03"
// "Track03.cda" -> 3; nothing when the name ends in no track number from 1 to 99.
[[nodiscard]] std::optional<int> TrackNumberOf(std::string_view cdaName);

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

// Appends the dropped files in their order. Not taken, and counted as rejected: files of a type that is not
// supported, directories, paths that are too long, score files for the burner, .cda files without a drive. A
// burner list takes at most kMaxBurnerEntries; the first file too many ends the adding.
[[nodiscard]] DropResult DropFiles(FreeFileList& list, FilterId filter, const std::vector<std::string>& paths,
                                   const DropEnvironment& environment);
// The same for entries that were made elsewhere: items dragged over from the directory view.
[[nodiscard]] DropResult DropEntries(FreeFileList& list, FilterId filter, std::vector<FileListEntry> entries,
                                     const DropEnvironment& environment);

// The message for a drop outside the free file list, or while it is hidden.
[[nodiscard]] UserMessage DropWithoutList();

}  // namespace ts5
