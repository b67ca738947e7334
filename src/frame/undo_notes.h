// What an undo sets out to do, noted in its folder before it moves anything: so the program goes on with one
// that was cut when it starts the next time.
//
//   magic, number of items (4 bytes), then of each: flags (1 byte), path, name of the kept file, mark
#pragma once

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
};

// Of all that is not done.
[[nodiscard]] Bytes NotesOf(std::span<const UndoItem> items);
// The items of such notes, with kept files in that folder. Nothing when they are not whole, or name other
// places.
[[nodiscard]] std::optional<std::vector<UndoItem>> ReadNotes(ByteView notes, const std::string& folder);

}  // namespace ts5
