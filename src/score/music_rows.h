// What a properties page shows of the music of a score, whatever its format: parts with their staves and
// instruments, bars, keys, times, tempos, length.
#pragma once

#include <vector>

#include "frame/property_row.h"
#include "score/score_document.h"

namespace ts5 {

[[nodiscard]] std::vector<PropertyRow> MusicRows(const ScoreDocument& document);

}  // namespace ts5
