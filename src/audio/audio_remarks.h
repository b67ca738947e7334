// What the results dialogs of the audio filters say for each outcome code.
#pragma once

#include <span>
#include <vector>

#include "frame/remarks.h"

namespace ts5 {

// A filter's own, and behind them those that the audio filters share: the first row of a code counts.
[[nodiscard]] std::vector<Remark> BeforeAudioRemarks(std::span<const Remark> own);
// Those of the wave converter: whatever keeps a conversion from beginning reads the same.
[[nodiscard]] std::span<const Remark> WaveConverterRemarks();

}  // namespace ts5
