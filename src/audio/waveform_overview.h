// The outline of an audio file, for the picture behind the position slider.
#pragma once

#include "frame/player_control.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

inline constexpr std::size_t kOverviewParts = 1200;

// The peaks of so many equal parts of the source, over all channels. A source that does not know its length
// has none: WrongFormat. Also ReadFailed, Cancelled.
[[nodiscard]] Result<Waveform> OverviewOf(PcmSource& source, std::size_t parts = kOverviewParts,
                                          const WorkWatch& watch = {});

}  // namespace ts5
