// A few bars of the track in which a hit lies, cut out of its MIDI file: for those who want to see the place
// and nothing else of a long file.
#pragma once

#include <cstddef>

#include "frame/search_hit.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

// A MIDI file of format 1 that begins with the bar of the hit: the notes of its track, with time signature
// and key as they are there. What sounds on behind its end is cut off. notes: how many the melody has. Codes
// of FindHitPassage.
[[nodiscard]] Result<Bytes> MidiExcerpt(ByteView file, const SearchHit& hit, std::size_t notes,
                                        std::size_t bars);

}  // namespace ts5
