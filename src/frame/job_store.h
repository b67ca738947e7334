// The job store: every job is a key "Jobs\Job 0000" (the default job), "Jobs\Job 0001"... below the settings
// key. Values are texts; numbers are decimal. What is missing or does not fit takes its default; nothing
// stops loading.
//
// A job's key holds the parameters of its current filter only. Those of the filters that it had before lie in
// a key "Andere Filter" below it; in the values of a job, as they are passed on here, their names begin with
// kOtherFilters.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "frame/filter_module.h"
#include "frame/job.h"
#include "platform/base/outcome.h"
#include "platform/store/registry_values.h"

namespace ts5 {

class Registry;
class VolumeTable;

// More jobs than this are not read, whatever "Job Number" says.
inline constexpr std::size_t kMaxJobs = 9999;
inline constexpr char kOtherFilters = '\\';  // no value's own name begins with it

// What loading depends on outside the store.
struct JobSurroundings {
  ModuleFinder modules;
  std::string homeDirectory;     // the root of the program's drive, index 0
  std::size_t audioDevices = 0;  // lengths of the device lists
  std::size_t midiDevices = 0;
  std::function<bool(const std::string&)> isDirectory;
  // A path of an old list, "X:\a\b", as a native path; other paths as they are.
  std::function<std::string(const std::string&)> nativePath;
  // The index of the drive on which a native path lies.
  std::function<std::int32_t(const std::string&)> driveOf;
  // The path lies in a CD-ROM drive that holds no audio CD.
  std::function<bool(const std::string&)> onDataDisc;
};

struct AudioCd;
// On this machine; the lengths of the device lists are left at 0. audioCd: looks into a drive, FindAudioCd.
[[nodiscard]] JobSurroundings JobSurroundingsOf(
    const VolumeTable& volumes, ModuleFinder modules,
    std::function<std::optional<AudioCd>(const std::string& directory)> audioCd);

struct StoredJobs {
  Job defaultJob;
  std::vector<Job> saved;
};

// One job from the values of its key. number: 0 for the default job.
[[nodiscard]] Job JobFromValues(const RegistryValues& values, std::size_t number,
                                const JobSurroundings& surroundings);
// The whole content of the job's key.
[[nodiscard]] RegistryValues ValuesOfJob(const Job& job, const ModuleFinder& modules);

// The values of all jobs, the default job first. Fails only when the registry itself cannot be read; of a
// damaged key nothing is left, and where the number of jobs is lost, as many are read as there are.
[[nodiscard]] Result<std::vector<RegistryValues>> ReadJobs(const Registry& registry);
// All jobs and "Job Number" in one transaction: the store holds all of it or what it held before.
[[nodiscard]] Outcome WriteJobs(Registry& registry, const std::vector<RegistryValues>& jobs);

[[nodiscard]] Result<StoredJobs> LoadJobs(const Registry& registry, const JobSurroundings& surroundings);
[[nodiscard]] StoredJobs JobsFrom(const std::vector<RegistryValues>& values,
                                  const JobSurroundings& surroundings);
[[nodiscard]] Outcome SaveJobs(Registry& registry, const Job& defaultJob,
                               const std::vector<const Job*>& saved, const ModuleFinder& modules);

}  // namespace ts5
