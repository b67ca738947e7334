// The texts of this room as names: texts::Name for each row of its table.
#pragma once

#include "platform/base/strings.h"

namespace ts5::texts {
#define TEXT(name, number, text) inline constexpr TextId name{number};
#include "resources/strings/app.def"
#undef TEXT
}  // namespace ts5::texts
