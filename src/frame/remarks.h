// What the results say of each kind of outcome.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "frame/run_result.h"
#include "platform/base/strings.h"

namespace ts5 {

// One kind of outcome of a run.
struct RunStatus {
  std::int32_t code = 0;
  bool extended = false;  // the remark's appended text applies
  // Fills a %i of the remark; the first one of a kind stays. 0: the code does.
  std::int32_t number = 0;
  std::string line = {};  // what is said of this outcome instead of the table's remark; "" that one

  [[nodiscard]] bool SameKind(const RunStatus& other) const {
    return code == other.code && extended == other.extended && line == other.line;
  }
};

// The code of a row, the last of its table, that stands for every failure that has no row of its own.
inline constexpr std::int32_t kEveryOtherFailure = INT32_MIN;

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
[[nodiscard]] std::vector<std::string> RemarkLines(std::span<const Remark> table, const RunStatus& status);

}  // namespace ts5
