// Changes between format 1 (many tracks) and format 0 (one track) of plain Standard MIDI Files.
//
// Codes of both: DamagedMidi (no "MThd", a chunk that is no track, a track that breaks off, a distance
// between two events that no delta time can say), ReadFailed (the file ends before its last track),
// Cancelled.
#pragma once

#include <string>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

// All events in one track, in the order of MergedEvents, channel messages with their status byte. The file
// ends with its last event: the times at which the tracks ended are not kept.
[[nodiscard]] Result<Bytes> MergeTracksToFormat0(ByteView file, const WorkWatch& watch = {});

// A first track with all meta and system exclusive events, then one for each channel that occurs. A file that
// says format 0 and yet has several tracks is merged first, so that nothing of it is lost.
[[nodiscard]] Result<Bytes> SplitChannelsToFormat1(ByteView file, const WorkWatch& watch = {});

}  // namespace ts5
