#include "frame/settings_form.h"

#include "frame/settings_store.h"
#include "frame/texts.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

// What is relative would be another directory at the next start.
bool IsUsableDirectory(const std::string& path) {
  return path.starts_with('/') && IsUsablePath(path) && IsDirectory(path);
}

}  // namespace

SettingsForm FormOf(const Settings& settings) {
  return {settings.jobSaving,
          settings.askBeforeEnd,
          settings.oldSearchResults,
          settings.searchWholePath,
          settings.pendingSkinLayout,
          settings.artworkerLayoutDirectory,
          settings.playbackParameterDirectory,
          settings.noTargetDefault,
          settings.sourceDirectoryAsTarget,
          settings.targetDirectory,
          settings.useSuffix,
          settings.suffix,
          settings.overwriteTarget,
          settings.id3Version};
}

ConversionPageEnabling EnablingOf(const SettingsForm& form) {
  const bool choices = !form.noTargetDefault;
  return {.directoryChoice = choices,
          .directory = choices && !form.sourceDirectoryAsTarget,
          .suffixChoice = choices,
          .suffix = choices && form.useSuffix};
}

SettingsCheck ValidateSettings(const Settings& current, const SettingsForm& form) {
  Settings next = current;
  next.jobSaving = form.jobSaving;
  next.askBeforeEnd = form.askBeforeEnd;
  next.oldSearchResults = form.oldSearchResults;
  next.searchWholePath = form.searchWholePath;
  next.pendingSkinLayout = form.skinLayout;
  next.artworkerLayoutDirectory = NormalisedPath(form.artworkerLayoutDirectory);
  next.playbackParameterDirectory = NormalisedPath(form.playbackParameterDirectory);
  next.noTargetDefault = form.noTargetDefault;
  next.sourceDirectoryAsTarget = form.sourceDirectoryAsTarget;
  next.targetDirectory = NormalisedPath(form.targetDirectory);
  next.useSuffix = form.useSuffix;
  next.overwriteTarget = form.overwriteTarget;
  next.id3Version = form.id3Version;
  next.suffix = CleanSuffix(form.suffix);

  const auto refused = [&](TextId message, SettingsField field) {
    return SettingsCheck{current, message, field};
  };
  if (!IsUsableDirectory(next.artworkerLayoutDirectory)) {
    return refused(texts::InvalidDirectory, SettingsField::ArtworkerLayoutDirectory);
  }
  if (!IsUsableDirectory(next.playbackParameterDirectory)) {
    return refused(texts::InvalidDirectory, SettingsField::PlaybackParameterDirectory);
  }
  if (!next.sourceDirectoryAsTarget && !next.noTargetDefault && !IsUsableDirectory(next.targetDirectory)) {
    return refused(texts::InvalidDestinationDirectory, SettingsField::TargetDirectory);
  }
  if (next.useSuffix && next.suffix.empty()) return refused(texts::NoSuffix, SettingsField::Suffix);
  return {next, std::nullopt, SettingsField::None};
}

}  // namespace ts5
