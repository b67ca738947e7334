// The CD grabber: tracks of an audio CD as wave files.
#pragma once

#include "frame/filter_module.h"

namespace ts5::disc {

[[nodiscard]] FilterModule GrabberModule();

}  // namespace ts5::disc
