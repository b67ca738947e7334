// "ts5-batch job": running a stored job. "ts5-batch jobs" with all that a job may rest on.
#include <algorithm>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/job_surroundings.h"
#include "batch/print_options.h"
#include "batch/run_session.h"
#include "batch/store.h"
#include "batch/stored_jobs.h"
#include "batch/texts.h"
#include "frame/run_journal.h"
#include "platform/base/text.h"
#include "platform/files/real_paths.h"

namespace ts5::batch {
namespace {

// Paths of a job that was brought from elsewhere may count from the current directory.
void MakePathsWhole(Job& job) {
  job.directory.path = FullPath(job.directory.path);
  job.targetDirectory = FullPath(job.targetDirectory);
  for (std::size_t i = 0; i < job.files.Size(); ++i)
    if (!job.files[i].cdTrack) job.files.SetPath(i, FullPath(job.files[i].path));
}

}  // namespace

int JobsCommand(CommandLine line, Console& console) {
  return ListJobs(line, console, SystemJobSurroundings());
}

int JobCommand(CommandLine line, Console& console) {
  std::string word;
  OutputOptions output;
  Arguments arguments("job", texts::BatchJobSummary, texts::BatchJobExamples);
  arguments.Required("NUMMER-ODER-TITEL", word, texts::BatchHelpJob);
  arguments.Flag("--json", output.json, texts::BatchHelpJson);
  arguments.Flag("--quiet", output.quiet, texts::BatchHelpQuiet);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto store = LoadStoredState(console, SystemJobSurroundings());
  if (!store) return kExitFailed;

  Job* job = FindJob(store->jobs, word);
  if (job == nullptr) {
    std::string names;
    for (const Job* known : Numbered(store->jobs)) names += (names.empty() ? "" : ", ") + known->title;
    return WrongUsage(console, "job", Format(Text(texts::BatchJobUnknown), word, names));
  }
  if (!IsFilter(job->filter)) {
    PrintError(console, Format(Text(texts::BatchJobWithoutFilter), job->title));
    return kExitFailed;
  }
  MakePathsWhole(*job);
  const std::vector<Job*> all = Numbered(store->jobs);
  if (const auto registry = OpenRegistry(console))
    PreparePrinting(*registry, std::vector<const Job*>(all.begin(), all.end()), *job);
  return RunOnConsole(console, *job,
                      {.settings = store->settings,
                       .destination = DestinationRulesOf(store->settings, *job),
                       .number = static_cast<std::size_t>(std::ranges::find(all, job) - all.begin()),
                       .journals = JournalDirectory(DefaultRegistryPath())},
                      output);
}

}  // namespace ts5::batch
