// The commands of the console program.
#pragma once

#include <functional>
#include <span>
#include <string>
#include <string_view>

#include "batch/console.h"
#include "platform/base/strings.h"

namespace ts5::batch {

using CommandLine = std::span<const std::string>;

struct Command {
  std::string_view name;  // "run", "registry list"
  TextId summary;
  int (*run)(CommandLine line, Console& console);  // the exit status
};

int FiltersCommand(CommandLine line, Console& console);
int JobsCommand(CommandLine line, Console& console);
int TypeCommand(CommandLine line, Console& console);
int InfoCommand(CommandLine line, Console& console);
int AttributesCommand(CommandLine line, Console& console);
int InterfacesCommand(CommandLine line, Console& console);
int ScoreCommand(CommandLine line, Console& console);
int RunCommand(CommandLine line, Console& console);
int JobCommand(CommandLine line, Console& console);
int RegistryCommand(CommandLine line, Console& console);
int CodecsCommand(CommandLine line, Console& console);
int CdCommand(CommandLine line, Console& console);
int LayoutCommand(CommandLine line, Console& console);
int ResumeCommand(CommandLine line, Console& console);
int ResultsCommand(CommandLine line, Console& console);

// One of several commands by the first argument; help, and what is said of a wrong one, come from the table.
// prefix: what stands before the command on the line, "" or "registry".
struct CommandGroup {
  std::string_view prefix;
  std::span<const Command> commands;
  TextId overview;
  TextId examples;
};
int Dispatch(const CommandGroup& group, CommandLine line, Console& console);

// Runs a command and sees to its output; what it throws is said, and is a failure.
int Guarded(Console& console, const std::function<int()>& command);

// The whole program: its arguments without its own name. Never throws.
int RunBatch(CommandLine line, Console& console);

}  // namespace ts5::batch
