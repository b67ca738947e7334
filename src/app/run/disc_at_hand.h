// What is known of the disc of a job without waiting for drives.
#pragma once

#include "artworker/filled_text.h"
#include "frame/jobs.h"

namespace ts5 {

[[nodiscard]] artworker::DiscFacts DiscAtHand(const Job& job, const Jobs& jobs);

}  // namespace ts5
