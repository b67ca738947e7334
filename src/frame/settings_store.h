// The settings in the registry: texts below kSettingsKey, read at the start and written at the end.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "frame/settings.h"
#include "platform/base/outcome.h"
#include "platform/store/registry.h"
#include "platform/store/registry_values.h"

namespace ts5 {

// What the settings rest on outside the registry.
struct SettingsGround {
  std::string programDirectory;  // holds the default directories
  std::string driveRoot;         // the first folder that a folder dialog shows
  // The native path of a stored path that reads like "C:\a\b"; nothing when there is none. May be missing.
  std::function<std::optional<std::string>(const std::string&)> findPath;
};
// The directories of this user, and the volume table.
[[nodiscard]] SettingsGround DefaultSettingsGround();

// A value that is missing, does not fit its limit or is no number of its range takes its default.
[[nodiscard]] Settings SettingsFrom(const RegistryValues& values, const SettingsGround& ground);
// Sets the values of the settings and leaves all others; what has no value is taken out.
void StoreSettings(const Settings& settings, RegistryValues& values);

// Never fails: what cannot be read takes its default. Makes the default directories, where they are the ones
// in use.
[[nodiscard]] Settings LoadSettings(const Registry& registry, const SettingsGround& ground);
// Part of a transaction that is open, or one of its own. WriteFailed and what else the registry reports.
[[nodiscard]] Outcome SaveSettings(Registry& registry, const Settings& settings);

// The recording mixer: where the line at the stored place has another name by now, place and name are
// forgotten. lineName: the name of a line, nothing when there is none at that place.
void CheckRecordMixer(Settings& settings,
                      const std::function<std::optional<std::string>(std::int32_t)>& lineName);

// A suffix as it is taken: at most kMaxSuffixCharacters, without characters that no file name can hold.
[[nodiscard]] std::string CleanSuffix(std::string_view text);

}  // namespace ts5
