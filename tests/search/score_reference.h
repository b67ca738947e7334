// The rules of the score search written down as plainly as possible, over the document that a score was
// written from: no bytes, no order of walking, every signature and clef looked up by its time.
#pragma once

#include <vector>

#include "frame/search_hit.h"
#include "score/score_writer.h"
#include "search/melody_query.h"

namespace ts5::test {

// Time signatures within a system are looked for in the first voice of its first staff, clefs in the first
// voice of each staff.
std::vector<SearchHit> ReferenceScoreSearch(const ScoreDocument& score, const MelodyQuery& query);

}  // namespace ts5::test
