// The rules of the melody search written down as plainly as possible, to check the matcher against: every
// note looks for its next onset from scratch, nothing is skipped and nothing is remembered.
#pragma once

#include <vector>

#include "search/track_matcher.h"

namespace ts5::test {

struct ReferenceResult {
  Outcome code = Outcome::Success;
  std::vector<SearchHit> hits;  // in the order they are found
};

ReferenceResult ReferenceSearch(ByteView track, std::int32_t trackNumber, const TrackContext& context);

}  // namespace ts5::test
