// A loss report as the results of a run have it.
#pragma once

#include <vector>

#include "converters/score_losses.h"
#include "frame/run_result.h"

namespace ts5::converters {

[[nodiscard]] std::vector<ItemLoss> ItemLosses(const LossReport& report);

}  // namespace ts5::converters
