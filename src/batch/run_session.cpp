#include "batch/run_session.h"

#include <memory>
#include <utility>

#include "batch/run_output.h"
#include "batch/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/target_naming.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"

namespace ts5::batch {

int RunOnConsole(Console& console, Job& job, RunRequest request, OutputOptions options) {
  const FilterModule* module = FindModule(job.filter);
  if (job.destinationName.empty() && !(IsSearch(job.filter) && job.destinationIsScreen))
    job.destinationName = OfferTarget(job, module, request.destination, request.files).name.value_or("");
  const auto host = std::make_shared<ConsoleHost>(console, options, SearchKindOf(job.filter));
  ConsoleDialogs dialogs(console, options);
  JobRunner runner(FindModule);
  if (!runner.Start(job, std::move(request), host, dialogs)) return kExitFailed;
  host->PrintUntilFinished([&] { return runner.Stop(job); });
  runner.Wait(job);

  return PrintResult(console, host->Result(), host->Hits(), options);
}

int PrintResult(Console& console, const RunResult& result, const SearchResults& hits,
                const OutputOptions& options) {
  if (options.json) {
    WriteResultJson(result, hits, options, console.out);
  } else {
    for (const RunItem& item : result.items) {
      if (item.code >= 0) continue;
      // What concerns no source is the failure of the destination.
      const std::string& name = item.source.empty() ? item.destination : item.source;
      PrintError(console, Format(Text(texts::BatchItemFailed), name, ReasonText(item)));
    }
    console.out << ResultText(result);
  }
  return ExitStatusOf(result);
}

}  // namespace ts5::batch
