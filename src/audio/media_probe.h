// Tells what kind of audio a file holds, in which format, and how long its data are.
#pragma once

#include <string>

#include "audio/probed_media.h"

namespace ts5 {

// What cannot be opened or read, and what is no audio, is of the kind None. Any thread.
[[nodiscard]] MediaProbe ProbeMedia(const std::string& path);

}  // namespace ts5
