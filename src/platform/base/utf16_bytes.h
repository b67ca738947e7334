// UTF-16 as it lies in files, without its mark.
#pragma once

#include <string>
#include <string_view>

#include "platform/base/bytes.h"

namespace ts5 {

// As UTF-8; an odd byte at the end is left out.
[[nodiscard]] std::string Utf8FromUtf16Bytes(ByteView bytes, bool bigEndian);
void AppendUtf16(ByteWriter& out, std::string_view text, bool bigEndian);

}  // namespace ts5
