// Where the desktop keeps music. A file of its own: it is the one directory for which Qt is asked.
#pragma once

#include <string>

namespace ts5 {

// ~/Musik, or as the user's desktop has it; "" when there is no such directory, or it is the home directory.
[[nodiscard]] std::string MusicDirectory();

}  // namespace ts5
