// What the properties page shows of a score in one of the XML formats, as data.
#pragma once

#include <string>

#include "platform/base/outcome.h"
#include "score/score_properties.h"

namespace ts5::converters {

// SourceNotOpened; WrongFormat: no XML score; SourceFailed: a damaged one.
[[nodiscard]] Result<ScoreProperties> ReadXmlProperties(const std::string& path);

// Whether the name is that of an XML score: .stvx, .xml, .musicxml, .mxl.
[[nodiscard]] bool IsXmlScoreName(std::string_view name);

}  // namespace ts5::converters
