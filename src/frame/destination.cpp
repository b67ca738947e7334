#include "frame/destination.h"

#include <memory>

#include "frame/filter_catalogue.h"
#include "frame/settings.h"
#include "platform/disc/volumes.h"

namespace ts5 {
namespace {

std::size_t SelectedCount(const Job& job) {
  return job.Mode() == SourceMode::List ? job.files.Selection().size() : job.directory.names.size();
}

}  // namespace

DestinationRules DestinationRulesOf(const Settings& settings) {
  return {.sourceDirectory = settings.sourceDirectoryAsTarget,
          .directory = settings.targetDirectory,
          .useSuffix = settings.useSuffix,
          .suffix = settings.suffix,
          .noPreset = settings.noTargetDefault,
          .overwrite = settings.overwriteTarget ? OverwritePolicy::Replace : OverwritePolicy::Number};
}

DestinationRules DestinationRulesOf(const Settings& settings, const Job& job) {
  DestinationRules rules = DestinationRulesOf(settings);
  if (job.subdirectories && job.Mode() == SourceMode::Directory) rules.structure = job.directory.path;
  if (job.targetDirectory.empty()) return rules;
  rules.sourceDirectory = false;
  rules.directory = job.targetDirectory;
  return rules;
}

DestinationFiles SystemDestinationFiles() {
  const auto volumes = std::make_shared<const VolumeTable>(VolumeTable::OfThisMachine());
  const auto onCdRom = [volumes](const std::string& path) {
    const Volume* const volume = volumes->Find(volumes->DriveOfPath(path));
    return volume != nullptr && volume->kind == Volume::Kind::Optical;
  };
  return {.exists = FileExists, .isDirectory = IsDirectory, .onCdRom = onCdRom, .identity = IdentityOf};
}

DestinationMode DestinationModeOf(const Job& job, bool noPreset) {
  if (!Has(job.filter, kMakesFiles)) return {};
  bool several = false;
  if (Has(job.filter, kTracksOnly)) {
    several = job.Mode() == SourceMode::List || SelectedCount(job) != 1;
  } else if (IsSearch(job.filter)) {
    several = SelectedCount(job) > 1;  // the whole list has one result file, whose name may be edited
  } else {
    several = ItemCount(job) > 1;
  }
  if (several) return {.automatic = true, .editable = false};
  return {.automatic = !noPreset, .editable = true};
}

}  // namespace ts5
