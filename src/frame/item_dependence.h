// Whether the items of a run depend on each other: one's target may be another's source.
#pragma once

#include <string>
#include <vector>

#include "frame/destination.h"

namespace ts5 {

struct PlannedItem {
  std::string source;
  TargetName target;  // before its number is settled; empty when it gets none
};

// True when a target, with or without a number, could take the place of the source of another item. Links and
// other spellings of a path are followed; a name that is doubtful counts.
[[nodiscard]] bool SourceCouldBeTarget(const std::vector<PlannedItem>& items);

}  // namespace ts5
