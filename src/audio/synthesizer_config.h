// The configuration file of the synthesis method, "timidity.cfg" in the synthesiser's folder: lines
// "dir NAME" say where instruments are looked for, a line "soundfont NAME" chooses the sound font. What else
// such files hold is passed over.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/outcome.h"

namespace ts5 {

inline constexpr std::string_view kSynthesizerConfigName = "timidity.cfg";

// The two lines of a new file.
[[nodiscard]] std::string NewSynthesizerConfig(std::string_view folder);
// Writes the file where there is none; one that is there is left as it is. TargetFailed, WriteFailed.
[[nodiscard]] Outcome EnsureSynthesizerConfig(const std::string& folder);
// The sound font that the file of the folder chooses; "" when it chooses none or it is not there.
[[nodiscard]] std::string ConfiguredSoundFont(const std::string& folder);

}  // namespace ts5
