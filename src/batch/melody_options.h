// The melodies of a search on the command line.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "batch/arguments.h"
#include "frame/job.h"
#include "platform/store/registry.h"

namespace ts5::batch {

struct MelodyOptions {
  std::vector<std::string> numbers;  // "60:240,r:120"
  std::vector<std::string> stored;   // names of stored melodies
  std::vector<std::string> keys;     // keys of the note editor

  // How the melodies are called, in the order in which TakeMelody takes them.
  [[nodiscard]] std::vector<std::string> Names() const;
};

void AddMelodyOptions(Arguments& arguments, MelodyOptions& options);
// Puts the melodies into the job of a search: all are looked for in one pass, and each has a name, its own or
// the text that it was given as. The text of what is wrong with it; nothing when all is well or no
// melody is named.
[[nodiscard]] std::optional<std::string> TakeMelody(const MelodyOptions& options, Registry& registry,
                                                    Job& job);

}  // namespace ts5::batch
