// The CD copier: a whole audio CD onto blank discs, through files or from drive to drive.
#pragma once

#include "frame/filter_module.h"

namespace ts5::disc {

[[nodiscard]] FilterModule CopierModule();

}  // namespace ts5::disc
