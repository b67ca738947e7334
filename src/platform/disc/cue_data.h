// The cue sheet as a recorder takes it before a disc is written at once (MMC, SEND CUE SHEET): entries of
// eight bytes that say which control bits, index and data belong to which time.
#pragma once

#include <optional>

#include "platform/base/bytes.h"
#include "platform/disc/disc_layout.h"

namespace ts5 {

struct CueOptions {
  bool copyProtected = false;  // the SCMS byte of each entry
  bool cdText = false;         // the lead-in's sub-channel is sent too
};

// The layout's cue sheet: catalogue number, lead-in, of each track its ISRC, its pause if it has one and its
// start, lead-out. A track without a pause begins where the one before it ends.
[[nodiscard]] Bytes MakeCueData(const DiscLayout& layout, const CueOptions& options);

struct CueData {
  DiscLayout layout = {};
  bool copyProtected = false;
  bool cdText = false;
};
// What a strict recorder makes of such a sheet; nothing when one entry is out of order, contradicts another,
// or is not for audio.
[[nodiscard]] std::optional<CueData> ParseCueData(ByteView bytes);

}  // namespace ts5
