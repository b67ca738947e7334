// Journals of runs: any bytes are read without harm, and what was read can be written again.
#include <cstddef>
#include <cstdint>

#include "frame/journal_records.h"
#include "modules/filter_modules.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const auto journal = ts5::ReadJournal({data, size}, ts5::FindModule);
  if (journal) {
    (void)ts5::PlanRecord(journal->plan, ts5::FindModule);
    for (const ts5::ItemRecord& record : journal->items) (void)ts5::RecordOf(record);
  }
  return 0;
}
