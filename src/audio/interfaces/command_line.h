// The arguments of an encoder, made without a shell: a line of parameters is split into words first and its
// placeholders are filled then, so that no file name can become an option, a second argument or a command.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "platform/base/outcome.h"

namespace ts5::interfaces {

// Words are separated by blanks and tabs; double quotes keep them together and are taken off, "" is an empty
// word. A backslash is one.
[[nodiscard]] std::vector<std::string> SplitCommandLine(std::string_view line);

// The words with the first {q} replaced by the source and the first {z} by the target. A name that does not
// begin with a directory gets one, so that none begins with a dash. InvalidParameter: a placeholder is
// missing.
[[nodiscard]] Result<std::vector<std::string>> EncoderArguments(std::string_view parameters,
                                                                std::string_view source,
                                                                std::string_view target);

}  // namespace ts5::interfaces
