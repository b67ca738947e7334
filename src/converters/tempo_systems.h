// Tempos that change within a system, for what knows the tempo of systems alone.
#pragma once

#include <vector>

#include "score/score_bars.h"
#include "score/score_document.h"

namespace ts5::converters {

// Begins a system wherever the tempo changes and no note or rest of any voice goes on, and gives each system
// the tempo in force there, in whole quarters a minute. The changes that had no such place are the result.
// music is that of the document, and void afterwards.
[[nodiscard]] std::vector<ScoreTempo> BeginSystemsAtTempos(ScoreDocument& document, const ScoreMusic& music);

}  // namespace ts5::converters
