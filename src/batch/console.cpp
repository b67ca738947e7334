#include "batch/console.h"

#include "batch/texts.h"
#include "platform/strings.h"
#include "platform/text.h"

namespace ts5::batch {

void PrintError(Console& console, std::string_view message) {
  console.err << kProgramName << ": " << message << '\n';
}

int WrongUsage(Console& console, std::string_view command, std::string_view message) {
  PrintError(console, message);
  const std::string call = std::string(kProgramName) + (command.empty() ? "" : " ") + std::string(command);
  console.err << Format(Text(texts::BatchSeeHelp), call) << '\n';
  return kExitUsage;
}

std::string Padded(std::string_view text, std::size_t characters) {
  std::string padded(text);
  const std::size_t count = CharacterCount(text);
  if (count < characters) padded.append(characters - count, ' ');
  return padded;
}

}  // namespace ts5::batch
