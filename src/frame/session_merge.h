// What a session of the program changed and what others changed in the store meanwhile, put together.
//
// Each value, or group of values that belong together, is looked at by itself: what the session changed is
// written, all else stays as it is in the store now. Where both changed the same part of a job, the session's
// goes under the job's number, and the other one is kept as a further job: nothing is lost.
#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/store/registry_values.h"

namespace ts5 {

// The name of the group that a value belongs to, in lower case: values of one group change together.
using ValueGrouping = std::function<std::string(std::string_view name)>;
[[nodiscard]] std::string EachByItself(std::string_view name);
// Of a job: the directory with its selection, the free list, the melody, the destination; all others alone.
[[nodiscard]] std::string JobValueGroup(std::string_view name);

struct ThreeWay {
  const RegistryValues& stored;  // as the session read it, as far as it knows it
  const RegistryValues& loaded;  // as the session would have written it at once
  const RegistryValues& ours;    // as it would write it now
  const RegistryValues& theirs;  // as it is in the store now
};
struct MergedValues {
  RegistryValues values;
  std::vector<std::string> conflicts;  // groups that both changed, each in its own way
};
[[nodiscard]] MergedValues MergeValues(const ThreeWay& sides, const ValueGrouping& grouping);

// What the session knows of the values after they were merged and written: what was taken from the others is
// not shown by it yet.
[[nodiscard]] RegistryValues KnownAfter(const RegistryValues& known, const RegistryValues& ours,
                                        const RegistryValues& merged, const ValueGrouping& grouping);

// Where a job of the session came from.
struct JobOrigin {
  std::size_t number = 0;  // in the store
  RegistryValues stored;   // what the store held last, by which it is found again
  RegistryValues known;    // as far as the session shows it: what others changed is still theirs
  RegistryValues loaded;
};
struct SessionJob {
  RegistryValues ours;
  std::optional<JobOrigin> origin;  // nothing: new
};

// Where the jobs of the store are now that the session knows: 0 is the default job. By what they hold, so
// that jobs are found again that have moved up because another one went; else by their title, or
// their number. Nothing: gone.
[[nodiscard]] std::vector<std::optional<std::size_t>> PlacesOf(const std::vector<const JobOrigin*>& origins,
                                                               const std::vector<RegistryValues>& theirs);
// Whether both changed what makes the job: its sources, filter, parameters or destination. Of the default job
// only the free list and the parameters count: where it stands and what it offers changes by itself.
[[nodiscard]] bool IsConflict(const MergedValues& merged, bool isDefault);

struct MergedJob {
  RegistryValues values;
  std::optional<std::size_t> session;  // which job of the session it is
};
// All jobs as they are to be stored, the default job first. ours and theirs begin with the default job;
// removed: the jobs that the session deleted.
[[nodiscard]] std::vector<MergedJob> MergeJobs(const std::vector<SessionJob>& ours,
                                               const std::vector<JobOrigin>& removed,
                                               const std::vector<RegistryValues>& theirs);

}  // namespace ts5
