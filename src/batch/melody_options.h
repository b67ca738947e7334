// The melody of a search on the command line.
#pragma once

#include <optional>
#include <string>

#include "batch/arguments.h"
#include "frame/job.h"
#include "platform/registry.h"

namespace ts5::batch {

struct MelodyOptions {
  std::optional<std::string> numbers;  // "60:240,r:120"
  std::optional<std::string> stored;   // the name of a stored melody
  std::optional<std::string> keys;     // the keys of the note editor

  [[nodiscard]] int Count() const { return numbers.has_value() + stored.has_value() + keys.has_value(); }
};

void AddMelodyOptions(Arguments& arguments, MelodyOptions& options);
// Puts the melody into the job of a search. The text of what is wrong with it; nothing when all is well or no
// melody is named.
[[nodiscard]] std::optional<std::string> TakeMelody(const MelodyOptions& options, Registry& registry,
                                                    Job& job);

}  // namespace ts5::batch
