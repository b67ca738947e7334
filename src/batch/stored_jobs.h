// The stored jobs as the commands name them.
#pragma once

#include <optional>
#include <string_view>
#include <vector>

#include "batch/commands.h"
#include "frame/job_store.h"
#include "frame/settings.h"

namespace ts5::batch {

struct StoredState {
  Settings settings;
  StoredJobs jobs;
};
// Nothing when the registry cannot be read, which is said.
[[nodiscard]] std::optional<StoredState> LoadStoredState(Console& console, const JobSurroundings& around);

// By their numbers: the default job is number 0.
[[nodiscard]] std::vector<Job*> Numbered(StoredJobs& jobs);

// By number, else by title without regard to case; nullptr when there is none.
[[nodiscard]] Job* FindJob(StoredJobs& jobs, std::string_view word);

// "ts5-batch jobs".
int ListJobs(CommandLine line, Console& console, const JobSurroundings& around);

}  // namespace ts5::batch
