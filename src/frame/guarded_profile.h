// The head that the profile files written by the program share: a line, and a warning not to edit the file by
// hand.
#pragma once

#include <string_view>

#include "platform/store/profile.h"

namespace ts5 {

// Into the section, which begins the file.
void WriteGuard(Profile& profile, std::string_view section);
// A file without the warning is none of the program's own.
[[nodiscard]] bool HasGuard(const Profile& profile, std::string_view section);

}  // namespace ts5
