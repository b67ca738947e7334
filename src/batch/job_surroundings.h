// What the stored jobs rest on here: the volumes and drives of this machine, the filters of this build.
#pragma once

#include "frame/job_store.h"

namespace ts5::batch {

[[nodiscard]] JobSurroundings SystemJobSurroundings();

}  // namespace ts5::batch
