// ReplayGain: how much louder or softer a track and its album are to be played so that all sound alike.
// Version 2.0: measured as in EBU R 128, for a level of -18 LUFS.
#pragma once

#include <cstddef>
#include <optional>
#include <string_view>
#include <vector>

#include "audio/loudness.h"
#include "audio/tags/attribute.h"
#include "platform/base/outcome.h"

namespace ts5 {
class Run;
}

namespace ts5::encode {

// Nothing where there is nothing to measure: silence, very short sounds, files that cannot be read.
struct TrackGain {
  std::optional<Loudness> track = {};
  std::optional<Loudness> album = {};
};

// The sources of the run in their order, measured on all cores. Those of one album title, or of one directory
// where they say none, are an album. job: holds before what a source says of itself. Cancelled.
[[nodiscard]] Result<std::vector<TrackGain>> MeasureGains(Run& run, const tags::Attributes& job);

// As files keep it: REPLAYGAIN_TRACK_GAIN "-3.21 dB", REPLAYGAIN_TRACK_PEAK "0.987654" and the same of the
// album; Opus has R128_TRACK_GAIN and R128_ALBUM_GAIN instead (RFC 7845: 1/256 dB, for -23 LUFS).
[[nodiscard]] tags::Attributes GainAttributes(const TrackGain& gain, std::string_view extension);

}  // namespace ts5::encode
