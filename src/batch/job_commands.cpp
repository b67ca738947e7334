// "ts5-batch jobs" and "ts5-batch job": the stored jobs, and running one of them.
#include <algorithm>

#include "app/filter_modules.h"
#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/run_session.h"
#include "batch/store.h"
#include "batch/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/job_store.h"
#include "frame/settings_store.h"
#include "platform/text.h"

namespace ts5::batch {
namespace {

struct Store {
  Settings settings;
  StoredJobs jobs;
};

std::optional<Store> LoadStore(Console& console) {
  auto registry = OpenRegistry(console);
  if (!registry) return std::nullopt;
  auto jobs = LoadJobs(*registry, SystemJobSurroundings());
  if (!jobs) {
    PrintError(console, RegistryFailureText(jobs.error(), DefaultRegistryPath()));
    return std::nullopt;
  }
  return Store{LoadSettings(*registry, DefaultSettingsGround()), std::move(*jobs)};
}

std::string_view FilterName(FilterId filter) {
  return IsFilter(filter) ? Descriptor(filter).Name() : Text(texts::BatchNoFilter);
}

std::vector<Job*> Numbered(StoredJobs& jobs) {
  std::vector<Job*> all{&jobs.defaultJob};
  for (Job& job : jobs.saved) all.push_back(&job);
  return all;
}

// By number, else by title without regard to case.
Job* FindJob(StoredJobs& jobs, std::string_view word) {
  const std::vector<Job*> all = Numbered(jobs);
  if (const auto number = ParseInteger(word)) {
    if (*number >= 0 && std::cmp_less(*number, all.size())) return all[static_cast<std::size_t>(*number)];
  }
  const auto found =
      std::ranges::find_if(all, [&](const Job* job) { return EqualsIgnoringCase(job->title, word); });
  return found == all.end() ? nullptr : *found;
}

}  // namespace

int JobsCommand(CommandLine line, Console& console) {
  bool json = false;
  Arguments arguments("jobs", texts::BatchJobsSummary, texts::BatchJobsExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto store = LoadStore(console);
  if (!store) return kExitFailed;

  Json rows = Json::array();
  std::size_t number = 0;
  for (const Job* job : Numbered(store->jobs)) {
    if (json) {
      Json row;
      row["number"] = number;
      row["title"] = job->title;
      row["description"] = job->description;
      row["filter"] = IsFilter(job->filter) ? std::string(Descriptor(job->filter).identifier) : "";
      row["files"] = ItemCount(*job);
      rows.push_back(std::move(row));
    } else {
      console.out << Format("%3i  ", number) << Padded(job->title, kMaxTitleCharacters + 2)
                  << Padded(FilterName(job->filter), 26) << job->description << '\n';
    }
    ++number;
  }
  if (json) console.out << JsonText({{"jobs", rows}});
  return kExitSuccess;
}

int JobCommand(CommandLine line, Console& console) {
  std::string word;
  OutputOptions output;
  Arguments arguments("job", texts::BatchJobSummary, texts::BatchJobExamples);
  arguments.Required("NUMMER-ODER-TITEL", word, texts::BatchHelpJob);
  arguments.Flag("--json", output.json, texts::BatchHelpJson);
  arguments.Flag("--quiet", output.quiet, texts::BatchHelpQuiet);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto store = LoadStore(console);
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
  return RunOnConsole(console, *job,
                      {.settings = store->settings, .destination = DestinationRulesOf(store->settings)},
                      output);
}

}  // namespace ts5::batch
