// Ogg Vorbis by the reference decoder: exact in its number of frames and in every place that is sought.
#pragma once

#include <memory>

#include "platform/base/outcome.h"
#include "platform/files/input_file.h"
#include "platform/media/media_reader.h"

namespace ts5 {

// Whether a file begins as an Ogg stream of this codec, or of none that can be told.
[[nodiscard]] bool IsOggVorbis(const InputFile& file);

// Streams that follow the first one in the file come in its sample rate and number of channels. SourceFailed:
// it ends before its headers; WrongFormat: no Vorbis, or with damaged headers. ReadFailed, OutOfMemory.
[[nodiscard]] Result<std::unique_ptr<MediaReader>> OpenVorbis(InputFile file);

}  // namespace ts5
