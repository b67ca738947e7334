// A file that a command writes beside the targets of a run: what stands there is replaced, numbered or asked
// about, as --overwrite says.
#pragma once

#include <optional>
#include <string>

#include "batch/arguments.h"
#include "batch/console.h"
#include "frame/target_naming.h"
#include "platform/base/bytes.h"

namespace ts5::batch {

// "--overwrite" among the arguments of a command.
void AddOverwrite(Arguments& arguments, std::optional<std::string>& overwrite);
// What it says, asking when nothing is said. Nothing, and a message, when it says what cannot be.
[[nodiscard]] std::optional<OverwritePolicy> TakeOverwrite(const std::optional<std::string>& overwrite,
                                                           std::string_view command, Console& console);

// The name that the file got. Nothing, and a message, when it was not written: failed is that of a file that
// cannot be, with its name.
[[nodiscard]] std::optional<std::string> WriteTarget(Console& console, TargetNaming& naming,
                                                     const std::string& path, ByteView bytes, TextId failed);

// The one file of a command, made of source ("": of no file), which it does not replace. The name is said
// where it is another one. The exit status; what went wrong is told.
[[nodiscard]] int WriteCommandFile(Console& console, const std::string& path, const std::string& source,
                                   ByteView bytes, OverwritePolicy policy);

}  // namespace ts5::batch
