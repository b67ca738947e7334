// The end of the session: the question whether it ends, and saving what it changed.
#pragma once

#include <string>

#include "app/shell/desk.h"
#include "frame/jobs.h"

namespace ts5 {

class Application;

// Names the job that still runs, or tells how many do.
[[nodiscard]] std::string QuitQuestion(const Jobs& jobs);

// Saves what the session changed. Where that fails, the user decides what becomes of it; false: the program
// is not to end. Not attended, when nobody may be there to answer: it goes to a file beside, which is told on
// the standard error stream.
[[nodiscard]] bool SaveSession(Application& application, Desk& desk, bool attended);

}  // namespace ts5
