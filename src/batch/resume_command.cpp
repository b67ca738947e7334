// "ts5-batch resume": going on with a run that a crash or a power cut ended.
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/run_session.h"
#include "batch/store.h"
#include "batch/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/run_journal.h"
#include "frame/settings_store.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

using Runs = std::vector<std::shared_ptr<RunJournal>>;

void ListRuns(const Runs& runs, Console& console) {
  for (std::size_t i = 0; i < runs.size(); ++i)
    console.out << Format(Text(texts::BatchResumeLine), i + 1, Printable(InterruptedText(*runs[i])));
}

void WriteRunsJson(const Runs& runs, Console& console) {
  Json list = Json::array();
  for (const auto& run : runs) {
    const RunPlan& plan = run->Plan();
    list.push_back({{"filter", Descriptor(plan.job.filter).identifier},
                    {"job", plan.job.title},
                    {"begun", plan.begun},
                    {"items", plan.targets.size()},
                    {"done", run->DoneCount()}});
  }
  console.out << JsonText({{"runs", std::move(list)}});
}

// The run of that number, or the only one; nothing after saying why not.
std::shared_ptr<RunJournal> Chosen(const Runs& runs, const std::optional<std::string>& word,
                                   Console& console) {
  const auto number = word               ? ParseInteger(*word)
                      : runs.size() == 1 ? std::optional<std::int64_t>(1)
                                         : std::nullopt;
  if (number && *number >= 1 && std::cmp_less_equal(*number, runs.size()))
    return runs[static_cast<std::size_t>(*number - 1)];
  ListRuns(runs, console);
  (void)WrongUsage(console, "resume", Format(Text(texts::BatchWhichToResume), runs.size()));
  return nullptr;
}

}  // namespace

int ResumeCommand(CommandLine line, Console& console) {
  std::optional<std::string> word;
  bool list = false;
  bool discard = false;
  OutputOptions output;
  Arguments arguments("resume", texts::BatchResumeSummary, texts::BatchResumeExamples);
  arguments.Flag("--list", list, texts::BatchHelpResumeList);
  arguments.Flag("--discard", discard, texts::BatchHelpResumeDiscard);
  arguments.Flag("--json", output.json, texts::BatchHelpJson);
  arguments.Flag("--quiet", output.quiet, texts::BatchHelpQuiet);
  arguments.Optional("NUMMER", word, texts::BatchHelpResume);
  if (const auto status = arguments.Read(line, console)) return *status;

  const Runs runs = FindInterruptedRuns(JournalDirectory(DefaultRegistryPath()), FindModule);
  if (list && output.json) {
    WriteRunsJson(runs, console);
    return kExitSuccess;
  }
  if (runs.empty()) {
    console.out << Text(texts::BatchNothingToResume) << '\n';
    return kExitSuccess;
  }
  if (list) {
    ListRuns(runs, console);
    return kExitSuccess;
  }
  const auto run = Chosen(runs, word, console);
  if (!run) return kExitUsage;
  if (discard) {
    run->Remove();
    console.out << Text(texts::BatchResumeDiscarded);
    return kExitSuccess;
  }
  const auto registry = OpenRegistry(console);
  if (!registry) return kExitFailed;
  const RunPlan& plan = run->Plan();
  Job job = plan.job;
  return RunOnConsole(console, job,
                      {.settings = LoadSettings(*registry, DefaultSettingsGround()),
                       .devices = plan.devices,
                       .destination = plan.destination,
                       .number = plan.number,
                       .goesOn = run},
                      output);
}

}  // namespace ts5::batch
