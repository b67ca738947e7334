// What can be undone of a run, noted in its folder: while nobody has begun to, with the job that the run was
// of, so that the program still can after its next start; and before an undo moves anything, so that the
// program goes on with one that was cut.
//
//   magic, of a run that is kept: its job (registry, number of 4 bytes, title)
//   number of items (4 bytes), then of each: flags and directories (1 byte), path, name of the kept file,
//   mark
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/files/file_mark.h"

namespace ts5 {

// A file that the run has made.
struct UndoItem {
  std::string path;  // behind all links
  FileMark made;
  std::string kept = {};  // the file that was replaced; "" none
  bool copied = false;
  bool notKept = false;
  bool removed = false;  // what was made has gone
  bool done = false;
  std::uint8_t newDirectories = 0;  // above it, which came into being for it
};

// The job that a run was of, as it is found again in another session.
struct UndoOwner {
  std::string registry;
  std::uint32_t number = 0;  // among all jobs; 0: the default job
  std::string title;
  bool operator==(const UndoOwner&) const = default;
};

struct UndoNotes {
  std::optional<UndoOwner> owner = {};  // of a run that is kept; without: its undo has begun
  std::vector<UndoItem> items = {};
};

// Of all that is not done.
[[nodiscard]] Bytes NotesOf(std::span<const UndoItem> items, const std::optional<UndoOwner>& owner);
// Such notes, with kept files in that folder. Nothing when they are not whole, or name other places.
[[nodiscard]] std::optional<UndoNotes> ReadNotes(ByteView notes, const std::string& folder);

}  // namespace ts5
