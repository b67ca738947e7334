// The string table: every text that a user sees, with its number. The rows are in resources/strings, a table
// for each room, numbered by room:
//   10000 frame   11000 app   12000 midi   13000 search   14000 score   15000 audio   16000 disc
//   17000 artworker   18000 converters   19000 batch   19500 platform
// Commands have 500-999, 20151 and 40001-40999, the text being their status-bar hint; 32000-32127 are the
// programs of General MIDI as the sounds of a score are called. A room's texts.h names its rows.
//
//   Text(texts::NoTargetName)                    // as it stands
//   Format(Text(texts::ResetFailed), name)       // with printf arguments
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace ts5 {

// The number of a row. Its values are the constants in namespace texts.
enum class TextId : std::uint16_t {};

// The text of a row; never empty for a constant of texts.
[[nodiscard]] std::string_view Text(TextId id);
// The text with that number, for commands whose hint has their number.
[[nodiscard]] std::optional<std::string_view> TextByNumber(int number);

}  // namespace ts5
