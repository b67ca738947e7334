// The real terminal: who watches, who answers, and Ctrl+C.
#pragma once

#include <optional>
#include <string>

#include "batch/console.h"

namespace ts5::batch {

// Makes Ctrl+C and a request to end from outside a flag that Interrupted() shows, so that the run can end in
// good order; however often they come, nothing is killed half-way. Call once, before any thread is started.
void CatchInterrupts();
[[nodiscard]] bool Interrupted();

// Standard input, output and error as they are.
[[nodiscard]] Console TerminalConsole();

}  // namespace ts5::batch
