#include "platform/base/strings.h"

#include <algorithm>
#include <vector>

namespace ts5 {

// A switch, because it takes a table of any length and the compiler refuses a number that stands twice.
std::optional<std::string_view> TextByNumber(int number) {
  switch (number) {
#define TEXT(name, number, text) \
  case number:                   \
    return text;
#include "resources/strings/all.def"
#undef TEXT
    default:
      return std::nullopt;
  }
}

std::string_view Text(TextId id) {
  return TextByNumber(static_cast<int>(id)).value_or(std::string_view{});
}

std::span<const TextRow> AllTexts() {
  static const std::vector<TextRow> rows = [] {
    std::vector<TextRow> all{
#define TEXT(name, number, text) TextRow{TextId{number}, text},
#include "resources/strings/all.def"
#undef TEXT
    };
    std::ranges::sort(all, {}, &TextRow::id);
    return all;
  }();
  return rows;
}

}  // namespace ts5
