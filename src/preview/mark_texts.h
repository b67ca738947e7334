// The short texts that tell marks which have no sign of their own here.
#pragma once

#include <algorithm>
#include <iterator>
#include <optional>
#include <string_view>

namespace ts5::preview {

struct WrittenMark {
  std::string_view name;
  std::string_view text;
};
inline constexpr WrittenMark kWritten[] = {
    {"trill-mark", "tr"},         {"turn", "\u223D"}, {"mordent", "\u2A4D"},  {"inverted-mordent", "\u2A4E"},
    {"breath-mark", "\u2019"},    {"caesura", "//"},  {"up-bow", "\u2228"},   {"down-bow", "\u2293"},
    {"open-string", "o"},         {"harmonic", "o"},  {"stopped", "+"},       {"tremolo", "trem."},
    {"snap-pizzicato", "\u03D5"}, {"segno", "Segno"}, {"coda", "Coda"},       {"pedal", "Ped."},
    {"string-mute", "con sord."}, {"arpeggiate", ""}, {"non-arpeggiate", ""},
};

// By MusicXML's name; "" for one that is not told.
[[nodiscard]] inline std::optional<std::string_view> TextOfMark(std::string_view name) {
  const auto* const found = std::ranges::find(kWritten, name, &WrittenMark::name);
  return found == std::end(kWritten) ? std::nullopt : std::optional(found->text);
}

}  // namespace ts5::preview
