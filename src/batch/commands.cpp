#include "batch/commands.h"

#include <algorithm>
#include <array>
#include <exception>
#include <new>

#include "platform/text.h"

namespace ts5::batch {
namespace {

constexpr std::array kCommands{
    Command{"filters", TextId::BatchFiltersSummary, FiltersCommand},
    Command{"jobs", TextId::BatchJobsSummary, JobsCommand},
    Command{"type", TextId::BatchTypeSummary, TypeCommand},
    Command{"info", TextId::BatchInfoSummary, InfoCommand},
    Command{"run", TextId::BatchRunSummary, RunCommand},
    Command{"job", TextId::BatchJobSummary, JobCommand},
    Command{"registry", TextId::BatchRegistrySummary, RegistryCommand},
};
constexpr CommandGroup kProgram{"", kCommands, TextId::BatchOverview, TextId::BatchOverviewExamples};

bool AsksForHelp(std::string_view word) {
  return word == "--help" || word == "-h" || word == "--hilfe" || word == "help";
}

void PrintOverview(const CommandGroup& group, Console& console) {
  const std::string call =
      std::string(kProgramName) + (group.prefix.empty() ? "" : " ") + std::string(group.prefix);
  console.out << Format(Text(TextId::BatchUsage), call + " BEFEHL ...") << "\n\n"
              << Text(group.overview) << "\n\n"
              << Text(TextId::BatchCommands) << '\n';
  std::size_t width = 0;
  for (const Command& command : group.commands) width = std::max(width, command.name.size());
  for (const Command& command : group.commands) {
    console.out << "  " << Padded(command.name, width + 2) << Text(command.summary) << '\n';
  }
  console.out << '\n' << Text(TextId::BatchExamples) << '\n';
  for (const std::string_view line : Split(Text(group.examples), '\n')) console.out << "  " << line << '\n';
  if (group.prefix.empty()) console.out << '\n' << Text(TextId::BatchOverviewEnd) << '\n';
}

}  // namespace

int Dispatch(const CommandGroup& group, CommandLine line, Console& console) {
  std::string names;
  for (const Command& command : group.commands) {
    names += (names.empty() ? "" : ", ") + std::string(command.name);
  }
  if (line.empty()) {
    return WrongUsage(console, group.prefix, Format(Text(TextId::BatchCommandMissing), names));
  }
  if (AsksForHelp(line.front())) {
    PrintOverview(group, console);
    return kExitSuccess;
  }
  const auto found = std::ranges::find(group.commands, line.front(), &Command::name);
  if (found == group.commands.end()) {
    return WrongUsage(console, group.prefix, Format(Text(TextId::BatchCommandUnknown), line.front(), names));
  }
  return found->run(line.subspan(1), console);
}

int RunBatch(CommandLine line, Console& console) {
  int status = kExitFailed;
  try {
    if (!line.empty() && line.front() == "--version") {
      console.out << Format(Text(TextId::BatchVersion), Text(TextId::ApplicationTitle), TS5_VERSION) << '\n';
      status = kExitSuccess;
    } else {
      status = Dispatch(kProgram, line, console);
    }
    console.out.flush();
  } catch (const std::bad_alloc&) {
    PrintError(console, Text(TextId::BatchOutOfMemory));
  } catch (const std::exception& error) {
    PrintError(console, error.what());
  }
  if (!console.out && status == kExitSuccess) {
    PrintError(console, Text(TextId::BatchOutputFailed));
    status = kExitFailed;
  }
  return status;
}

}  // namespace ts5::batch
