// The settings page as logic: what its controls hold, which of them are enabled, and what OK does with them.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "frame/settings.h"
#include "platform/base/strings.h"

namespace ts5 {

// What the controls of both pages hold.
struct SettingsForm {
  JobSaving jobSaving = JobSaving::Automatic;
  bool askBeforeEnd = true;
  OldSearchResults oldSearchResults = OldSearchResults::Delete;
  bool searchWholePath = false;
  SkinLayout skinLayout = SkinLayout::Stavora5;
  std::string artworkerLayoutDirectory;
  std::string playbackParameterDirectory;
  bool noTargetDefault = false;
  bool sourceDirectoryAsTarget = true;
  std::string targetDirectory;
  bool useSuffix = true;
  std::string suffix;
  bool overwriteTarget = true;
  std::int32_t id3Version = 3;
};
[[nodiscard]] SettingsForm FormOf(const Settings& settings);

// The controls of the conversion page that depend on others.
struct ConversionPageEnabling {
  bool directoryChoice = true;  // both radio buttons
  bool directory = true;        // field and browse button
  bool suffixChoice = true;
  bool suffix = true;
};
[[nodiscard]] ConversionPageEnabling EnablingOf(const SettingsForm& form);

enum class SettingsField : std::uint8_t {
  None,
  ArtworkerLayoutDirectory,
  PlaybackParameterDirectory,
  TargetDirectory,
  Suffix
};

struct SettingsCheck {
  // The settings as they are now; unchanged when something is wrong, so that Cancel has nothing to take back.
  Settings settings;
  // What is wrong: the dialog shows the message, selects the field and stays open.
  std::optional<TextId> message;
  SettingsField field = SettingsField::None;

  [[nodiscard]] bool Accepted() const { return !message; }
};
// OK. Another appearance becomes the pending one and is shown at the next start.
[[nodiscard]] SettingsCheck ValidateSettings(const Settings& current, const SettingsForm& form);

}  // namespace ts5
