// Which staff a note stands on, and under which clef.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/base/work_watch.h"

namespace ts5::transcribe {

struct HandNote {
  double start = 0;  // quarter notes
  double end = 0;
  std::uint8_t key = 0;
};

// Whether the music of one part needs two staves: high and low notes at the same time. keyboard: an
// instrument that is written so anyway.
[[nodiscard]] bool NeedsTwoStaves(std::span<const HandNote> notes, bool keyboard);

// True for the notes of the lower staff. What one hand can reach stays together, the border between the hands
// moves as little as it must (Viterbi over the places where notes begin). notes by start. Work that is told
// to stop leaves all in the upper one.
[[nodiscard]] std::vector<bool> LowerHand(std::span<const HandNote> notes, const CancelCheck& cancelled = {});

// The clefs (kClefG, kClefC, kClefF) of a staff, one for each bar, from the keys in it. A change costs
// something, so clefs stay. viola: the alto clef may be used.
[[nodiscard]] std::vector<std::uint8_t> ChooseClefs(std::span<const std::vector<std::uint8_t>> keysOfBars,
                                                    bool viola);

}  // namespace ts5::transcribe
