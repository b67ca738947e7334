#include "frame/session_store.h"

#include <utility>

#include "frame/settings.h"

namespace ts5 {
namespace {

std::string SettingsKey() {
  return std::string(kLocalMachine) + "\\" + std::string(kSettingsKey);
}

RegistryValues ValuesOf(const Settings& settings) {
  RegistryValues values;
  StoreSettings(settings, values);
  return values;
}

// A damaged key holds nothing.
Result<RegistryValues> ReadKey(const Registry& registry, const std::string& key) {
  auto values = registry.Read(key);
  if (!values && values.error() == Outcome::WrongFormat) return RegistryValues{};
  return values;
}

}  // namespace

Settings SessionStore::ReadSettings(const Registry& registry) {
  Settings settings = LoadSettings(registry, ground_);
  settingsStored_ = ReadKey(registry, SettingsKey()).value_or(RegistryValues{});
  settingsLoaded_ = ValuesOf(settings);
  return settings;
}

Result<StoredJobs> SessionStore::ReadJobs(const Registry& registry, JobSurroundings around) {
  around_ = std::move(around);
  auto values = ts5::ReadJobs(registry);
  if (!values) return Failure(values.error());
  jobsRead_ = std::move(*values);
  return JobsFrom(jobsRead_, around_);
}

void SessionStore::Adopt(const Jobs& jobs) {
  jobsRead_.resize(jobs.Count() + 1);
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    const RegistryValues& read = jobsRead_[i];
    origins_[jobs[i].Id()] = {i, read, read, ValuesOfJob(jobs[i], jobs.Modules())};
  }
  jobsRead_.clear();
}

std::vector<SessionJob> SessionStore::SessionJobs(const Jobs& jobs) const {
  std::vector<SessionJob> all;
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    const auto origin = origins_.find(jobs[i].Id());
    all.push_back({ValuesOfJob(jobs[i], jobs.Modules()),
                   origin == origins_.end() ? std::nullopt : std::optional(origin->second)});
  }
  return all;
}

std::vector<JobOrigin> SessionStore::Removed(const Jobs& jobs) const {
  std::vector<JobOrigin> removed;
  for (const auto& [id, origin] : origins_) {
    if (!jobs.Find(id)) removed.push_back(origin);
  }
  return removed;
}

Outcome SessionStore::Save(Registry& registry, const Settings& settings, const Jobs& jobs) {
  const std::vector<SessionJob> ours = SessionJobs(jobs);
  const RegistryValues ourSettings = ValuesOf(settings);
  std::vector<MergedJob> merged;
  RegistryValues mergedSettings;
  const Outcome saved = registry.Transaction([&] {
    const auto theirs = ts5::ReadJobs(registry);
    const auto theirSettings = ReadKey(registry, SettingsKey());
    if (!theirs || !theirSettings) return theirs ? theirSettings.error() : theirs.error();
    mergedSettings =
        MergeValues({settingsStored_, settingsLoaded_, ourSettings, *theirSettings}, EachByItself).values;
    merged = MergeJobs(ours, Removed(jobs), *theirs);
    if (const Outcome written = registry.Write(SettingsKey(), mergedSettings); Failed(written))
      return written;
    std::vector<RegistryValues> values;
    for (const MergedJob& job : merged) values.push_back(job.values);
    return WriteJobs(registry, values);
  });
  if (Failed(saved)) return saved;
  settingsStored_ = mergedSettings;
  settingsLoaded_ = ourSettings;
  std::erase_if(origins_, [&](const auto& origin) { return !jobs.Find(origin.first); });
  for (std::size_t n = 0; n < merged.size(); ++n) {
    const auto index = merged[n].session;
    if (!index) continue;
    JobOrigin& origin = origins_[jobs[*index].Id()];
    const RegistryValues& mine = ours[*index].ours;
    origin = {n, merged[n].values, KnownAfter(origin.known, mine, merged[n].values, JobValueGroup), mine};
  }
  return saved;
}

Result<bool> SessionStore::TakeOver(const Registry& registry, Settings& settings, Jobs& jobs) {
  const auto theirs = ts5::ReadJobs(registry);
  const auto theirSettings = ReadKey(registry, SettingsKey());
  if (!theirs || !theirSettings) return Failure(theirs ? theirSettings.error() : theirs.error());
  const bool settingsChanged = TakeOverSettings(*theirSettings, settings);
  return TakeOverJobs(*theirs, jobs) || settingsChanged;
}

bool SessionStore::TakeOverSettings(const RegistryValues& theirs, Settings& settings) {
  if (theirs == settingsStored_) return false;
  const RegistryValues ours = ValuesOf(settings);
  const MergedValues merged = MergeValues({settingsStored_, settingsLoaded_, ours, theirs}, EachByItself);
  Settings taken = SettingsFrom(merged.values, ground_);
  taken.skinLayout = settings.skinLayout;  // the running program keeps what it shows
  settingsStored_ = theirs;
  settingsLoaded_ = ValuesOf(SettingsFrom(theirs, ground_));
  return !(std::exchange(settings, std::move(taken)) == settings);
}

bool SessionStore::TakeOverJob(std::size_t place, const RegistryValues& theirs, Job& job) {
  JobOrigin& origin = origins_[job.Id()];
  const RegistryValues ours = ValuesOfJob(job, around_.modules);
  const MergedValues merged = MergeValues({origin.known, origin.loaded, ours, theirs}, JobValueGroup);
  if (IsConflict(merged, place == 0)) return false;  // both are kept when the session is saved
  const Job taken = JobFromValues(merged.values, place, around_);
  origin = {place, theirs, theirs, ValuesOfJob(JobFromValues(theirs, place, around_), around_.modules)};
  job = taken;  // a copy: the job keeps its run
  return true;
}

bool SessionStore::TakeOverJobs(const std::vector<RegistryValues>& theirs, Jobs& jobs) {
  const std::vector<JobOrigin> removed = Removed(jobs);
  std::vector<const JobOrigin*> origins;
  std::vector<JobId> ids;
  for (std::size_t i = 0; i <= jobs.Count(); ++i) {
    const auto origin = origins_.find(jobs[i].Id());
    if (origin == origins_.end()) continue;
    origins.push_back(&origin->second);
    ids.push_back(origin->first);
  }
  for (const JobOrigin& origin : removed) origins.push_back(&origin);
  const auto places = PlacesOf(origins, theirs);

  bool changed = false;
  std::vector<bool> known(theirs.size());
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i]) known[*places[i]] = true;
    if (i >= ids.size()) continue;
    const std::size_t number = *jobs.Find(ids[i]);
    const bool free = number != jobs.ActiveNumber() && jobs[number].State() == RunState::Idle;
    JobOrigin& origin = origins_.at(ids[i]);
    if (places[i] && theirs[*places[i]] == origin.known) {
      origin.number = *places[i];
      origin.stored = origin.known;
    } else if (places[i] && free) {
      changed = TakeOverJob(*places[i], theirs[*places[i]], jobs[number]) || changed;
    } else if (!places[i] && free && number > 0 &&
               ValuesOfJob(jobs[number], around_.modules) == origin.loaded) {
      jobs.Drop(number);
      origins_.erase(ids[i]);
      changed = true;
    }
  }
  for (std::size_t n = 1; n < theirs.size(); ++n) {
    if (known[n]) continue;
    const std::size_t number = jobs.Append(JobFromValues(theirs[n], n, around_));
    origins_[jobs[number].Id()] = {n, theirs[n], theirs[n], ValuesOfJob(jobs[number], around_.modules)};
    changed = true;
  }
  return changed;
}

}  // namespace ts5
