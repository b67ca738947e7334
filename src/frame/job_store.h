// The job store: every job is a key "Jobs\Job 0000" (the default job), "Jobs\Job 0001"... below the settings
// key. Values are texts; numbers are decimal. What is missing or does not fit takes its default; nothing
// stops loading.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "frame/filter_module.h"
#include "frame/job.h"
#include "platform/outcome.h"
#include "platform/registry_values.h"

namespace ts5 {

class Registry;
class VolumeTable;

// More jobs than this are not read, whatever "Job Number" says.
inline constexpr std::size_t kMaxJobs = 9999;
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

// On this machine; the lengths of the device lists are left at 0.
[[nodiscard]] JobSurroundings JobSurroundingsOf(const VolumeTable& volumes, ModuleFinder modules);

struct StoredJobs {
  Job defaultJob;
  std::vector<Job> saved;
};

// One job from the values of its key. number: 0 for the default job.
[[nodiscard]] Job JobFromValues(const RegistryValues& values, std::size_t number,
                                const JobSurroundings& surroundings);
// The whole content of the job's key.
[[nodiscard]] RegistryValues ValuesOfJob(const Job& job, const ModuleFinder& modules);

// Fails only when the registry itself cannot be read.
[[nodiscard]] Result<StoredJobs> LoadJobs(const Registry& registry, const JobSurroundings& surroundings);
// All jobs and "Job Number" in one transaction: the store holds all of it or what it held before.
[[nodiscard]] Outcome SaveJobs(Registry& registry, const Job& defaultJob,
                               const std::vector<const Job*>& saved, const ModuleFinder& modules);

}  // namespace ts5
