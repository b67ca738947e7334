#include "frame/destination_display.h"

#include "frame/filter_catalogue.h"
#include "frame/filter_module.h"

namespace ts5 {

DestinationDisplay DisplayedDestination(const Job& job, const FilterModule* module,
                                        const DestinationRules& rules, const DestinationFiles& files) {
  const std::size_t items = ItemCount(job);
  DestinationDisplay display{DestinationModeOf(job, rules.noPreset), std::nullopt};
  if (!display.mode.automatic || items == 0) return display;
  const std::string source = ItemSource(job, 0);
  std::optional<TargetName> target;
  if (IsSearch(job.filter)) {
    const bool wholeList = job.Mode() == SourceMode::List && job.files.Selection().empty();
    target = ResultFileNameFor(rules, source, items, wholeList, files);
  } else if (module != nullptr && module->target && job.parameters) {
    target = TargetNameFor(module->target(*job.parameters, source), rules, source, files);
  }
  if (target) {
    // What is shown is what the run will take, unless another program is quicker.
    display.name = SettledName(*target, rules.overwrite == OverwritePolicy::Number, files);
  }
  return display;
}

}  // namespace ts5
