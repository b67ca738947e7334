#include "frame/settings_store.h"

#include <array>
#include <utility>
#include <vector>

#include "platform/base/casts.h"
#include "platform/base/text.h"
#include "platform/disc/volumes.h"
#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kLayoutDirectory = "layoutdir";
constexpr std::string_view kParameterSetDirectory = "stvparamsets";
constexpr std::string_view kSynthesizerDirectory = "timidity";

std::string Key() {
  return std::string(kLocalMachine) + '\\' + std::string(kSettingsKey);
}

// One value of the settings. load changes nothing when the stored text does not fit; save gives the text, or
// nothing when there is none to keep.
struct SettingRow {
  std::string_view name;
  std::function<void(Settings&, std::string_view, const SettingsGround&)> load;
  std::function<std::optional<std::string>(const Settings&)> save;
};

SettingRow Flag(std::string_view name, bool Settings::*member) {
  return {name,
          [member](Settings& s, std::string_view text, const SettingsGround&) { s.*member = text == "1"; },
          [member](const Settings& s) { return std::string(s.*member ? "1" : "0"); }};
}

// A number in [least, most]; T is an integer or an enumeration.
template <typename T>
SettingRow Number(std::string_view name, T Settings::*member, std::int32_t least, std::int32_t most) {
  return {name,
          [=](Settings& s, std::string_view text, const SettingsGround&) {
            const auto value = ParseInteger(Trim(text));
            if (value && *value >= least && *value <= most) s.*member = static_cast<T>(*value);
          },
          [member](const Settings& s) { return std::to_string(static_cast<std::int32_t>(s.*member)); }};
}

std::optional<std::string> UnlessEmpty(const std::string& text) {
  return text.empty() ? std::nullopt : std::optional(text);
}

SettingRow FreeText(std::string_view name, std::string Settings::*member) {
  return {name, [member](Settings& s, std::string_view text, const SettingsGround&) { s.*member = text; },
          [member](const Settings& s) { return UnlessEmpty(s.*member); }};
}

SettingRow Path(std::string_view name, std::string Settings::*member) {
  return {name,
          [member](Settings& s, std::string_view text, const SettingsGround& ground) {
            std::string path(text);
            if (!path.empty() && !IsAbsolutePath(path)) return;
            if (!path.empty() && !path.starts_with('/')) {
              auto found = ground.findPath ? ground.findPath(path) : std::nullopt;
              if (!found) return;
              path = std::move(*found);
            }
            if (path.empty() || IsUsablePath(path)) s.*member = std::move(path);
          },
          [member](const Settings& s) { return s.*member; }};
}

SettingRow Rectangle(std::string_view name, std::optional<WindowRectangle> Settings::*member) {
  return {name,
          [member](Settings& s, std::string_view text, const SettingsGround&) {
            const auto parts = Split(Trim(text), ' ');
            std::array<std::int32_t, 4> edges{};
            if (parts.size() != edges.size()) return;
            for (std::size_t i = 0; i < edges.size(); ++i) {
              const auto value = ParseInteger(parts[i]);
              if (!value || !NarrowTo<std::int32_t>(*value)) return;
              edges[i] = static_cast<std::int32_t>(*value);
            }
            if (edges[0] != -1) s.*member = WindowRectangle{edges[0], edges[1], edges[2], edges[3]};
          },
          [member](const Settings& s) -> std::optional<std::string> {
            const auto& r = s.*member;
            if (!r) return std::nullopt;
            return Format("%i %i %i %i", r->left, r->top, r->right, r->bottom);
          }};
}

SettingRow MixerName() {
  SettingRow row = FreeText("RecordMixerName", &Settings::recordMixerName);
  row.load = [](Settings& s, std::string_view text, const SettingsGround&) {
    if (CharacterCount(text) <= kMaxMixerNameCharacters) s.recordMixerName = text;
  };
  row.save = [](const Settings& s) { return s.recordMixerName; };
  return row;
}

SettingRow Suffix() {
  return {"SuffixConvert",
          [](Settings& s, std::string_view text, const SettingsGround&) {
            if (CleanSuffix(text) == text) s.suffix = text;
          },
          [](const Settings& s) { return s.suffix; }};
}

// The running program keeps the appearance it started with; the pending one is what is saved.
SettingRow Appearance() {
  SettingRow row = Number("SkinLayout", &Settings::pendingSkinLayout, -1, 1);
  row.load = [load = row.load](Settings& s, std::string_view text, const SettingsGround& ground) {
    load(s, text, ground);
    s.skinLayout = s.pendingSkinLayout;
  };
  return row;
}

const std::vector<SettingRow>& Rows() {
  static const std::vector<SettingRow> rows = {
      Flag("AskForDevConnectError", &Settings::askForDeviceConnectError),
      Flag("AskForDevConnectNoMixer", &Settings::askForDeviceConnectNoMixer),
      Number("RecordMixerPosition", &Settings::recordMixerPosition, -1, INT32_MAX),
      MixerName(),
      Path("Timidity Dir", &Settings::synthesizerDirectory),
      Rectangle("FileSelectDlgPos", &Settings::fileSelectPosition),
      Rectangle("ViewResultDlgPos", &Settings::viewResultPosition),
      Rectangle("FileSearchDlgPos", &Settings::fileSearchPosition),
      Flag("FileSearchSubDirs", &Settings::fileSearchSubdirectories),
      FreeText("FileSearchPattern", &Settings::fileSearchPattern),
      FreeText("FileSearchDirs", &Settings::fileSearchDirectories),
      Rectangle("MainWindowPos", &Settings::mainWindowPosition),
      Flag("MainWindowMaximised", &Settings::mainWindowMaximised),
      FreeText("FileListColumns", &Settings::fileColumns),
      FreeText("FileListSorting", &Settings::fileSorting),
      Number("ListeningVolume", &Settings::listeningVolume, -10'000, 0),
      Flag("ShowAllFilters", &Settings::showAllFilters),
      FreeText("DriveDirectories", &Settings::driveDirectories),
      Flag("AskBeforeEnd", &Settings::askBeforeEnd),
      Number("Job Saving", &Settings::jobSaving, 0, 2),
      Number("MelSearchResults", &Settings::oldSearchResults, 0, 2),
      Flag("MelSearchWholePath", &Settings::searchWholePath),
      Appearance(),
      Path("ArtworkerLayoutDir", &Settings::artworkerLayoutDirectory),
      Path("stvPlayParamSetDir", &Settings::playbackParameterDirectory),
      Path("LastSelectedFolder", &Settings::lastSelectedFolder),
      Flag("SrcDirAsTrgDir", &Settings::sourceDirectoryAsTarget),
      Path("TrgDirConvert", &Settings::targetDirectory),
      Flag("UseSuffixConvert", &Settings::useSuffix),
      Suffix(),
      Flag("VorgabeConvert", &Settings::noTargetDefault),
      Flag("OverwriteTarget", &Settings::overwriteTarget),
      Number("Id3Version", &Settings::id3Version, 3, 4),
  };
  return rows;
}

}  // namespace

SettingsGround DefaultSettingsGround() {
  return {
      ProgramDirectory(), HomeDirectory(),
      [volumes = VolumeTable::OfThisMachine()](const std::string& path) { return volumes.FindPath(path); }};
}

std::string CleanSuffix(std::string_view text) {
  std::string suffix(FirstCharacters(text, kMaxSuffixCharacters));
  std::erase_if(suffix, [](char c) { return c == '/' || c == '\\' || c == '\0'; });
  return suffix;
}

Settings SettingsFrom(const RegistryValues& values, const SettingsGround& ground) {
  Settings settings;
  settings.artworkerLayoutDirectory = JoinPath(ground.programDirectory, kLayoutDirectory);
  settings.playbackParameterDirectory = JoinPath(ground.programDirectory, kParameterSetDirectory);
  settings.synthesizerDirectory = JoinPath(ground.programDirectory, kSynthesizerDirectory);
  settings.lastSelectedFolder = ground.driveRoot;
  for (const SettingRow& row : Rows()) {
    if (const auto text = values.Text(row.name)) row.load(settings, *text, ground);
  }
  return settings;
}

void StoreSettings(const Settings& settings, RegistryValues& values) {
  for (const SettingRow& row : Rows()) {
    if (const auto text = row.save(settings)) {
      values.SetText(row.name, *text);
    } else {
      values.Erase(row.name);
    }
  }
}

Settings LoadSettings(const Registry& registry, const SettingsGround& ground) {
  Settings settings = SettingsFrom(registry.Read(Key()).value_or(RegistryValues{}), ground);
  for (const std::string& directory :
       {settings.artworkerLayoutDirectory, settings.playbackParameterDirectory}) {
    // A directory of the user's own choice is not made again when it is gone: he is asked for another one.
    if (DirectoryOf(directory) == ground.programDirectory) (void)MakeDirectories(directory);
  }
  return settings;
}

Outcome SaveSettings(Registry& registry, const Settings& settings) {
  return registry.Transaction([&] {
    auto values = registry.Read(Key());
    if (!values) return values.error();
    StoreSettings(settings, *values);
    return registry.Write(Key(), *values);
  });
}

void CheckRecordMixer(Settings& settings,
                      const std::function<std::optional<std::string>(std::int32_t)>& lineName) {
  if (settings.recordMixerPosition < 0 || settings.recordMixerName.empty()) return;
  if (lineName(settings.recordMixerPosition) == settings.recordMixerName) return;
  settings.recordMixerPosition = -1;
  settings.recordMixerName.clear();
}

}  // namespace ts5
