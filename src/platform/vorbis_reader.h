// Ogg Vorbis by the reference decoder: exact in its number of frames and in every place that is sought.
#pragma once

#include <memory>

#include "platform/input_file.h"
#include "platform/media_reader.h"
#include "platform/outcome.h"

namespace ts5 {

// Whether a file begins as an Ogg stream.
[[nodiscard]] bool IsOgg(const InputFile& file);

// WrongFormat: an Ogg stream of another codec, or damaged before its first sample. ReadFailed, OutOfMemory.
[[nodiscard]] Result<std::unique_ptr<MediaReader>> OpenVorbis(InputFile file);

}  // namespace ts5
