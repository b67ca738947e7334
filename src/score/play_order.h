// The way through a score: its bars in the order in which they are played, with repeats, endings and the
// words of jumps followed.
#pragma once

#include <cstdint>
#include <vector>

#include "score/score_bars.h"

namespace ts5 {

struct PlayedBar {
  std::uint32_t bar = 0;   // index into ScoreMusic::bars
  std::uint32_t pass = 1;  // of the repeated section, for the verses of songs
};

// Without repeats every bar comes once, in order. A score that would go on beyond kMaxPlayedBars stops there.
inline constexpr std::size_t kMaxPlayedBars = 200'000;
[[nodiscard]] std::vector<PlayedBar> PlayOrder(const ScoreMusic& music, bool repeats = true);

}  // namespace ts5
