// What is shown of a score, whatever its format.
#pragma once

#include <string>
#include <vector>

#include "frame/property_row.h"
#include "score/score_document.h"

namespace ts5 {

// "Work: movement", or the one that there is.
[[nodiscard]] std::string TitleOf(const ScoreCredits& credits);

// A text of a properties page, or what stands there for none.
[[nodiscard]] std::string OrMissing(const std::string& text);

// Of a properties page: parts with their staves and instruments, bars, keys, times, tempos, length.
[[nodiscard]] std::vector<PropertyRow> MusicRows(const ScoreDocument& document);

}  // namespace ts5
