// Audio files by the decoders of FFmpeg, those that the system takes and no others.
#pragma once

#include <memory>
#include <string>

#include "platform/base/outcome.h"
#include "platform/files/input_file.h"
#include "platform/media/media_reader.h"

namespace ts5 {

// name: that of the file; it helps to tell its kind. WrongFormat: no audio that is supported. ReadFailed,
// OutOfMemory. Any thread.
[[nodiscard]] Result<std::unique_ptr<MediaReader>> OpenWithFfmpeg(InputFile file, const std::string& name);

}  // namespace ts5
