// What the properties page shows of a score file, as data: labels and values in the order of the page.
#pragma once

#include <string>
#include <vector>

#include "frame/property_row.h"
#include "platform/base/calendar.h"
#include "platform/base/outcome.h"
#include "score/score_info.h"

namespace ts5 {

struct ScoreProperties {
  std::string title;  // of the page: with the file's name
  std::vector<PropertyRow> rows;
};

// Codes of ReadScoreFileInfo. Of the current format with the rows of its music.
[[nodiscard]] Result<ScoreProperties> ReadScoreProperties(const std::string& path);

// Nine rows for the current format, five for the older ones.
[[nodiscard]] std::vector<PropertyRow> ScorePropertyRows(const ScoreFileInfo& info, CalendarDate lastWritten);

}  // namespace ts5
