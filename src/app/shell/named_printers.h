// Printers of jobs by their names: the list of the window counts them, and another start may count others.
#pragma once

#include <string>
#include <vector>

#include "frame/job_store.h"
#include "frame/jobs.h"

namespace ts5 {

// Each job gets the printer that it names. One that has gone since stays in the list, so that its job prints
// on no other one without being told: a run says that it cannot be reached.
void FindNamedPrinters(StoredJobs& jobs, std::vector<std::string>& printers);

// The names of what is chosen now, before the jobs are stored.
void NamePrinters(Jobs& jobs, const std::vector<std::string>& printers);

}  // namespace ts5
