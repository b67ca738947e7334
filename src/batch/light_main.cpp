// The console program ts5-batch as it is started. What needs neither media nor drives it does itself, in a
// few milliseconds; for all the rest it becomes ts5-batch-full, which loads what the filters rest on.
#include <unistd.h>

#include <algorithm>
#include <array>
#include <filesystem>
#include <string>
#include <vector>

#include "audio/quick_file_info.h"
#include "batch/commands.h"
#include "batch/show_attributes.h"
#include "batch/stored_jobs.h"
#include "batch/terminal.h"
#include "batch/texts.h"
#include "frame/cd_tracks.h"
#include "platform/base/text.h"
#include "platform/disc/volumes.h"
#include "platform/programs/write_signals.h"

namespace ts5::batch {
namespace {

char** theWords = nullptr;

// Goes on as the full program: beside this one where it is built, else where it is installed. Returns only
// when there is none.
void BecomeFull() {
  std::error_code error;
  const auto here = std::filesystem::read_symlink("/proc/self/exe", error).parent_path();
  for (const auto& place : {here, here / TS5_LIBEXEC}) ::execv((place / "ts5-batch-full").c_str(), theWords);
}

int JobsCommandWithoutDrives(CommandLine line, Console& console) {
  const auto noModules = [](FilterId) -> const FilterModule* { return nullptr; };
  const auto askDrive = [](const std::string&) -> std::optional<AudioCd> {
    BecomeFull();
    return std::nullopt;
  };
  return ListJobs(line, console, JobSurroundingsOf(VolumeTable::OfThisMachine(), noModules, askDrive));
}

// What some files are, only the decoders know; then nothing has been changed or printed yet.
int AttributesCommandWithoutMedia(CommandLine line, Console& console) {
  const auto has = [line](std::string_view option) {
    return std::ranges::any_of(line, [option](const std::string& word) { return word.starts_with(option); });
  };
  if (has("--json") && (has("--set") || has("--remove"))) BecomeFull();
  CatchInterrupts();
  return ShowAttributes(line, console,
                        [](const std::string& file, const tags::Attributes& own) -> Result<tags::Attributes> {
                          if (auto info = QuickFileInfo(file, own)) return *std::move(info);
                          BecomeFull();
                          return Failure(Outcome::WrongFormat);
                        });
}

constexpr std::array kLight{
    Command{"attributes", texts::BatchAttributesSummary, AttributesCommandWithoutMedia},
    Command{"filters", texts::BatchFiltersSummary, FiltersCommand},
    Command{"jobs", texts::BatchJobsSummary, JobsCommandWithoutDrives},
    Command{"type", texts::BatchTypeSummary, TypeCommand},
    Command{"registry", texts::BatchRegistrySummary, RegistryCommand},
};

int RunLight(CommandLine line, Console& console) {
  const auto command = line.empty() ? kLight.end() : std::ranges::find(kLight, line.front(), &Command::name);
  if (command != kLight.end())
    return Guarded(console, [&] { return command->run(line.subspan(1), console); });
  BecomeFull();
  PrintError(console, Text(texts::BatchFullMissing));
  return kExitFailed;
}

}  // namespace
}  // namespace ts5::batch

int main(int count, char** words) {
  ts5::TurnWriteSignalsIntoErrors();
  ts5::batch::theWords = words;
  const std::vector<std::string> line(words + (count > 0 ? 1 : 0), words + count);
  ts5::batch::Console console = ts5::batch::TerminalConsole();
  return ts5::batch::RunLight(line, console);
}
