// Questions on the terminal, and the files about which a command asks.
#pragma once

#include <string>
#include <string_view>

#include "batch/console.h"
#include "frame/destination.h"
#include "frame/question.h"
#include "platform/base/bytes.h"

namespace ts5::batch {

// Texts of message boxes have line ends of their own; on the console one line is easier to read.
[[nodiscard]] std::string OnOneLine(std::string_view text);

// A question with its possible answers. Without somebody to answer it is No, and this is said. Cancelled when
// the input ends or Ctrl+C is pressed.
[[nodiscard]] Answer AskOnConsole(Console& console, const QuestionText& question);

// Writes the file of a command that is no run; where there is one already, the policy says what becomes of
// it. The name that was taken is said when it is another one. The exit status; what went wrong is told.
[[nodiscard]] int WriteOnConsole(Console& console, const std::string& path, ByteView content,
                                 OverwritePolicy policy);

}  // namespace ts5::batch
