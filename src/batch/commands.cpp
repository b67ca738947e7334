#include "batch/commands.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>

#include "batch/texts.h"
#include "frame/texts.h"
#include "platform/text.h"

namespace ts5::batch {
namespace {

constexpr std::array kCommands{
    Command{"filters", texts::BatchFiltersSummary, FiltersCommand},
    Command{"jobs", texts::BatchJobsSummary, JobsCommand},
    Command{"type", texts::BatchTypeSummary, TypeCommand},
    Command{"info", texts::BatchInfoSummary, InfoCommand},
    Command{"run", texts::BatchRunSummary, RunCommand},
    Command{"job", texts::BatchJobSummary, JobCommand},
    Command{"cd", texts::BatchCdSummary, CdCommand},
    Command{"registry", texts::BatchRegistrySummary, RegistryCommand},
};
constexpr CommandGroup kProgram{"", kCommands, texts::BatchOverview, texts::BatchOverviewExamples};

bool AsksForHelp(std::string_view word) {
  return word == "--help" || word == "-h" || word == "--hilfe" || word == "help";
}

void PrintOverview(const CommandGroup& group, Console& console) {
  const std::string call =
      std::string(kProgramName) + (group.prefix.empty() ? "" : " ") + std::string(group.prefix);
  console.out << Format(Text(texts::BatchUsage), call + " BEFEHL ...") << "\n\n"
              << Text(group.overview) << "\n\n"
              << Text(texts::BatchCommands) << '\n';
  std::size_t width = 0;
  for (const Command& command : group.commands) width = std::max(width, command.name.size());
  for (const Command& command : group.commands) {
    console.out << "  " << Padded(command.name, width + 2) << Text(command.summary) << '\n';
  }
  console.out << '\n' << Text(texts::BatchExamples) << '\n';
  for (const std::string_view line : Split(Text(group.examples), '\n')) console.out << "  " << line << '\n';
  if (group.prefix.empty()) console.out << '\n' << Text(texts::BatchOverviewEnd) << '\n';
}

}  // namespace

int Dispatch(const CommandGroup& group, CommandLine line, Console& console) {
  std::string names;
  for (const Command& command : group.commands) {
    names += (names.empty() ? "" : ", ") + std::string(command.name);
  }
  if (line.empty()) {
    return WrongUsage(console, group.prefix, Format(Text(texts::BatchCommandMissing), names));
  }
  if (AsksForHelp(line.front())) {
    PrintOverview(group, console);
    return kExitSuccess;
  }
  const auto found = std::ranges::find(group.commands, line.front(), &Command::name);
  if (found == group.commands.end()) {
    return WrongUsage(console, group.prefix, Format(Text(texts::BatchCommandUnknown), line.front(), names));
  }
  return found->run(line.subspan(1), console);
}

int RunBatch(CommandLine line, Console& console) {
  int status = kExitFailed;
  try {
    if (!line.empty() && line.front() == "--version") {
      console.out << Format(Text(texts::BatchVersion), Text(texts::ApplicationTitle), TS5_VERSION) << '\n';
      status = kExitSuccess;
    } else {
      status = Dispatch(kProgram, line, console);
    }
    console.out.flush();
  } catch (const std::bad_alloc&) {
    PrintError(console, Text(texts::BatchOutOfMemory));
  } catch (const std::exception& error) {
    PrintError(console, error.what());
  }
  if (!console.out && status == kExitSuccess) {
    PrintError(console, Text(texts::BatchOutputFailed));
    status = kExitFailed;
  }
  return status;
}

}  // namespace ts5::batch
