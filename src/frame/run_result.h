// What a run leaves behind: the counts and remarks that the results dialog shows, and the outcome of every
// item.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "frame/filter_id.h"
#include "platform/outcome.h"

namespace ts5 {

// A count with its label; a line without a label is not shown.
struct RunLine {
  std::string label = {};
  std::uint32_t count = 0;

  bool operator==(const RunLine&) const = default;
};

// One source of the run and what became of it. Code 0 or above: it succeeded, and the number may say how.
struct RunItem {
  std::string source = {};
  std::string destination = {};  // "" when none was settled or written
  std::int32_t code = 0;

  bool operator==(const RunItem&) const = default;
};

struct RunResult {
  FilterId filter = FilterId::None;
  std::string title;
  std::array<RunLine, 4> lines;
  std::vector<std::string> remarks;  // one line each, in the order in which the outcomes first came
  bool show = true;                  // false: the user does not want to see the dialog of this run
  bool cancelButton = false;         // the dialog offers "Abbrechen"
  bool cancelled = false;            // the user ended the run: neither a success nor a failure
  std::vector<RunItem> items;        // those that were begun, in order

  bool operator==(const RunResult&) const = default;
};

// The remarks as the results dialog shows them: joined with CR LF, at most so many bytes (whole lines, never
// cut inside one unless the first is longer by itself), "keine" when there are none.
inline constexpr std::size_t kMaxRemarksBytes = 10000;
[[nodiscard]] std::string RemarksText(const RunResult& result);

// How many items failed; those that were cancelled do not count.
[[nodiscard]] std::size_t FailureCount(const RunResult& result);

}  // namespace ts5
