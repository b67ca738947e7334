// A MIDI file as the filters that convert MIDI files take it: looked at and read with one opening.
#pragma once

#include <memory>
#include <string>

#include "frame/item_run.h"
#include "midi/midi_file.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/files/files.h"

namespace ts5 {

struct MidiItem : PreparedItem {
  Bytes file;  // whole
  MidiFileKind kind = MidiFileKind::None;
};

// A file that is none is refused by its first bytes, however long it is: WrongFormat. SourceFailed;
// ReadFailed, also of one that is longer than limit; OutOfMemory.
[[nodiscard]] Result<std::unique_ptr<PreparedItem>> OpenMidiItem(const std::string& source,
                                                                 std::uint64_t limit = kMaxFileInMemory);

}  // namespace ts5
