// Monkey's Audio files without a single sample, which the decoder library refuses.
#pragma once

#include <memory>

#include "platform/files/input_file.h"
#include "platform/media/media_reader.h"

namespace ts5 {

// Nothing when the file is none, or has samples, or belongs to a version before 3.98.
[[nodiscard]] std::unique_ptr<MediaReader> OpenEmptyApe(const InputFile& file);

}  // namespace ts5
