// When the bars of a score begin as it is played, repeats and all, in the score's own time.
#pragma once

#include <chrono>
#include <vector>

#include "platform/base/work_watch.h"
#include "score/score_midi.h"

namespace ts5 {

inline constexpr std::size_t kMostBarTimes = 20'000;  // the bars behind these are left out

// By a walk of the engine without sound; none lies behind the first note of its bar. What is damaged ends it.
[[nodiscard]] std::vector<std::chrono::nanoseconds> BarTimes(const OpenScore& score,
                                                             const PlaybackParameters& parameters,
                                                             bool repeats, const CancelCheck& cancelled = {});

}  // namespace ts5
