#include "batch/run_session.h"

#include <memory>
#include <utility>

#include "app/filter_modules.h"
#include "batch/run_output.h"
#include "batch/texts.h"
#include "frame/item_run.h"
#include "platform/text.h"

namespace ts5::batch {

int RunOnConsole(Console& console, Job& job, RunRequest request, OutputOptions options) {
  const FilterModule* module = FindModule(job.filter);
  if (module != nullptr && job.destinationName.empty() && ItemCount(job) > 0 && !job.destinationIsScreen) {
    job.destinationName = AutomaticDestination(job, *module, request.destination, SystemDestinationFiles());
  }
  const auto host = std::make_shared<ConsoleHost>(console, options, SearchKindOf(job.filter));
  ConsoleDialogs dialogs(console, options);
  JobRunner runner(FindModule);
  if (!runner.Start(job, std::move(request), host, dialogs)) return kExitFailed;
  host->PrintUntilFinished([&] { return runner.Stop(job); });
  runner.Wait(job);

  const RunResult& result = host->Result();
  if (options.json) {
    WriteResultJson(result, host->Hits(), console.out);
  } else {
    for (const RunItem& item : result.items) {
      if (const std::string remark = ItemRemark(item, module->remarks); !remark.empty()) {
        // What concerns no source is the failure of the destination.
        const std::string& name = item.source.empty() ? item.destination : item.source;
        PrintError(console, Format(Text(texts::BatchItemFailed), name, remark));
      }
    }
    console.out << ResultText(result);
  }
  return ExitStatusOf(result);
}

}  // namespace ts5::batch
