// What the console program writes to and asks from, so that tests can take the place of a terminal.
#pragma once

#include <functional>
#include <optional>
#include <ostream>
#include <string>
#include <string_view>

namespace ts5::batch {

inline constexpr std::string_view kProgramName = "ts5-batch";

enum ExitStatus : int {
  kExitSuccess = 0,    // all succeeded
  kExitFailed = 1,     // at least one failed
  kExitUsage = 2,      // wrong usage
  kExitCancelled = 3,  // Ctrl+C
};

struct Console {
  std::ostream& out;  // results
  std::ostream& err;  // errors, questions, progress
  // Whether a person watches err: only then there is progress.
  bool terminal = false;
  std::size_t width = 80;  // columns of that terminal
  // One line from the person; nothing at the end of input or after Ctrl+C. Empty when there is nobody to ask.
  std::function<std::optional<std::string>()> readLine;
  // Whether Ctrl+C was pressed; never when empty.
  std::function<bool()> interrupted;

  [[nodiscard]] bool Interrupted() const { return interrupted && interrupted(); }
};

// "ts5-batch: MESSAGE" on err.
void PrintError(Console& console, std::string_view message);
// The same with a hint at the help of a command; gives kExitUsage.
[[nodiscard]] int WrongUsage(Console& console, std::string_view command, std::string_view message);

// The text as a terminal may show it: control characters, which could steer it, become '?'; line ends stay
// when they are wanted.
[[nodiscard]] std::string Printable(std::string_view text, bool lineEnds = false);

// A word of the command line as a message repeats it: at most 80 characters of it, then "...".
[[nodiscard]] std::string Shortened(std::string_view word);

// Text filled up with blanks to so many characters, whatever its bytes.
[[nodiscard]] std::string Padded(std::string_view text, std::size_t characters);

}  // namespace ts5::batch
