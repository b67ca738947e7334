#include <algorithm>
#include <exception>
#include <new>

#include "batch/commands.h"
#include "batch/texts.h"
#include "platform/base/text.h"

namespace ts5::batch {
namespace {

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

int Guarded(Console& console, const std::function<int()>& command) {
  int status = kExitFailed;
  try {
    status = command();
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
