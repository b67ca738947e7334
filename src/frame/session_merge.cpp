#include "frame/session_merge.h"

#include <algorithm>
#include <array>
#include <map>
#include <utility>

#include "frame/job_store.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using Entries = std::vector<const RegistryValues::Map::value_type*>;
using Groups = std::map<std::string, Entries>;

Groups GroupsOf(const RegistryValues& values, const ValueGrouping& grouping) {
  Groups groups;
  for (const auto& entry : values.All()) groups[grouping(entry.first)].push_back(&entry);
  return groups;
}

const Entries& In(const Groups& groups, const std::string& group) {
  static const Entries kNone;
  const auto found = groups.find(group);
  return found == groups.end() ? kNone : found->second;
}

bool Same(const Entries& a, const Entries& b) {
  return std::ranges::equal(a, b, [](const auto* one, const auto* other) {
    return EqualsIgnoringCase(one->first, other->first) && one->second == other->second;
  });
}

// The values of groups, in the order of their names.
RegistryValues ValuesOf(const std::map<std::string, const Entries*>& groups) {
  Entries all;
  for (const auto& [group, entries] : groups) all.insert(all.end(), entries->begin(), entries->end());
  std::ranges::sort(all, [](const auto* a, const auto* b) { return LessIgnoringCase{}(a->first, b->first); });
  RegistryValues values;
  for (const auto* const entry : all) values.Set(entry->first, entry->second);
  return values;
}

struct Prefix {
  std::string_view start;
  std::string_view group;
};
constexpr std::array kJobGroups = {
    Prefix{"sourcefilelist", "list"},  Prefix{"sourcelistfile", "list"},   Prefix{"sourcefile", "directory"},
    Prefix{"sourcepath", "directory"}, Prefix{"sourcedrive", "directory"}, Prefix{"melody", "melody"},
    Prefix{"destfile", "destination"},
};
// What one would not miss: how the job looks, and what the filters hold that it had before.
constexpr std::array<std::string_view, 8> kLooks = {"title",        "description", "sizingrect",
                                                    "filterstatus", "filterfixed", "sourcemediumfilewinmax",
                                                    "destscreen?",  "destdevice"};
constexpr std::array<std::string_view, 3> kPlaces = {"directory", "destination", "filter"};

}  // namespace

std::string EachByItself(std::string_view name) {
  return ToLower(name);
}

std::string JobValueGroup(std::string_view name) {
  std::string group = ToLower(name);
  for (const Prefix& prefix : kJobGroups) {
    if (group.starts_with(prefix.start)) return std::string(prefix.group);
  }
  return group;
}

MergedValues MergeValues(const ThreeWay& sides, const ValueGrouping& grouping) {
  const Groups stored = GroupsOf(sides.stored, grouping);
  const Groups loaded = GroupsOf(sides.loaded, grouping);
  const Groups ours = GroupsOf(sides.ours, grouping);
  const Groups theirs = GroupsOf(sides.theirs, grouping);
  std::map<std::string, const Entries*> chosen;
  MergedValues merged;
  for (const Groups* const side : {&ours, &theirs, &loaded}) {
    for (const auto& [group, entries] : *side) {
      const auto [place, isNew] = chosen.try_emplace(group, nullptr);
      if (!isNew) continue;
      const Entries& now = In(theirs, group);
      const bool weChanged = !Same(In(ours, group), In(loaded, group));
      const bool theyChanged = !Same(now, In(stored, group));
      // What the store never held is filled in.
      const bool take = weChanged || (now.empty() && !theyChanged);
      place->second = take ? &In(ours, group) : &now;
      if (weChanged && theyChanged && !Same(In(ours, group), now)) merged.conflicts.push_back(group);
    }
  }
  merged.values = ValuesOf(chosen);
  return merged;
}

RegistryValues KnownAfter(const RegistryValues& known, const RegistryValues& ours,
                          const RegistryValues& merged, const ValueGrouping& grouping) {
  const Groups before = GroupsOf(known, grouping);
  const Groups own = GroupsOf(ours, grouping);
  const Groups now = GroupsOf(merged, grouping);
  std::map<std::string, const Entries*> chosen;
  for (const Groups* const side : {&before, &now}) {
    for (const auto& [group, entries] : *side) {
      const Entries& written = In(now, group);
      chosen[group] = Same(In(own, group), written) ? &written : &In(before, group);
    }
  }
  return ValuesOf(chosen);
}

bool IsConflict(const MergedValues& merged, bool isDefault) {
  return std::ranges::any_of(merged.conflicts, [isDefault](const std::string& group) {
    if (isDefault && std::ranges::find(kPlaces, group) != kPlaces.end()) return false;
    return !group.starts_with(kOtherFilters) && std::ranges::find(kLooks, group) == kLooks.end();
  });
}

std::vector<std::optional<std::size_t>> PlacesOf(const std::vector<const JobOrigin*>& origins,
                                                 const std::vector<RegistryValues>& theirs) {
  std::vector<std::optional<std::size_t>> places(origins.size());
  std::vector<bool> taken(theirs.size());
  const auto take = [&](std::size_t job, std::size_t place) {
    places[job] = place;
    taken[place] = true;
  };
  if (!taken.empty()) taken[0] = true;
  for (std::size_t i = 0; i < origins.size(); ++i) {
    const std::size_t number = origins[i]->number;
    if (number < theirs.size() && (number == 0 || theirs[number] == origins[i]->stored)) take(i, number);
  }
  for (std::size_t i = 0; i < origins.size(); ++i) {
    for (std::size_t n = 1; n < theirs.size() && !places[i]; ++n) {
      if (!taken[n] && theirs[n] == origins[i]->stored) take(i, n);
    }
  }
  // Changed ones by their titles, where they were before if they can be there.
  const auto sameTitle = [&](std::size_t i, std::size_t n) {
    return !taken[n] && theirs[n].Text("Title") == origins[i]->stored.Text("Title");
  };
  for (std::size_t i = 0; i < origins.size(); ++i) {
    const std::size_t number = origins[i]->number;
    if (!places[i] && number < theirs.size() && sameTitle(i, number)) take(i, number);
  }
  for (std::size_t i = 0; i < origins.size(); ++i) {
    for (std::size_t n = 1; n < theirs.size() && !places[i]; ++n) {
      if (sameTitle(i, n)) take(i, n);
    }
  }
  for (std::size_t i = 0; i < origins.size(); ++i) {
    const std::size_t number = origins[i]->number;
    if (!places[i] && number < theirs.size() && !taken[number]) take(i, number);
  }
  return places;
}

std::vector<MergedJob> MergeJobs(const std::vector<SessionJob>& ours, const std::vector<JobOrigin>& removed,
                                 const std::vector<RegistryValues>& theirs) {
  std::vector<const JobOrigin*> origins;
  std::vector<std::optional<std::size_t>> owners;  // of the origins: a job of the session, or a deleted one
  for (std::size_t i = 0; i < ours.size(); ++i) {
    if (!ours[i].origin) continue;
    origins.push_back(&*ours[i].origin);
    owners.emplace_back(i);
  }
  for (const JobOrigin& origin : removed) {
    origins.push_back(&origin);
    owners.emplace_back();
  }
  const auto places = PlacesOf(origins, theirs);
  std::map<std::size_t, std::size_t> originAt;  // number in the store -> origin
  for (std::size_t i = 0; i < places.size(); ++i) {
    if (places[i]) originAt[*places[i]] = i;
  }

  std::vector<MergedJob> jobs;
  std::vector<const RegistryValues*> kept;  // those of the others that conflict with ours
  std::vector<bool> merged(ours.size());
  for (std::size_t n = 0; n < theirs.size(); ++n) {
    const auto known = originAt.find(n);
    if (known == originAt.end()) {
      if (n > 0) jobs.push_back({theirs[n], std::nullopt});
      continue;
    }
    const JobOrigin& origin = *origins[known->second];
    if (const auto job = owners[known->second]) {
      MergedValues both =
          MergeValues({origin.known, origin.loaded, ours[*job].ours, theirs[n]}, JobValueGroup);
      if (IsConflict(both, n == 0)) kept.push_back(&theirs[n]);
      jobs.push_back({std::move(both.values), *job});
      merged[*job] = true;
    } else if (!(theirs[n] == origin.known)) {
      jobs.push_back({theirs[n], std::nullopt});  // changed by others since it was deleted here
    }
  }
  for (std::size_t i = 0; i < ours.size(); ++i) {
    // What others deleted stays deleted, unless it was changed here.
    const auto& origin = ours[i].origin;
    const bool gone = origin && i > 0 && ours[i].ours == origin->loaded;
    if (merged[i] || gone) continue;
    jobs.insert(i == 0 ? jobs.begin() : jobs.end(), MergedJob{ours[i].ours, i});
  }
  for (const RegistryValues* const values : kept) {
    const bool there = std::ranges::any_of(jobs, [&](const MergedJob& job) { return job.values == *values; });
    if (!there) jobs.push_back({*values, std::nullopt});
  }
  return jobs;
}

}  // namespace ts5
