// The filters of this build: the one place that knows all rooms.
#pragma once

#include <span>

#include "frame/filter_module.h"

namespace ts5 {

// In FilterId order.
[[nodiscard]] std::span<const FilterModule> Modules();
// nullptr for a filter that this build does not have.
[[nodiscard]] const FilterModule* FindModule(FilterId id);

// Whether this build can run the filter; of some it has only the parameters.
[[nodiscard]] bool CanRun(FilterId id);

}  // namespace ts5
