// What drawings say to who plays: jumps and tempos.
#pragma once

#include <cstdint>

#include "score/score_document.h"

namespace ts5 {

// What a drawing says of the way through the score, by its sign or by its text ("D.C. al Fine").
struct JumpMark {
  std::uint8_t jumps = 0;  // kJump...
  bool toFine = false;
  bool toCoda = false;
};
[[nodiscard]] JumpMark JumpOf(const DrawingItem& drawing);

// The tempo that a drawing sets (sign "tempo"), 0 none. words: quarters a minute ("96"), or a note value, its
// dots and how many a minute ("half.=60").
[[nodiscard]] double TempoOf(const DrawingItem& drawing);

}  // namespace ts5
