// Where hits go, and what a search of one file or track came to.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "frame/search_hit.h"
#include "platform/base/outcome.h"

namespace ts5 {

// Success, or why the search cannot go on: OutOfMemory, WriteFailed, Cancelled.
using HitSink = std::function<Outcome(const SearchHit&)>;

struct SearchOutcome {
  Outcome code = Outcome::Success;
  std::uint64_t hits = 0;   // sent to the sink and counted; 0 for a damaged track
  std::string reason = {};  // of a failure, as RunItem has it
};

}  // namespace ts5
