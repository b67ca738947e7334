// The filters of this build: the one place that knows all rooms.
#pragma once

#include <span>

#include "frame/filter_module.h"

namespace ts5 {

// In FilterId order.
[[nodiscard]] std::span<const FilterModule> Modules();
// nullptr for a filter that this build does not have.
[[nodiscard]] const FilterModule* FindModule(FilterId id);

}  // namespace ts5
