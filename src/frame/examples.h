// The demo files that come with the program. They are shown as the user's own copies, as filters write beside
// their sources.
#pragma once

#include <string>

#include "platform/base/outcome.h"

namespace ts5 {

// Puts what is not there yet into a folder "Stavora-Beispiele" below the given one, and gives its path.
// SourceFailed: there are no demo files; else what writing them met.
[[nodiscard]] Result<std::string> PutExamples(const std::string& demo, const std::string& below);

}  // namespace ts5
