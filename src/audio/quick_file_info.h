// What an audio file is, as attributes that cannot be written: "FileSize" (bytes), "Duration" (100
// nanoseconds), "Bitrate" (bits per second, the mean), "HasAudio", "HasVideo", "Seekable", then what the file
// itself says and does not let change.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "audio/probed_media.h"
#include "audio/tags/attribute.h"

namespace ts5 {

// own: what has been read of the file already.
[[nodiscard]] tags::Attributes FileInfoOf(const MediaProbe& probe, std::uint64_t size,
                                          const tags::Attributes& own);
// Nothing: only a decoder can tell (audio_file_info.h).
[[nodiscard]] std::optional<tags::Attributes> QuickFileInfo(const std::string& path,
                                                            const tags::Attributes& own);

}  // namespace ts5
