#include "frame/destination.h"

#include <memory>

#include "frame/filter_catalogue.h"
#include "frame/settings.h"
#include "frame/texts.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/volumes.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kMaxNumber = 99999;

// Filters that play, print or write a disc settle no file names.
bool MakesFiles(FilterId filter) {
  return IsFilter(filter) && !IsPlayer(filter) && filter != FilterId::Artworker &&
         filter != FilterId::CdBurner && filter != FilterId::CdCopier;
}

std::size_t SelectedCount(const Job& job) {
  return job.Mode() == SourceMode::List ? job.files.Selection().size() : job.directory.names.size();
}

TargetName NameParts(const std::string& directory, const std::string& name) {
  const std::string path = JoinPath(directory, name);
  if (!HasExtension(path)) return {.head = path, .tail = ""};
  const std::string_view head = WithoutExtension(path);
  return {.head = std::string(head), .tail = path.substr(head.size())};
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

DestinationFiles SystemDestinationFiles() {
  const auto volumes = std::make_shared<const VolumeTable>(VolumeTable::OfThisMachine());
  const auto onCdRom = [volumes](const std::string& path) {
    const Volume* const volume = volumes->Find(volumes->DriveOfPath(path));
    return volume != nullptr && volume->kind == Volume::Kind::Optical;
  };
  return {.exists = FileExists, .isDirectory = IsDirectory, .onCdRom = onCdRom};
}

DestinationMode DestinationModeOf(const Job& job, bool noPreset) {
  if (!MakesFiles(job.filter)) return {};
  bool several = false;
  if (job.filter == FilterId::CdGrabber) {
    several = job.Mode() == SourceMode::List || SelectedCount(job) != 1;
  } else if (IsSearch(job.filter)) {
    several = SelectedCount(job) > 1;  // the whole list has one result file, whose name may be edited
  } else {
    several = ItemCount(job) > 1;
  }
  if (several) return {.automatic = true, .editable = false};
  return {.automatic = !noPreset, .editable = true};
}

std::string TargetName::Numbered(std::uint32_t number) const {
  return head + Format("%03u", number) + tail;
}

std::string TargetDirectory(const DestinationRules& rules, const std::string& source,
                            const DestinationFiles& files) {
  std::string directory =
      !rules.sourceDirectory && !rules.directory.empty() ? rules.directory : std::string(DirectoryOf(source));
  if (files.onCdRom(directory)) directory.clear();
  return directory;
}

TargetName TargetNameFor(const TargetRule& rule, const DestinationRules& rules, const std::string& source,
                         const DestinationFiles& files) {
  std::string name(FileNameOf(source));
  const std::string extension = rule.extension.empty() ? std::string(ExtensionOf(name)) : rule.extension;
  if (!rule.formatKept) {
    if (!extension.empty()) name = WithExtension(name, extension);
  } else if (rules.useSuffix) {
    name = WithExtension(name, extension.empty() ? rules.suffix : rules.suffix + "." + extension);
  }
  return NameParts(TargetDirectory(rules, source, files), name);
}

TargetName ResultFileNameFor(const DestinationRules& rules, const std::string& source, std::size_t items,
                             bool wholeList, const DestinationFiles& files) {
  const std::string directory = TargetDirectory(rules, source, files);
  if (items <= 1 && !wholeList) return NameParts(directory, WithExtension(FileNameOf(source), "txt"));
  return {.head = JoinPath(directory, Text(texts::SearchResultsName)),
          .tail = ".txt",
          .numbered = items > 1 || rules.overwrite != OverwritePolicy::Replace};
}

std::optional<std::string> SettledName(const TargetName& name, bool number, const DestinationFiles& files) {
  const std::string plain = name.Plain();
  const bool numbered = name.numbered || (number && !name.tail.empty() && files.exists(plain));
  if (!numbered) return plain;
  for (std::uint32_t n = 1; n <= kMaxNumber; ++n) {
    std::string candidate = name.Numbered(n);
    if (!files.exists(candidate)) return candidate;
  }
  return std::nullopt;
}

DestinationCheck CheckDestination(const std::string& field, const DestinationRules& rules,
                                  const std::string& source, const DestinationFiles& files) {
  std::string name(Trim(field));
  if (name.empty()) return {.name = {}, .message = texts::NoTargetName};
  const std::string directory(DirectoryOf(name));
  if (!directory.empty()) {
    const bool valid = rules.sourceDirectory || files.isDirectory(directory);
    return {.name = name, .message = valid ? std::nullopt : std::optional(texts::InvalidTargetDirectory)};
  }
  if (rules.sourceDirectory)
    return {.name = JoinPath(TargetDirectory(rules, source, files), name), .message = {}};
  if (!files.isDirectory(rules.directory)) return {.name = name, .message = texts::InvalidTargetDirectory};
  return {.name = JoinPath(rules.directory, name), .message = {}};
}

}  // namespace ts5
