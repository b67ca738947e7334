// A burnt disc read back and compared with what was sent.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "disc/disc_plan.h"
#include "platform/base/work_watch.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {

// The first sector in which the disc is another than what was sent: a track that begins elsewhere, a code
// that is missing, a sample. Drives that write and read a few samples beside the place are compensated. The
// inner nothing: all is the same; the outer: cancelled.
[[nodiscard]] std::optional<std::optional<std::int32_t>> CompareDisc(CdDrive& drive, const DiscLayout& layout,
                                                                     std::span<const ProjectTrack> tracks,
                                                                     const RecordingMode& mode,
                                                                     const WorkWatch& watch);

}  // namespace ts5::disc
