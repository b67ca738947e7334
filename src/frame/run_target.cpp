#include "frame/run_target.h"

#include <utility>

namespace ts5 {

Result<std::string> PutTarget(Run& run, StagedFile& file, PlannedTarget target, TargetNaming& naming,
                              const std::function<bool(const std::string& name)>& mayReplace) {
  const std::size_t newDirectories = target.newDirectories;
  auto taken = TakeTarget(file, std::move(target), naming, mayReplace,
                          [&run](const std::string& name) { return run.KeepReplaced(name); });
  if (taken) run.Made(*taken, newDirectories);
  return taken;
}

}  // namespace ts5
