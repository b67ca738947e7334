// The string table: every text that a user sees, with its number. Menu commands and their status-bar hints
// share a number.
//
//   Text(TextId::NoTargetName)                    // as it stands
//   Format(Text(TextId::ResetFailed), name)       // with printf arguments
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>

namespace ts5 {

enum class TextId : std::uint16_t {
#define TEXT(name, number, text) name = number,
#include "resources/strings.def"
#undef TEXT
};

// The text of a row; never empty for an enumerator of TextId.
[[nodiscard]] std::string_view Text(TextId id);
// The text with that number, for commands whose hint has their number.
[[nodiscard]] std::optional<std::string_view> TextByNumber(int number);

struct TextRow {
  TextId id;
  std::string_view text;
};
// The whole table in order of number, for the tests.
[[nodiscard]] std::span<const TextRow> AllTexts();

}  // namespace ts5
