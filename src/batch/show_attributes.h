// "ts5-batch attributes": what audio files say about their music, and changing it.
#pragma once

#include <string>

#include "audio/tags/attribute.h"
#include "batch/commands.h"
#include "platform/base/outcome.h"

namespace ts5::batch {

// What a file is beside what it says, as FileInfoWith() tells it; needed for --json alone. Called on several
// threads.
using FileInfoReader = Result<tags::Attributes> (*)(const std::string& path,
                                                    const tags::Attributes& attributes);
int ShowAttributes(CommandLine line, Console& console, FileInfoReader info);

}  // namespace ts5::batch
