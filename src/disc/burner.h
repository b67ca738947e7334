// The CD burner: makes an audio CD, or several, of the files of a job.
#pragma once

#include "frame/filter_module.h"

namespace ts5::disc {

[[nodiscard]] FilterModule BurnerModule();

}  // namespace ts5::disc
