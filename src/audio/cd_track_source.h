// A track of an audio CD as samples, read digitally from its drive.
#pragma once

#include <memory>

#include "frame/cd_tracks.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/media/pcm_stream.h"

namespace ts5 {

// Keeps the drive for itself as long as it lives. InUse: another run has the drive. CdDriveFailed: it holds
// no disc, or none with that track as audio. Cancelled while the drive gets the disc ready.
[[nodiscard]] Result<std::unique_ptr<PcmSource>> OpenCdTrack(const CdTrackPlace& place,
                                                             const CancelCheck& cancelled = {});

}  // namespace ts5
