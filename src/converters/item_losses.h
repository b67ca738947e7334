// What a run says of the losses of its files: each in "Einzelheiten" and in --json, the first ones of each
// file among the remarks.
#pragma once

#include <string>
#include <vector>

#include "converters/score_losses.h"
#include "frame/run_result.h"

namespace ts5 {

[[nodiscard]] std::vector<ItemLoss> ItemLosses(const LossReport& report);
// Of one file, as one line; "" without any.
[[nodiscard]] std::string LossSummary(const std::vector<ItemLoss>& losses);
// Of all files of a run, one line each.
void AddLossRemarks(RunResult& result);

}  // namespace ts5
