// What the journal of a run is made of: records that follow each other, each with its length and checksum, so
// that of a file that breaks off all that was whole is read.
//
//   length of the content (4 bytes), its checksum (8 bytes), content
//
// The first one holds the plan of the run, the others what became of its items. Numbers are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame/filter_module.h"
#include "frame/job.h"
#include "frame/run.h"
#include "frame/run_result.h"
#include "frame/target_naming.h"
#include "platform/base/bytes.h"
#include "platform/base/outcome.h"
#include "platform/files/file_mark.h"

namespace ts5 {

// What a run sets out to do.
struct RunPlan {
  Job job = {};
  std::size_t number = 0;  // of the job among all; 0: the default job
  DestinationRules destination = {};
  RunDevices devices = {};
  std::int64_t begun = 0;                   // seconds since 1970
  std::vector<PlannedTarget> targets = {};  // of the items
};

// What became of an item; while `staged` is there: what becomes of it when that file has its place.
struct ItemRecord {
  std::size_t index = 0;
  RunItem item = {};
  std::int32_t number = 0;  // of its RunStatus
  std::optional<FileMark> staged = {};
};

[[nodiscard]] Bytes PlanRecord(const RunPlan& plan, const ModuleFinder& modules);
[[nodiscard]] Bytes RecordOf(const ItemRecord& record);

struct JournalContent {
  RunPlan plan = {};
  std::vector<ItemRecord> items = {};
  std::size_t size = 0;  // of all that was whole
};
// ReadFailed: there is no whole plan at the start. WrongFormat: it is of a filter or a version that is not
// known.
[[nodiscard]] Result<JournalContent> ReadJournal(ByteView bytes, const ModuleFinder& modules);

}  // namespace ts5
