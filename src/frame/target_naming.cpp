#include "frame/target_naming.h"

#include <utility>

#include "frame/filter_catalogue.h"
#include "frame/filter_module.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "platform/files/real_paths.h"

namespace ts5 {
namespace {

constexpr std::uint32_t kMaxNumber = 99999;

bool NothingSelected(const Job& job) {
  return job.Mode() == SourceMode::List ? job.files.Selection().empty() : job.directory.names.empty();
}

bool IsTree(const Job& job) {
  return ItemCount(job) == 0 && job.Mode() == SourceMode::Directory;
}

// The source that a target named for all of them lies beside.
std::string FirstSource(const Job& job) {
  return IsTree(job) ? JoinPath(job.directory.path, "*") : ItemSource(job, 0);
}

Taking TakingOf(OverwritePolicy policy) {
  switch (policy) {
    case OverwritePolicy::Replace:
      return Taking::Replace;
    case OverwritePolicy::Number:
      return Taking::Number;
    case OverwritePolicy::Ask:
      break;
  }
  return Taking::Ask;
}

}  // namespace

// --- names

TargetName TargetName::Of(const std::string& path) {
  if (!HasExtension(path)) return {.head = path, .tail = ""};
  const std::string_view head = WithoutExtension(path);
  return {.head = std::string(head), .tail = path.substr(head.size())};
}

std::string TargetName::Numbered(std::uint32_t number) const {
  return head + Format("%03u", number) + tail;
}

std::string TargetDirectory(const DestinationRules& rules, const std::string& source,
                            const DestinationFiles& files) {
  const bool elsewhere = !rules.sourceDirectory && !rules.directory.empty();
  std::string directory = elsewhere ? rules.directory : std::string(DirectoryOf(source));
  if (elsewhere && !rules.structure.empty()) {
    const std::string below = PathBelow(rules.structure, DirectoryOf(source)).value_or("");
    if (!below.empty()) directory = JoinPath(directory, below);
  }
  if (files.onCdRom(directory)) directory.clear();
  return directory;
}

TargetName TargetNameFor(const TargetRule& rule, const DestinationRules& rules, const std::string& source,
                         const DestinationFiles& files) {
  std::string name(rule.name.empty() ? FileNameOf(source) : std::string_view(rule.name));
  const std::string extension = rule.extension.empty() ? std::string(ExtensionOf(name)) : rule.extension;
  if (!rule.formatKept) {
    if (!extension.empty()) name = WithExtension(name, extension);
  } else if (rules.useSuffix) {
    name = WithExtension(name, extension.empty() ? rules.suffix : rules.suffix + "." + extension);
  }
  return TargetName::Of(JoinPath(TargetDirectory(rules, source, files), name));
}

// --- targets

TargetNaming::TargetNaming(const Job& job, DestinationRules rules, const DestinationFiles& files)
    : job_(&job), rules_(std::move(rules)), files_(&files), sources_(job, files), keys_(files) {}

bool TargetNaming::IsTaken(const std::string& path) {
  return sources_.Contains(path) || IsMade(path);
}

bool TargetNaming::IsMade(const std::string& path) {
  return !taken_.empty() && taken_.contains(keys_.Of(BehindLinks(path).value_or(path)));
}

void TargetNaming::Take(const std::string& path) {
  taken_.insert(keys_.Of(BehindLinks(path).value_or(path)));
}

std::optional<std::string> TargetNaming::NextNumber(const TargetName& family) {
  std::uint32_t& last = lastNumbers_[family.Plain()];
  while (last < kMaxNumber) {
    std::string name = family.Numbered(++last);
    if (IsTaken(name)) continue;
    if (!files_->exists(name)) return name;
    Take(name);  // another machine may have made it for an item of this same run
  }
  return std::nullopt;
}

PlannedTarget TargetNaming::Plan(TargetName family, Numbering numbering, Taking taking, bool evades) {
  std::string plain = family.Plain();
  if (!IsAbsolutePath(plain)) {
    plain = FullPath(plain);
    family = TargetName::Of(plain);
  }
  PlannedTarget target{
      .name = std::move(plain), .family = std::move(family), .taking = taking, .evades = evades};
  const bool number = evades || numbering == Numbering::Always ||
                      (numbering == Numbering::WhenThere && files_->exists(target.name));
  if (number) {
    target.taking = Taking::Number;
    auto name = NextNumber(target.family);
    if (!name) target.code = Outcome::TargetFailed;
    target.name = std::move(name).value_or("");
  }
  if (!IsUsablePath(target.name)) target.code = Outcome::TargetFailed;
  if (Succeeded(target.code)) Take(target.name);
  return target;
}

PlannedTarget TargetNaming::Automatic(const TargetRule& rule, const std::string& source) {
  TargetName family = TargetNameFor(rule, rules_, source, *files_);
  const std::string plain = family.Plain();
  const bool inPlace = rule.formatKept && !rules_.useSuffix && rules_.overwrite == OverwritePolicy::Replace &&
                       sources_.IsOnly(plain, source);
  const bool evades = inPlace ? IsMade(plain) : IsTaken(plain);
  Taking taking = TakingOf(rules_.overwrite);
  if (taking == Taking::Number && family.tail.empty()) taking = Taking::Ask;  // used as it is
  const Numbering numbering = taking == Taking::Number ? Numbering::WhenThere : Numbering::Never;
  return Plan(std::move(family), numbering, taking, evades);
}

PlannedTarget TargetNaming::Chosen(const std::string& name) {
  if (sources_.Contains(name)) return {.name = name, .code = Outcome::TargetFailed};
  TargetName family = TargetName::Of(name);
  Taking taking = TakingOf(rules_.overwrite);
  const bool numbers = rules_.origin == NameOrigin::Command && !family.tail.empty();
  if (taking == Taking::Number && !numbers) taking = Taking::Ask;
  const Numbering numbering = taking == Taking::Number ? Numbering::WhenThere : Numbering::Never;
  return Plan(std::move(family), numbering, taking, false);
}

PlannedTarget TargetNaming::ResultFile() {
  const std::size_t items = ItemCount(*job_);
  const bool tree = IsTree(*job_);
  const std::string first = FirstSource(*job_);
  const std::string directory = TargetDirectory(rules_, first, *files_);
  const Taking taking = TakingOf(rules_.overwrite);
  Numbering numbering = taking == Taking::Number ? Numbering::WhenThere : Numbering::Never;
  if (items == 1 && !NothingSelected(*job_)) {
    TargetName family = TargetName::Of(JoinPath(directory, WithExtension(FileNameOf(first), "txt")));
    const bool evades = IsTaken(family.Plain());
    return Plan(std::move(family), numbering, taking, evades);
  }
  if (items > 1 || tree || rules_.overwrite != OverwritePolicy::Replace) numbering = Numbering::Always;
  TargetName family{.head = JoinPath(directory, Text(texts::SearchResultsName)), .tail = ".txt"};
  const bool evades = IsTaken(family.Plain());
  return Plan(std::move(family), numbering, taking, evades);
}

void TargetNaming::Reserve(const PlannedTarget& target) {
  if (Succeeded(target.code) && !target.name.empty()) Take(target.name);
}

bool TargetNaming::Renumber(PlannedTarget& target) {
  auto name = NextNumber(target.family);
  if (!name || !IsUsablePath(*name)) return false;
  target.name = *std::move(name);
  Take(target.name);
  return true;
}

bool IsChosen(const Job& job, const DestinationRules& rules) {
  if (job.destinationName.empty() || rules.origin == NameOrigin::Automatic) return false;
  return rules.origin == NameOrigin::Command || DestinationModeOf(job, rules.noPreset).editable;
}

PlannedTarget ResultTarget(TargetNaming& naming, const Job& job, const DestinationRules& rules) {
  return rules.origin == NameOrigin::Automatic ? naming.ResultFile() : naming.Chosen(job.destinationName);
}

// --- items

PlannedTarget NameItem(TargetNaming& naming, const Job& job, const FilterModule& module,
                       const DestinationRules& rules, const std::string& source) {
  if (!IsUsablePath(source)) return {};
  if (IsChosen(job, rules)) return naming.Chosen(job.destinationName);
  return naming.Automatic(module.target(*job.parameters, source), source);
}

std::vector<NamedItem> PreviewTargets(const Job& job, const FilterModule& module,
                                      const DestinationRules& rules, const DestinationFiles& files) {
  TargetNaming naming(job, rules, files);
  std::vector<NamedItem> items(ItemCount(job));
  for (std::size_t i = 0; i < items.size(); ++i) {
    items[i].source = ItemSource(job, i);
    items[i].target = NameItem(naming, job, module, rules, items[i].source);
    items[i].replaces = Succeeded(items[i].target.code) && files.exists(items[i].target.name);
  }
  return items;
}

TargetForecast ForecastOf(const std::vector<NamedItem>& items) {
  TargetForecast forecast;
  for (const NamedItem& item : items)
    ++(Failed(item.target.code) ? forecast.impossible : item.replaces ? forecast.replaced : forecast.made);
  return forecast;
}

// --- before a run

TargetOffer OfferTarget(const Job& job, const FilterModule* module, const DestinationRules& rules,
                        const DestinationFiles& files) {
  TargetOffer offer{DestinationModeOf(job, rules.noPreset), std::string()};
  if (!offer.mode.automatic) {
    if (offer.mode.editable) offer.name.reset();
    return offer;
  }
  TargetNaming naming(job, rules, files);
  if (IsSearch(job.filter)) {
    offer.name = naming.ResultFile().name;
  } else if (module != nullptr && module->target && job.parameters && ItemCount(job) > 0) {
    const std::string source = ItemSource(job, 0);
    offer.name = naming.Automatic(module->target(*job.parameters, source), source).name;
  }
  // Where there is no directory to write to, the field shows the name alone.
  if (TargetDirectory(rules, FirstSource(job), files).empty()) offer.name = FileNameOf(*offer.name);
  return offer;
}

namespace {

// A name of the field with its directory, from that of the targets on, or what is wrong with it.
std::optional<TextId> CompleteName(std::string& name, const DestinationRules& rules,
                                   const std::string& source, const DestinationFiles& files) {
  name = Trim(name);
  if (name.empty()) return texts::NoTargetName;
  if (IsAbsolutePath(name)) {
    if (rules.sourceDirectory || files.isDirectory(std::string(DirectoryOf(name)))) return std::nullopt;
    return texts::InvalidTargetDirectory;
  }
  const std::string base = rules.sourceDirectory ? TargetDirectory(rules, source, files) : rules.directory;
  name = JoinPath(base, name);
  if (rules.sourceDirectory || files.isDirectory(std::string(DirectoryOf(name)))) return std::nullopt;
  return texts::InvalidTargetDirectory;
}

bool DirectoryIsMissing(const DestinationRules& rules, const DestinationFiles& files) {
  return !rules.sourceDirectory && !rules.directory.empty() && !files.isDirectory(rules.directory);
}

}  // namespace

std::optional<TextId> SettleDestination(Job& job, const FilterModule& module, DestinationRules& rules,
                                        const DestinationFiles& files) {
  const bool toFile =
      Descriptor(job.filter).Shows(kPanelFile) && !(IsSearch(job.filter) && job.destinationIsScreen);
  if (!toFile) return std::nullopt;
  const TargetOffer offer = OfferTarget(job, &module, rules, files);
  if (rules.origin == NameOrigin::Command || offer.mode.editable) {
    const bool command = rules.origin == NameOrigin::Command;
    std::string name = job.destinationName;
    const auto isOffered = [&] { return !command && offer.name && name == *offer.name; };
    // What was offered may lie in a directory that the run makes.
    const bool untouched = !name.empty() && (isOffered() || (!command && name == rules.offered));
    if (!untouched) {
      if (const auto message = CompleteName(name, rules, ItemSource(job, 0), files)) return message;
    }
    if (!untouched && !isOffered()) {
      name = FullPath(name);
      if (SourceSet(job, files).Contains(name)) return texts::TargetIsSource;
      job.destinationName = std::move(name);
      return std::nullopt;
    }
  }
  rules.origin = NameOrigin::Automatic;
  if (DirectoryIsMissing(rules, files)) return texts::InvalidTargetDirectory;
  if (offer.mode.editable || IsSearch(job.filter)) job.destinationName = offer.name.value_or("");
  return std::nullopt;
}

Result<std::string> TakeTarget(StagedFile& file, PlannedTarget target, TargetNaming& naming,
                               const std::function<bool(const std::string& name)>& mayReplace,
                               const std::function<Outcome(const std::string& name)>& replacing) {
  while (target.taking != Taking::Replace) {
    const auto created = file.CommitNew(target.name);
    if (!created) return Failure(created.error());
    if (*created) return target.name;
    if (target.taking == Taking::Number) {
      if (!naming.Renumber(target)) return Failure(Outcome::TargetFailed);
    } else {
      if (!mayReplace(target.name)) return Failure(Outcome::Cancelled);
      target.taking = Taking::Replace;
    }
  }
  if (const Outcome kept = replacing ? replacing(target.name) : Outcome::Success; Failed(kept))
    return Failure(kept);
  if (const Outcome done = file.CommitAs(target.name); Failed(done)) return Failure(done);
  return target.name;
}

}  // namespace ts5
