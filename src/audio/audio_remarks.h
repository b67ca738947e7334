// What the results dialogs of the audio filters say for each outcome code.
#pragma once

#include <span>

#include "frame/remarks.h"

namespace ts5 {

// The codes that the audio filters share; the first row of a code counts, so a filter puts its own before
// them.
[[nodiscard]] std::span<const Remark> AudioRemarks();
// Those of the wave converter: whatever keeps a conversion from beginning reads the same.
[[nodiscard]] std::span<const Remark> WaveConverterRemarks();

}  // namespace ts5
