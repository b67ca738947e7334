// What a run leaves behind: what it counted, what became of every item, and what the filter found out beside.
// How the results dialog and the console say it is below: titles, lines and remarks come from these data.
#pragma once

#include <any>
#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "frame/filter_id.h"
#include "platform/base/outcome.h"
#include "platform/base/strings.h"

namespace ts5 {

// Something that a conversion could not carry over.
struct ItemLoss {
  std::string kind = {};   // what it is
  std::string bar = {};    // its printed number, "" of the whole piece
  std::string staff = {};  // its name, "" of all staves
  std::uint32_t count = 1;
  std::string line = {};  // all of that as one line

  bool operator==(const ItemLoss&) const = default;
};

// One source of the run and what became of it. Code 0 or above: it succeeded, and the number may say how.
struct RunItem {
  std::string source = {};
  std::string destination = {};  // "" when none was settled or written
  std::int32_t code = 0;
  bool extended = false;  // as in RunStatus
  // What the system said, and of which file: one plain German line beside the remark of the code; "" when
  // there is nothing to add.
  std::string reason = {};
  // The remarks of the code by the filter's table, on one line; filled at the end of the run.
  std::string remark = {};
  bool unchanged = false;                            // succeeded, and there was nothing to write
  std::optional<std::vector<ItemLoss>> losses = {};  // of conversions that tell them

  bool operator==(const RunItem&) const = default;
};

inline constexpr std::size_t kRunCounts = 4;

// What a kind of result is called, and what its counts mean; a count without a label is not shown.
struct RunTitles {
  TextId title = {};
  std::array<std::optional<TextId>, kRunCounts> labels = {};

  bool operator==(const RunTitles&) const = default;
};

struct RunResult {
  FilterId filter = FilterId::None;
  RunTitles titles;
  std::array<std::uint32_t, kRunCounts> counts = {};  // in the order of the labels
  std::vector<RunItem> items;                         // those that were begun, in order
  std::vector<std::string> remarks;  // one line each, in the order in which the outcomes first came
  std::any payload;                  // of a type of the filter's own, for its windows; mostly empty
  bool show = true;                  // false: the user does not want to see the dialog of this run
  bool cancelButton = false;         // the dialog offers "Abbrechen"
  bool cancelled = false;            // the user ended the run: neither a success nor a failure

  // All but the payload, whose type only the filter knows.
  bool operator==(const RunResult& other) const;
};

// --- what is counted

enum class ItemEnd : std::uint8_t { Succeeded, Unchanged, Failed, Cancelled };
[[nodiscard]] ItemEnd EndOf(const RunItem& item);

// How many items failed; those that were cancelled do not count.
[[nodiscard]] std::size_t FailureCount(const RunResult& result);
// Count 1 the successes, count 2 all other sources of the run, those included that were not begun.
void CountItems(RunResult& result, std::size_t sources);

// --- how it is said

// A count with its label; the label is "" when it is not shown.
struct RunLine {
  std::string_view label = {};
  std::uint32_t count = 0;

  bool operator==(const RunLine&) const = default;
};
[[nodiscard]] std::string_view TitleText(const RunResult& result);
[[nodiscard]] std::array<RunLine, kRunCounts> Lines(const RunResult& result);

// The remarks as the results dialog shows them: joined with CR LF, at most so many bytes (whole lines, never
// cut inside one unless the first is longer by itself), "keine" when there are none.
inline constexpr std::size_t kMaxRemarksBytes = 10000;
[[nodiscard]] std::string RemarksText(const RunResult& result);

// "Erfolgreich", "Unverändert", "Fehlgeschlagen" or "Abgebrochen".
[[nodiscard]] std::string_view EndText(ItemEnd end);
// Why: the remark and the reason, or the number of a code that no table knows; "" for a plain success.
[[nodiscard]] std::string ReasonText(const RunItem& item);

}  // namespace ts5
