// Fingerprints of data.
#pragma once

#include <string>

#include "platform/base/bytes.h"

namespace ts5 {

[[nodiscard]] std::string Sha256Hex(ByteView bytes);  // 64 digits, lower case

}  // namespace ts5
