// The directory of each drive that was shown last, so that a drive that is chosen again is where it was left.
// They are kept as one text of the settings, without letters: drives may get other ones.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/disc/volumes.h"

namespace ts5 {

// kept with this directory as that of its drive.
[[nodiscard]] std::string WithDirectory(std::string_view kept, std::string_view directory,
                                        const VolumeTable& volumes);
// That of a drive; nothing when it has none, or it has gone.
[[nodiscard]] std::optional<std::string> DirectoryOn(std::string_view kept, int drive,
                                                     const VolumeTable& volumes);

}  // namespace ts5
