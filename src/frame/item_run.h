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
// Which names targets get: frame/target_naming.
#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "frame/filter_module.h"
#include "frame/run_result.h"
#include "platform/base/outcome.h"
#include "platform/files/files.h"

namespace ts5 {

class Run;

// What the check of a source has read and its conversion goes on with, so that nothing is read twice.
struct PreparedItem {
  virtual ~PreparedItem() = default;
};

// One conversion at work. May run on any thread beside others of its kind when the filter is independent.
struct ItemWork {
  Run& run;  // Cancelled(); questions only when the filter is not independent
  const std::string& source;
  StagedFile& target;
  const std::atomic<bool>& abandoned;    // the run ends before this item has its turn
  std::function<void(double)> progress;  // fraction of this item, 0 to 1
  PreparedItem* prepared = nullptr;      // what the filter's prepare() gave

  const std::string& targetName;  // as it stands now: its number may change, its extension does not

  // May be filled in: see RunStatus and RunItem.
  bool extended = false;
  std::int32_t number = 0;
  std::string line = {};
  std::optional<std::vector<ItemLoss>> losses = {};
  // To be set by a conversion that succeeded and has nothing to write, as the source is as it should be.
  bool unchanged = false;
  // To be set by a conversion that fails and whose target is to be put in place all the same, e.g. without
  // the attributes that could not be written.
  bool keepTarget = false;
  // To be set by a conversion that fails and the run with it: what follows is not tried.
  bool endsRun = false;

  // T: what prepare() makes.
  template <typename T>
  [[nodiscard]] T& Prepared() const {
    return static_cast<T&>(*prepared);
  }

  // To be polled by every loop over data.
  [[nodiscard]] bool Cancelled() const;
};

struct ItemFilter {
  // Items have nothing to do with each other and convert() is safe on several threads at once.
  bool independent = false;
  // Looks at the source before it is converted; empty: no check.
  std::function<Outcome(const std::string& source)> check = {};
  // The same for a filter whose check reads what the conversion needs.
  std::function<Result<std::unique_ptr<PreparedItem>>(const std::string& source)> prepare = {};
  // Success or a positive code of the filter's own; on a failure the target is dropped. A success that wrote
  // nothing and does not say `unchanged` is a failure of the target. Cancelled ends the run.
  std::function<Outcome(ItemWork&)> convert;
  unsigned workers = 0;  // threads for independent items; 0: one per core
};

// Fills run.Result(): count 1 the successes, count 2 all others.
void RunItems(Run& run, const ItemFilter& filter);

}  // namespace ts5
