// What an audio file is, as attributes that cannot be written (quick_file_info.h), whoever can tell it.
#pragma once

#include <string>

#include "audio/tags/attribute.h"
#include "platform/base/outcome.h"

namespace ts5 {

// SourceFailed: the file cannot be opened. WrongFormat: no audio.
[[nodiscard]] Result<tags::Attributes> ReadFileInfo(const std::string& path);
// The same of a file whose attributes have been read already.
[[nodiscard]] Result<tags::Attributes> FileInfoWith(const std::string& path,
                                                    const tags::Attributes& attributes);

}  // namespace ts5
