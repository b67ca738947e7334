// Questions on the terminal.
#pragma once

#include <string>
#include <string_view>

#include "batch/console.h"
#include "frame/question.h"

namespace ts5::batch {

// Texts of message boxes have line ends of their own; on the console one line is easier to read.
[[nodiscard]] std::string OnOneLine(std::string_view text);

// A question with its possible answers. Without somebody to answer it is No, and this is said. Cancelled when
// the input ends or Ctrl+C is pressed.
[[nodiscard]] Answer AskOnConsole(Console& console, const QuestionText& question);

}  // namespace ts5::batch
