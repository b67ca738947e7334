// The directories of the program: what it writes, what it is set up with, what was installed with it.
#pragma once

#include <string>

namespace ts5 {

// $HOME, else what the system's user table says, else "/".
[[nodiscard]] std::string HomeDirectory();
// $XDG_CONFIG_HOME/stavora-ts5, by default ~/.config/stavora-ts5. It may not exist yet.
[[nodiscard]] std::string ConfigurationDirectory();
// The program directory as far as the program writes to it: $XDG_DATA_HOME/stavora-ts5, by default
// ~/.local/share/stavora-ts5. It may not exist yet.
[[nodiscard]] std::string ProgramDirectory();
// What the program only reads: PREFIX/share/stavora-ts5 beside PREFIX/bin of the running program, and the
// resources of the source tree for a program that is not installed.
[[nodiscard]] std::string InstalledDirectory();
// The demo files that were installed, or those of the source tree; "" when there are none.
[[nodiscard]] std::string DemoDirectory();

}  // namespace ts5
