// The registry as the commands use it: opened, and what went wrong said.
#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "batch/console.h"
#include "platform/store/registry.h"

namespace ts5::batch {

// Nothing when it cannot be opened; this, or that the file was damaged, is said on err.
[[nodiscard]] std::optional<Registry> OpenRegistry(Console& console,
                                                   RegistryAccess access = RegistryAccess::ReadOnly);

// A key of a command line: with a root at its start as it stands, else below the settings key; "." and ""
// are the settings key itself. Nothing for a text that is no key.
[[nodiscard]] std::optional<std::string> KeyOf(std::string_view text);

}  // namespace ts5::batch
