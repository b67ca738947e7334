// How long an entry of the burner's list plays.
#pragma once

#include <cstdint>

#include "frame/file_list.h"

namespace ts5 {

// Of a track of an audio CD, a MIDI file or any audio file, in units of 100 ns; 0 when it cannot be told.
// Reads the file, or asks the drive.
[[nodiscard]] std::uint64_t PlayingTimeOf(const FileListEntry& entry);

}  // namespace ts5
