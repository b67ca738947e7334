// What audio files are, told without a decoder and by few looks: of uncompressed wave and AIFF files, and of
// MPEG layer III files whose first frame says how long they are. It is what the decoders would tell.
#pragma once

#include <optional>

#include "audio/probed_media.h"
#include "audio/wave_file.h"
#include "platform/files/input_file.h"

namespace ts5 {

// Nothing: only a decoder can tell, if any.
[[nodiscard]] std::optional<MediaProbe> QuickProbe(InputFile file);
// Of an opened wave or AIFF file; nothing when its samples are compressed.
[[nodiscard]] std::optional<MediaProbe> ProbeSamples(MediaKind kind, const WaveFile& wave);

}  // namespace ts5
