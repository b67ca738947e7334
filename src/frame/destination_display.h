// What the destination field of the main window shows for a job before it runs.
#pragma once

#include <optional>
#include <string>

#include "frame/destination.h"
#include "frame/job.h"

namespace ts5 {

struct FilterModule;

struct DestinationDisplay {
  DestinationMode mode;
  // The automatic name of the first item; nothing when names are not automatic, or there is nothing to name.
  std::optional<std::string> name;
};

// module: that of the job's filter, nullptr when this build has none.
[[nodiscard]] DestinationDisplay DisplayedDestination(const Job& job, const FilterModule* module,
                                                      const DestinationRules& rules,
                                                      const DestinationFiles& files);

}  // namespace ts5
