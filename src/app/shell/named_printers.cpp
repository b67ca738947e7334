#include "app/shell/named_printers.h"

#include <algorithm>
#include <utility>

#include "artworker/artworker_parameters.h"

namespace ts5 {
namespace {

void FindPrinter(Job& job, std::vector<std::string>& printers) {
  const auto* const parameters = job.parameters.If<artworker::ArtworkerParameters>();
  if (parameters == nullptr || parameters->printer.empty()) return;
  const auto found = std::ranges::find(printers, parameters->printer);
  job.destinationDevice = static_cast<std::int32_t>(found - printers.begin());
  if (found == printers.end()) printers.push_back(parameters->printer);
}

}  // namespace

void FindNamedPrinters(StoredJobs& jobs, std::vector<std::string>& printers) {
  FindPrinter(jobs.defaultJob, printers);
  for (Job& job : jobs.saved) FindPrinter(job, printers);
}

void NamePrinters(Jobs& jobs, const std::vector<std::string>& printers) {
  for (std::size_t number = 0; number <= jobs.Count(); ++number) {
    auto* const parameters = jobs[number].parameters.If<artworker::ArtworkerParameters>();
    const auto index = static_cast<std::size_t>(std::max(jobs[number].destinationDevice, 0));
    if (parameters != nullptr && index < printers.size()) parameters->printer = printers[index];
  }
}

}  // namespace ts5
