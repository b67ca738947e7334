// The settings and jobs of a session and their way back to the store, which other programs may change
// meanwhile: "ts5-batch", or a second workbench.
//
//   SessionStore store(ground, surroundings);
//   Settings settings = store.ReadSettings(registry);
//   Jobs jobs(*store.ReadJobs(registry), modules);
//   store.Adopt(jobs);
//   ... store.TakeOver(registry, settings, jobs); ...
//   store.Save(registry, settings, jobs);
//
// Used from the thread that owns the jobs only.
#pragma once

#include <map>
#include <vector>

#include "frame/job_store.h"
#include "frame/jobs.h"
#include "frame/session_merge.h"
#include "frame/settings_store.h"
#include "platform/store/registry.h"

namespace ts5 {

class SessionStore {
 public:
  explicit SessionStore(SettingsGround ground) : ground_(std::move(ground)) {}

  [[nodiscard]] Settings ReadSettings(const Registry& registry);
  // Fails only when the registry cannot be read.
  [[nodiscard]] Result<StoredJobs> ReadJobs(const Registry& registry, JobSurroundings around);
  // The jobs that were made of them. What they hold now counts as not changed by the session.
  void Adopt(const Jobs& jobs);

  // Writes what the session changed since it read or wrote last, in one transaction; all else in the store
  // stays. A job of others that the session does not know keeps its place.
  [[nodiscard]] Outcome Save(Registry& registry, const Settings& settings, const Jobs& jobs);
  // Takes over what others changed: settings, new jobs, jobs that have gone, and all jobs that are neither
  // active nor running, as far as the session has not changed the same. True when there was anything.
  [[nodiscard]] Result<bool> TakeOver(const Registry& registry, Settings& settings, Jobs& jobs);

 private:
  [[nodiscard]] std::vector<SessionJob> SessionJobs(const Jobs& jobs) const;
  [[nodiscard]] std::vector<JobOrigin> Removed(const Jobs& jobs) const;
  bool TakeOverSettings(const RegistryValues& theirs, Settings& settings);
  bool TakeOverJobs(const std::vector<RegistryValues>& theirs, Jobs& jobs);
  bool TakeOverJob(std::size_t place, const RegistryValues& theirs, Job& job);

  SettingsGround ground_;
  JobSurroundings around_;
  RegistryValues settingsStored_;
  RegistryValues settingsLoaded_;
  std::vector<RegistryValues> jobsRead_;
  std::map<JobId, JobOrigin> origins_;
};

}  // namespace ts5
