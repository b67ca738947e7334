// How a run puts a target in its place, so that it can be undone.
#pragma once

#include <functional>
#include <string>

#include "frame/run.h"
#include "frame/target_naming.h"
#include "platform/base/outcome.h"

namespace ts5 {

// TakeTarget, and what it replaces is kept. Also Cancelled.
[[nodiscard]] Result<std::string> PutTarget(Run& run, StagedFile& file, PlannedTarget target,
                                            TargetNaming& naming,
                                            const std::function<bool(const std::string& name)>& mayReplace);

}  // namespace ts5
