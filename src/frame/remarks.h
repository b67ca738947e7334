// What the results dialog says: the title and labels of every filter, and a remark for each kind of outcome.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "frame/filter_id.h"
#include "frame/run_result.h"
#include "platform/strings.h"

namespace ts5 {

struct RunTitles {
  TextId title;
  std::array<std::optional<TextId>, 4> labels;  // of the lines; a line without one is hidden
};

// The titles of the filter's results. A filter whose results vary (the burner) replaces labels of its own.
[[nodiscard]] const RunTitles& TitlesOf(FilterId filter);
// An empty result with these titles and labels.
[[nodiscard]] RunResult ResultWithTitles(FilterId filter, const RunTitles& titles);

// One kind of outcome of a run.
struct Status {
  std::int32_t code = 0;
  bool extended = false;    // the remark's appended text applies
  std::int32_t number = 0;  // fills a %i of the remark; the first one of a kind stays

  [[nodiscard]] bool SameKind(const Status& other) const {
    return code == other.code && extended == other.extended;
  }
};

// One row of a remarks table. A row of group 0 stands for the whole code; rows of the groups 1, 2, 3... stand
// for a bit of a positive code, and each group adds at most one line, in the order of the groups.
struct Remark {
  std::int32_t code;
  TextId text;
  std::uint8_t group = 0;
  std::optional<TextId> appended = {};  // follows after a blank when the outcome is an extended one
};

// The remarks of the conversions, which most filters share.
[[nodiscard]] std::span<const Remark> ConversionRemarks();

// The lines for one outcome; none when the table does not know it.
[[nodiscard]] std::vector<std::string> RemarkLines(std::span<const Remark> table, const Status& status);

}  // namespace ts5
