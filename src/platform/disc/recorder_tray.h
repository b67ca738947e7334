// What is in the virtual recorder: a disc, which is a directory of files, and whether its tray is out. That
// outlives the program and is shared by all its processes.
#pragma once

#include <sys/types.h>

#include <cstdint>
#include <string>

#include "platform/base/outcome.h"

namespace ts5 {

// The directory that stands for the drive, below ProgramDirectory().
[[nodiscard]] std::string VirtualRecorderDirectory();

struct RecorderTray {
  std::string disc = {};  // the directory; "" for none
  bool open = false;
};
[[nodiscard]] RecorderTray ReadRecorderTray();
[[nodiscard]] Outcome WriteRecorderTray(const RecorderTray& tray);

// When the tray last changed; two changes never have the same mark, as each makes a new file.
struct TrayMark {
  ino_t file = 0;
  std::int64_t nanoseconds = 0;
  bool operator==(const TrayMark&) const = default;
};
[[nodiscard]] TrayMark MarkOfTray();

// Puts a new blank disc into the drive, in the place of the one that is in it; that one's files stay where
// they are. InUse: the drive is at work, or there is a disc in the directory already; TargetFailed,
// WriteFailed.
[[nodiscard]] Outcome InsertBlankDisc(const std::string& directory, int minutes, bool rewritable);
// Puts in a disc that was written before. SourceFailed, WrongFormat: as RecordedDisc::Load; InUse.
[[nodiscard]] Outcome InsertRecordedDisc(const std::string& directory);

}  // namespace ts5
