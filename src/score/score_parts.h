// The parts of a document: its own where they cover its staves, else each staff or each pair of staves of one
// name.
#pragma once

#include <vector>

#include "score/score_document.h"

namespace ts5 {

[[nodiscard]] std::vector<ScorePart> PartsOf(const ScoreDocument& document);

}  // namespace ts5
