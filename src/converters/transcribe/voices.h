// The voices of a staff: which notes make one line.
//
// Notes that begin together and end together are a chord. Chords that overlap need voices of their own; which
// goes to which is found by the cheapest of many ways through the whole staff (beam search): lines move
// little, upper voices lie higher, a staff has one voice where one is enough and two where it must, and more
// only where nothing else holds the notes.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "converters/transcribe/quantise.h"

namespace ts5::transcribe {

inline constexpr std::size_t kMostVoices = 4;

struct StaffNote {
  std::int64_t place = 0;  // in units
  double length = 0;       // as it seems to be written, units
  std::uint8_t key = 0;
};

// The voice of each note, 0 the highest. notes by place, then key.
// Work that is told to stop leaves all in the first one.
[[nodiscard]] std::vector<std::uint8_t> SeparateVoices(std::span<const StaffNote> notes, const Timing& timing,
                                                       const CancelCheck& cancelled = {});

}  // namespace ts5::transcribe
