// The run of a filter that makes one file per source: check, name the target, convert, count, one item after
// the other. Targets are staged, so a failed, cancelled or killed conversion leaves what was there before.
//
//   constexpr auto run = [](Run& run) {
//     RunItems(run, {.independent = true, .check = CheckHeader, .convert = ConvertOne});
//   };
//
// Items that are independent of each other are converted on all cores. What comes out (results, remarks,
// names and their numbers, questions and their order) is what one after the other gives: names are settled
// and targets are put in place in the order of the items.
//
// When a target turns out to be the source itself: with the format kept and the suffix rule switched off, or
// with a name chosen by hand, the user said to convert in place, and the source is replaced in one step once
// its conversion is complete. In every other case an automatic name is numbered instead, so that no source is
// lost by surprise.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <string>

#include "frame/filter_module.h"
#include "platform/files.h"
#include "platform/outcome.h"

namespace ts5 {

class Run;

// One conversion at work. May run on any thread beside others of its kind when the filter is independent.
struct ItemWork {
  Run& run;  // Cancelled() and the parameters; questions only when the filter is not independent
  const FilterParameters& parameters;
  const std::string& source;
  StagedFile& target;
  const std::atomic<bool>& abandoned;    // the run ends before this item has its turn
  std::function<void(double)> progress;  // fraction of this item, 0 to 1

  // May be filled in: see Status.
  bool extended = false;
  std::int32_t number = 0;

  // To be polled by every loop over data.
  [[nodiscard]] bool Cancelled() const;
};

struct ItemFilter {
  // Items have nothing to do with each other and convert() is safe on several threads at once.
  bool independent = false;
  // Looks at the source before its target is named; empty: no check.
  std::function<Outcome(const FilterParameters&, const std::string& source)> check = {};
  // Success or a positive code of the filter's own; on a failure the target is dropped, and so is one into
  // which nothing was written. Cancelled ends the run.
  std::function<Outcome(ItemWork&)> convert;
  unsigned workers = 0;  // threads for independent items; 0: one per core
};

// The name that the destination field shows for the job's first item: the automatic one, numbered as a run
// would number it now. "" when the filter makes no files.
[[nodiscard]] std::string AutomaticDestination(const Job& job, const FilterModule& module,
                                               const DestinationRules& rules, const DestinationFiles& files);

// Fills run.Result(): line 1 the successes, line 2 all others.
void RunItems(Run& run, const ItemFilter& filter);

}  // namespace ts5
