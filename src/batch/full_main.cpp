// The console program with all of its commands; light_main.cpp starts it.
#include <string>
#include <vector>

#include "batch/commands.h"
#include "batch/terminal.h"
#include "platform/programs/write_signals.h"

int main(int count, char** words) {
  ts5::TurnWriteSignalsIntoErrors();
  ts5::batch::CatchInterrupts();
  const std::vector<std::string> line(words + (count > 0 ? 1 : 0), words + count);
  ts5::batch::Console console = ts5::batch::TerminalConsole();
  return ts5::batch::RunBatch(line, console);
}
