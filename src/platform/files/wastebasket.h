// The desktop's wastebasket, from which the user can take files back.
#pragma once

#include <string>

#include "platform/base/outcome.h"

namespace ts5 {

// SourceFailed: there is no such file. TargetFailed: it cannot be moved there; it stays where it is.
[[nodiscard]] Outcome MoveToTrash(const std::string& path);

}  // namespace ts5
