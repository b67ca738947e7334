// The settings of the program: everything that is not part of a job.
#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace ts5 {

// All that the program keeps lies below this key of HKEY_LOCAL_MACHINE.
inline constexpr std::string_view kSettingsKey = R"(software\qlw\Stavora-dialog\5.0)";

inline constexpr std::size_t kMaxSuffixCharacters = 4;
inline constexpr std::size_t kMaxMixerNameCharacters = 63;

enum class JobSaving : std::int32_t { Never = 0, Automatic = 1, Ask = 2 };          // at a switch of jobs
enum class OldSearchResults : std::int32_t { Extend = 0, Delete = 1, Ask = 2 };     // before a new search
enum class SkinLayout : std::int32_t { Windows = -1, Stavora4 = 0, Stavora5 = 1 };  // appearance

struct WindowRectangle {
  std::int32_t left = -1;
  std::int32_t top = 0;
  std::int32_t right = 0;
  std::int32_t bottom = 0;
  bool operator==(const WindowRectangle&) const = default;
};

struct Settings {
  // Recording from the sound card
  bool askForDeviceConnectError = true;
  bool askForDeviceConnectNoMixer = true;
  std::int32_t recordMixerPosition = -1;  // index of the mixer line, -1 none
  std::string recordMixerName;            // at most kMaxMixerNameCharacters
  std::string synthesizerDirectory;       // with the synthesiser's configuration file

  // Windows and the file search
  std::optional<WindowRectangle> fileSelectPosition;
  std::optional<WindowRectangle> viewResultPosition;
  std::optional<WindowRectangle> fileSearchPosition;
  bool fileSearchSubdirectories = true;
  std::string fileSearchPattern;
  std::string fileSearchDirectories;
  std::optional<WindowRectangle> mainWindowPosition;
  bool mainWindowMaximised = true;
  // The columns of the file list that show facts, and what it is sorted by: frame/file_columns, list_order.
  std::string fileColumns = "Length Size Date Key Metre Tempo Voices";
  std::string fileSorting;
  std::int32_t listeningVolume = 0;  // of the player under the list, hundredths of a decibel
  bool showAllFilters = false;       // the filter bar shows what does not fit the selection, too
  std::string driveDirectories;      // shown last, of each drive: frame/drive_directories

  // General
  bool askBeforeEnd = true;  // also when no job runs
  JobSaving jobSaving = JobSaving::Automatic;
  OldSearchResults oldSearchResults = OldSearchResults::Delete;
  bool searchWholePath = false;                         // result lists show full path names
  SkinLayout skinLayout = SkinLayout::Stavora5;         // what the running program shows
  SkinLayout pendingSkinLayout = SkinLayout::Stavora5;  // what is saved, for the next start

  // Directories (native paths)
  std::string artworkerLayoutDirectory;
  std::string playbackParameterDirectory;
  std::string lastSelectedFolder;

  // Destinations of conversions
  bool sourceDirectoryAsTarget = true;
  std::string targetDirectory;   // when sourceDirectoryAsTarget is false
  bool useSuffix = true;         // append the suffix when the format does not change
  std::string suffix = "cnv";    // at most kMaxSuffixCharacters
  bool noTargetDefault = false;  // no automatic destination name for single items
  bool overwriteTarget = true;   // false: existing targets are numbered
  std::int32_t id3Version = 3;   // 3 or 4: of new tags in MPEG audio files

  bool operator==(const Settings&) const = default;
};

}  // namespace ts5
