#include "batch/console.h"

#include "batch/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5::batch {

void PrintError(Console& console, std::string_view message) {
  console.err << kProgramName << ": " << Printable(message, true) << '\n';
}

int WrongUsage(Console& console, std::string_view command, std::string_view message) {
  PrintError(console, message);
  const std::string call = std::string(kProgramName) + (command.empty() ? "" : " ") + std::string(command);
  console.err << Format(Text(texts::BatchSeeHelp), call) << '\n';
  return kExitUsage;
}

std::string Printable(std::string_view text, bool lineEnds) {
  std::string printable;
  for (std::size_t i = 0; i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    const auto next = static_cast<unsigned char>(i + 1 < text.size() ? text[i + 1] : '\0');
    if (byte == 0xC2 && next >= 0x80 && next < 0xA0) {  // U+0080 to U+009F
      printable += '?';
      ++i;
    } else {
      const bool control = (byte < 0x20 && !(lineEnds && byte == '\n')) || byte == 0x7F;
      printable += control ? '?' : text[i];
    }
  }
  return printable;
}

std::string Shortened(std::string_view word) {
  constexpr std::size_t kMost = 80;
  const std::string_view shown = FirstCharacters(word, kMost);
  return std::string(shown) + (shown.size() < word.size() ? "..." : "");
}

std::string Padded(std::string_view text, std::size_t characters) {
  std::string padded(text);
  const std::size_t count = CharacterCount(text);
  if (count < characters) padded.append(characters - count, ' ');
  return padded;
}

}  // namespace ts5::batch
