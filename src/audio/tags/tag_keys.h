// What tags of keys and texts have in common: an attribute stands under its own name and under the key that
// the format has for it, so that every program finds it.
#pragma once

#include <taglib/tstring.h>
#include <taglib/tstringlist.h>

#include <string>
#include <string_view>
#include <vector>

#include "audio/tags/attribute_names.h"

namespace ts5::tags {

[[nodiscard]] inline std::string FromTag(const TagLib::String& text) {
  return text.to8Bit(true);
}
[[nodiscard]] inline TagLib::String ToTag(std::string_view text) {
  return {std::string(text), TagLib::String::UTF8};
}
// Several values of one key, as they are shown.
[[nodiscard]] std::string Joined(const TagLib::StringList& values);

// Adds the value of a key. column: where the table has the format's keys. A format's own key holds over an
// attribute's name, as other programs change only that.
void AddKeyed(Attributes& attributes, std::string_view AttributeName::*column, std::string_view key,
              const std::string& value);
// The keys under which an attribute stands: its name, and the format's own if it has one.
[[nodiscard]] std::vector<std::string> KeysOf(std::string_view AttributeName::*column, std::string_view name);

}  // namespace ts5::tags
