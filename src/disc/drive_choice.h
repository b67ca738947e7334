// Which drives a disc run works with.
#pragma once

#include <string>

#include "frame/run.h"

namespace ts5::disc {

// The path of the drive that writes: by the name that the run was given, else the job's device among those
// that can write. "" when there is none.
[[nodiscard]] std::string RecorderPath(const Run& run);
// The path of the drive that is read: by the name that the run was given, else the job's source directory.
[[nodiscard]] std::string SourceDrivePath(const Run& run);

}  // namespace ts5::disc
