// What a run says of the losses of its files: each in "Einzelheiten" and in --json, the first ones of each
// file among the remarks.
#pragma once

#include <vector>

#include "frame/item_run.h"
#include "frame/run_result.h"
#include "platform/base/bytes.h"

namespace ts5 {

// Writes what was made of an item and, when that is there, says what it has lost.
[[nodiscard]] Outcome WriteWithLosses(ItemWork& work, ByteView made, std::vector<ItemLoss> losses);
// Of all files of a run, one line each.
void AddLossRemarks(RunResult& result);

}  // namespace ts5
