// "ts5-batch run ... --preview": what the targets would be called, and nothing done.
#pragma once

#include "batch/console.h"
#include "frame/destination.h"
#include "frame/job.h"
#include "frame/run.h"

namespace ts5::batch {

// One line an item, or one JSON object {"targets":[{"source","destination","replaces","code"}]}. The exit
// status: kExitFailed when one of them cannot be named. share: the items of a list job that are shown.
[[nodiscard]] int PreviewOnConsole(Console& console, Job job, DestinationRules rules, const RunShare& share,
                                   bool json);

}  // namespace ts5::batch
