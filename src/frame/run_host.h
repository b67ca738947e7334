// The surroundings of a run, as the run sees them: the desktop posts what comes here to its window, the
// console prints it, tests record it. All calls come from the worker thread of the run (never two at a time)
// and must return at once; a question is answered later through its Question object, from any thread.
#pragma once

#include <cstdint>
#include <memory>
#include <string_view>

#include "frame/question.h"
#include "frame/run_result.h"
#include "frame/run_state.h"
#include "frame/search_hit.h"

namespace ts5 {

// The one kind of progress event. Events come in order and at most kProgressInterval apart from each other
// but for the first and the last, which come always.
struct RunProgress {
  std::uint32_t item = 0;   // number of the item at work, from 1; 0 before the first
  std::uint32_t items = 0;  // how many there are; 0 when that is not known
  double fraction = 0;      // of this item, 0 to 1

  bool operator==(const RunProgress&) const = default;
};

class RunHost {
 public:
  virtual ~RunHost() = default;

  virtual void Progress(const RunProgress& progress) = 0;
  virtual void StatusText(std::string_view text) = 0;    // what is done now; replaces the last one
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
