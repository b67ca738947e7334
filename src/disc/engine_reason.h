// What the number of an engine's error means, in words that stand beside it.
#pragma once

#include <optional>

#include "disc/recorder.h"
#include "platform/base/strings.h"

namespace ts5::disc {

// Nothing where there is no more to say than the number.
[[nodiscard]] std::optional<TextId> ReasonOf(EngineError error);

}  // namespace ts5::disc
