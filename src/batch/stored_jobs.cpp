#include "batch/stored_jobs.h"

#include <algorithm>
#include <utility>

#include "batch/arguments.h"
#include "batch/json_text.h"
#include "batch/store.h"
#include "batch/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/settings_store.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

std::string_view FilterName(FilterId filter) {
  return IsFilter(filter) ? Descriptor(filter).Name() : Text(texts::BatchNoFilter);
}

}  // namespace

std::optional<StoredState> LoadStoredState(Console& console, const JobSurroundings& around) {
  auto registry = OpenRegistry(console);
  if (!registry) return std::nullopt;
  auto jobs = LoadJobs(*registry, around);
  if (!jobs) {
    PrintError(console, RegistryFailureText(jobs.error(), DefaultRegistryPath()));
    return std::nullopt;
  }
  return StoredState{LoadSettings(*registry, DefaultSettingsGround()), std::move(*jobs)};
}

std::vector<Job*> Numbered(StoredJobs& jobs) {
  std::vector<Job*> all{&jobs.defaultJob};
  for (Job& job : jobs.saved) all.push_back(&job);
  return all;
}

Job* FindJob(StoredJobs& jobs, std::string_view word) {
  const std::vector<Job*> all = Numbered(jobs);
  if (const auto number = ParseInteger(word)) {
    if (*number >= 0 && std::cmp_less(*number, all.size())) return all[static_cast<std::size_t>(*number)];
  }
  const auto found =
      std::ranges::find_if(all, [&](const Job* job) { return EqualsIgnoringCase(job->title, word); });
  return found == all.end() ? nullptr : *found;
}

int ListJobs(CommandLine line, Console& console, const JobSurroundings& around) {
  bool json = false;
  Arguments arguments("jobs", texts::BatchJobsSummary, texts::BatchJobsExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto store = LoadStoredState(console, around);
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
      console.out << Format("%3i  ", number) << Padded(Printable(job->title), kMaxTitleCharacters + 2)
                  << Padded(FilterName(job->filter), 26) << Printable(job->description) << '\n';
    }
    ++number;
  }
  if (json) console.out << JsonText({{"jobs", rows}});
  return kExitSuccess;
}

}  // namespace ts5::batch
