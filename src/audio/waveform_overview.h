// The outline of an audio file, for the picture behind the position slider.
#pragma once

#include "frame/player_control.h"
#include "platform/outcome.h"
#include "platform/pcm_stream.h"
#include "platform/work_watch.h"

namespace ts5 {

inline constexpr std::size_t kOverviewParts = 1200;

// The peaks of so many equal parts of the source, over all channels. A source that does not know its length
// has none: WrongFormat. Also ReadFailed, Cancelled.
[[nodiscard]] Result<Waveform> OverviewOf(PcmSource& source, std::size_t parts = kOverviewParts,
                                          const WorkWatch& watch = {});

}  // namespace ts5
