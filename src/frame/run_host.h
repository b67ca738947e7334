// The surroundings of a run, as the run sees them: the desktop posts what comes here to its window, the
// console prints it, tests record it. All calls come from the worker thread of the run (never two at a time)
// and must return at once; a question is answered later through its Question object, from any thread.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>

#include "frame/question.h"
#include "frame/run_result.h"
#include "frame/run_state.h"
#include "frame/search_hit.h"

namespace ts5 {

// The one kind of progress event. Events come in order and at most kProgressInterval apart from each other
// but for the first and the last, which come always.
struct RunProgress {
  std::uint32_t item = 0;               // number of the item at work, from 1; 0 before the first
  std::uint32_t items = 0;              // how many there are; 0 when that is not known
  double fraction = 0;                  // of the step, mostly this item, 0 to 1
  std::optional<double> whole = {};     // of the task, the whole run, 0 to 1; not given: as the items say
  std::chrono::milliseconds elapsed{};  // since the run began
  std::optional<std::chrono::milliseconds> remaining = {};  // nothing while it is uncertain (RunTime)
  std::optional<double> buffer = {};  // fill of a recording's buffer, 0 to 1; only while one is recorded

  bool operator==(const RunProgress&) const = default;
};

// How much of the whole is done, 0 to 1: as given, or by the items done and what is done of the one at work.
[[nodiscard]] constexpr double WholeOf(const RunProgress& progress) {
  if (progress.whole) return *progress.whole;
  if (progress.items == 0) return 0;
  const double before = progress.item == 0 ? 0 : progress.item - 1;
  return (before + progress.fraction) / progress.items;
}

class RunHost {
 public:
  virtual ~RunHost() = default;

  virtual void Progress(const RunProgress& progress) = 0;
  virtual void TaskText(std::string_view text) = 0;  // what the run as a whole is at ("CD 1 von 2")
  virtual void StatusText(
      std::string_view text) = 0;  // the step: what is done now; each replaces the last one
  virtual void ProtocolLine(std::string_view line) = 0;  // a line that stays
  // One hit of a search. OutOfMemory ends the search.
  virtual Outcome Hit(const SearchHit& hit) = 0;
  virtual void Ask(std::shared_ptr<Question> question) = 0;
  virtual void Notice(std::string_view text, MessageIcon icon) = 0;
  virtual void StateChanged(RunState state) = 0;
  // The end of the run, exactly once and after everything else; the job is idle by then.
  virtual void Finished(const RunResult& result) = 0;
};

}  // namespace ts5
