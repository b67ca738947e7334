#include "platform/base/strings.h"

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

}  // namespace ts5
