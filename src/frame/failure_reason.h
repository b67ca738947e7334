// Why an item failed, in a line of plain German beside the remark of its code: what the system said and about
// which file, or what the source really holds.
#pragma once

#include <optional>
#include <string>

#include "platform/base/outcome.h"
#include "platform/files/fault.h"

namespace ts5 {

// fault: what was noted while the item was at work (TakeFault). "" when there is nothing to add to the code.
// May look at the source again.
[[nodiscard]] std::string FailureReason(Outcome code, const std::string& source, const std::string& target,
                                        const std::optional<FileFault>& fault);

}  // namespace ts5
