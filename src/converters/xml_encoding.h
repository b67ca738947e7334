// The text of an XML file as UTF-8, whatever encoding its first bytes or its declaration name (XML 1.0,
// appendix F).
#pragma once

#include <string>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"

namespace ts5::converters {

// WrongFormat: an encoding that is not known, or bytes that it does not allow; Cancelled.
[[nodiscard]] Result<std::string> XmlText(ByteView file, const CancelCheck& cancelled = {});

}  // namespace ts5::converters
