// Where the pause before a track begins: the table of contents does not say it, the sub-channel does.
#pragma once

#include <cstdint>
#include <optional>

#include "platform/disc/cd_drive.h"

namespace ts5::disc {

// By bisection between the start of the track before and of this one: at each probe the drive plays and says
// where it is. Sectors of the pause, 0 when there is none; nothing when the drive cannot answer, or when it
// was cancelled between two probes. The drive is mute meanwhile.
[[nodiscard]] std::optional<std::uint32_t> FindPause(CdDrive& drive, const DiscToc& toc, int track,
                                                     const CancelCheck& cancelled = {});

}  // namespace ts5::disc
