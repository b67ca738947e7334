// One run on the console, from the finished job to the exit status.
#pragma once

#include "batch/console.h"
#include "batch/console_host.h"
#include "frame/job.h"
#include "frame/job_runner.h"

namespace ts5::batch {

// Runs the job, prints what the run says and its result, and gives the exit status. An empty destination name
// is filled in first, as the main window does it. A destination that cannot be used, or a device that is
// taken, keeps the run from starting: kExitFailed, and the reason is said.
[[nodiscard]] int RunOnConsole(Console& console, Job& job, RunRequest request, OutputOptions options);

// What is printed of a run at its end, and the exit status.
int PrintResult(Console& console, const RunResult& result, const SearchResults& hits,
                const OutputOptions& options);

}  // namespace ts5::batch
