// Changing the ticks per quarter note of a MIDI file in any container.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5 {

// Every event moves to its absolute tick times newDivision / old division, rounded toward zero, so that
// errors do not add up. Factor and product are formed in single precision as far as that holds whole numbers
// (2^24 ticks), beyond that exactly. Events keep their bytes. The container stays: a RIFF file becomes a form
// RMID with only its data chunk, a sequencer file loses its settings block.
//
// WrongFormat: no MIDI file, SMPTE or no division (old or new), a chunk that is no track, a track that breaks
// off, a distance between two events that no delta time can say. ReadFailed: the file ends before its last
// track. Cancelled, ChunkNotWritten.
[[nodiscard]] Result<Bytes> ChangeTimeBase(ByteView file, std::uint16_t newDivision,
                                           const WorkWatch& watch = {});

}  // namespace ts5
