// What an audio file is, as attributes that cannot be written.
#pragma once

#include <string>

#include "audio/tags/attribute.h"
#include "platform/base/outcome.h"

namespace ts5 {

// "FileSize" (bytes), "Duration" (100 nanoseconds), "Bitrate" (bits per second, the mean), "HasAudio",
// "HasVideo", "Seekable", then what the file itself says and does not let change. SourceFailed: the file
// cannot be opened. WrongFormat: no audio.
[[nodiscard]] Result<Attributes> ReadFileInfo(const std::string& path);
// The same of a file whose attributes have been read already.
[[nodiscard]] Result<Attributes> FileInfoWith(const std::string& path, const Attributes& attributes);

}  // namespace ts5
