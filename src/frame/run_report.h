// The items of a result as the user reads them: one row each, and all of it as text for the clipboard and a
// file.
#pragma once

#include <array>
#include <cstddef>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/run_result.h"
#include "platform/base/strings.h"

namespace ts5 {

enum class ReportColumn : std::uint8_t { File, Outcome, Reason, Directory };
inline constexpr std::size_t kReportColumns = 4;
[[nodiscard]] std::string_view ReportTitle(ReportColumn column);

using ReportRow = std::array<std::string, kReportColumns>;
// What concerns no source is told of its destination.
[[nodiscard]] ReportRow RowOf(const RunItem& item);

// Items as lines of text, columns separated by tabs.
[[nodiscard]] std::string ReportLines(const RunResult& result, std::span<const std::size_t> items);
// The whole result: title, counts, remarks, and a line for every item under the titles of the columns. UTF-8
// with its mark, lines end in CR LF, so that every editor and spreadsheet takes it.
[[nodiscard]] std::string ReportText(const RunResult& result);

// The sources that failed, in order.
[[nodiscard]] std::vector<std::string> FailedSources(const RunResult& result);

}  // namespace ts5
