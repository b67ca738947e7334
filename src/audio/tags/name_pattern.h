// File names made of attributes: "%track% - %title%" becomes "03 - Gymnopédie".
//
// Words between percent signs are replaced by the attribute of that meaning, "%%" is a percent sign, all else
// stays; a word whose attribute says nothing goes with what stands between it and the next one. Names are
// safe on every file system that users of this program have: characters that mean something to one of them
// become "_", and no name leaves its directory.
#pragma once

#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "audio/tags/attribute.h"
#include "frame/parameters.h"
#include "platform/base/strings.h"

namespace ts5::tags {

inline constexpr std::size_t kMostNamePattern = 255;  // characters

struct NameWord {
  std::string_view word;       // between its percent signs
  std::string_view attribute;  // whose value it stands for
};
[[nodiscard]] std::span<const NameWord> NameWords();

// A message when the pattern cannot be used: a word that is none, a percent sign that stands alone, or no
// word at all, so that all files would have one name. An empty pattern is in order, and means the names of
// sources.
[[nodiscard]] std::optional<TextId> NamePatternFault(std::string_view pattern);

// Without directory and extension, at most 200 bytes. "": the pattern is empty or has a fault, or the
// attributes say nothing to any of its words.
[[nodiscard]] std::string NameOf(std::string_view pattern, const Attributes& attributes);

// The name, with its extension, of the target of this source by what it says of itself and, before that, by
// what the job sets; "" as above: the target is named after its source.
[[nodiscard]] std::string FileNameFor(std::string_view pattern, const std::string& source,
                                      const Attributes& job, std::string_view extension);

// The row of a filter's field table that keeps a pattern; one with a fault is not taken.
template <typename P>
[[nodiscard]] ParameterField NamePatternField(std::string P::*member) {
  FieldOf<P> field;
  field.name = "NamePattern";
  field.description = "z. B. \"%track% - %title%\"";
  field.load = [member](P& p, const RegistryValues& values) {
    if (auto text = values.Text("NamePattern"); text && !NamePatternFault(*text))
      p.*member = *std::move(text);
  };
  field.save = [member](const P& p, RegistryValues& values) {
    if (const std::string& text = p.*member; !text.empty()) values.SetText("NamePattern", text);
  };
  field.set = [member](P& p, std::string_view text) {
    if (NamePatternFault(text)) return false;
    p.*member = text;
    return true;
  };
  return MakeField(std::move(field));
}

}  // namespace ts5::tags
