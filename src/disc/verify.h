// A burnt disc read back and compared with what was sent.
#pragma once

#include <cstdint>
#include <span>

#include "disc/disc_plan.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {

struct DiscComparison {
  // Success: all is the same. NotProven: it is another. ReadFailed: the disc cannot be read there.
  // SourceFailed: what was sent cannot be read any more. Cancelled.
  Outcome outcome = Outcome::Success;
  std::int32_t sector = 0;  // the first that is another, or cannot be read
};

// Compares all that was sent: where tracks begin, their codes, every sample. Drives that write and read a few
// samples beside the place are compensated.
[[nodiscard]] DiscComparison CompareDisc(CdDrive& drive, const DiscLayout& layout,
                                         std::span<const ProjectTrack> tracks, const RecordingMode& mode,
                                         const WorkWatch& watch);

}  // namespace ts5::disc
