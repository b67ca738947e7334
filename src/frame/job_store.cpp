#include "frame/job_store.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <string_view>
#include <utility>

#include "frame/cd_tracks.h"
#include "frame/filter_catalogue.h"
#include "frame/settings.h"
#include "frame/texts.h"
#include "platform/base/casts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/disc/volumes.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"
#include "platform/store/registry.h"

namespace ts5 {
namespace {

constexpr std::string_view kSourceFile = "SourceFile ";
constexpr std::string_view kSourceListFile = "SourceListFile ";
constexpr std::size_t kShortestFallback = 4;  // characters of a directory that a vanished one falls back to

// Every other value of a job's key belongs to a filter.
constexpr std::array<std::string_view, 20> kOwnValues = {"Title",
                                                         "Description",
                                                         "SourcePath",
                                                         "SourceDrive",
                                                         "SourceSubDirs",
                                                         "SourceFileNum",
                                                         "SourceFileSels",
                                                         "SourceFileSelNum",
                                                         "SourceFilelistNum",
                                                         "SourceFilelistSelNum",
                                                         "SourceFilelistSels",
                                                         "SizingRect",
                                                         "Filterstatus",
                                                         "FilterFixed",
                                                         "Filter",
                                                         "SourceMediumFileWinMax",
                                                         "DestFilename",
                                                         "DestDirectory",
                                                         "DestScreen?",
                                                         "DestDevice"};

std::string SettingsKey() {
  return std::string(kLocalMachine) + "\\" + std::string(kSettingsKey);
}

constexpr std::string_view kOtherFiltersKey = "Andere Filter";

std::string JobKey(std::size_t number) {
  return SettingsKey() + Format("\\Jobs\\Job %04i", number);
}

// --- numbered values

// "SourceFile " + 12 -> "SourceFile 0012"
std::string NumberedName(std::string_view prefix, std::size_t number) {
  std::array<char, 20> digits{};
  const auto end = std::to_chars(digits.data(), digits.data() + digits.size(), number).ptr;
  const auto count = static_cast<std::size_t>(end - digits.data());
  std::string name(prefix);
  if (count < 4) name.append(4 - count, '0');
  return name.append(digits.data(), count);
}

bool HasPrefix(std::string_view name, std::string_view prefix) {
  return name.size() >= prefix.size() && EqualsIgnoringCase(name.substr(0, prefix.size()), prefix);
}

// The number of "0012"; nothing for a text that is not written like that.
std::optional<std::size_t> NumberIn(std::string_view digits) {
  std::size_t number = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), number);
  if (digits.size() < 4 || error != std::errc{} || end != digits.data() + digits.size() || number == 0) {
    return std::nullopt;
  }
  return number;
}

// A count that no key can overstate: there are never more entries than values.
std::size_t StoredCount(const RegistryValues& values, std::string_view name) {
  const std::int64_t count = values.Integer(name).value_or(0);
  return count <= 0 ? 0 : std::min(static_cast<std::size_t>(count), values.All().size());
}

// The texts of a numbered list, "" where one is missing.
std::vector<std::string_view> NumberedTexts(const RegistryValues& values, std::string_view prefix,
                                            std::string_view countName) {
  std::vector<std::string_view> texts(StoredCount(values, countName));
  for (auto value = values.All().lower_bound(prefix);
       value != values.All().end() && HasPrefix(value->first, prefix); ++value) {
    const auto number = NumberIn(std::string_view(value->first).substr(prefix.size()));
    if (number && *number <= texts.size() && value->second.kind == RegistryValue::Kind::Text) {
      texts[*number - 1] = value->second.data;
    }
  }
  return texts;
}

template <typename T>
std::vector<T> Numbers(std::string_view text) {
  std::vector<T> numbers;
  for (const std::string_view part : Split(Trim(text), ' ')) {
    const auto value = ParseInteger(part);
    const auto number = value ? NarrowTo<T>(*value) : std::nullopt;
    if (!number) break;
    numbers.push_back(*number);
  }
  return numbers;
}

template <typename T>
std::vector<T> StoredNumbers(const RegistryValues& values, std::string_view countName,
                             std::string_view name) {
  std::vector<T> numbers = Numbers<T>(values.Text(name).value_or(""));
  const std::int64_t count = std::max<std::int64_t>(0, values.Integer(countName).value_or(0));
  if (std::cmp_less(count, numbers.size())) numbers.resize(static_cast<std::size_t>(count));
  return numbers;
}

template <typename Range>
std::string Joined(const Range& numbers) {
  std::string text;
  for (const auto number : numbers) text.append(text.empty() ? "" : " ").append(std::to_string(number));
  return text;
}

bool HasDriveLetter(std::string_view path) {
  return path.size() >= 2 && path[1] == ':';
}

// --- loading, group by group

std::string TextOr(const RegistryValues& values, std::string_view name, std::size_t most,
                   std::string fallback) {
  const auto text = values.Text(name);
  return text && !text->empty() && CharacterCount(*text) <= most ? std::string(*text) : std::move(fallback);
}

bool IsOne(const RegistryValues& values, std::string_view name) {
  return values.Text(name) == std::string_view("1");
}

void LoadTitle(Job& job, const RegistryValues& values, std::size_t number) {
  const bool isDefault = number == 0;
  job.title =
      TextOr(values, "Title", kMaxTitleCharacters,
             isDefault ? std::string(Text(texts::DefaultJobTitle)) : Format(Text(texts::JobTitle), number));
  job.description = TextOr(values, "Description", kMaxDescriptionCharacters,
                           isDefault ? std::string(Text(texts::DefaultJobDescription))
                                     : Format(Text(texts::JobDescription), number));
}

void LoadSourcePlace(Job& job, const RegistryValues& values, bool isDefault, const JobSurroundings& around) {
  const auto toRoot = [&] {
    job.directory.path = around.homeDirectory;
    if (job.Mode() == SourceMode::Directory) job.sourceDrive = 0;
  };
  const auto stored = values.Text("SourcePath");
  job.sourceDrive =
      NarrowTo<std::int32_t>(values.Integer("SourceDrive").value_or(kListModeDrive)).value_or(kListModeDrive);
  if (job.sourceDrive < 0) job.sourceDrive = kListModeDrive;
  if (!stored || (!stored->empty() && !IsUsablePath(*stored))) {
    if (!stored) job.sourceDrive = 0;
    return toRoot();
  }
  if (stored->empty()) {
    // A job that never had a directory: it works on its list.
    if (job.Mode() == SourceMode::Directory) toRoot();
    return;
  }
  std::string path = around.nativePath(std::string(*stored));
  while (!around.isDirectory(path)) {
    path = DirectoryOf(path);
    if (path.size() < kShortestFallback) return toRoot();
  }
  job.directory.path = path;
  if (job.Mode() == SourceMode::List) return;
  if (const std::int32_t drive = around.driveOf(path); drive >= 0) job.sourceDrive = drive;
  if (isDefault && around.onDataDisc(path)) toRoot();
}

void LoadFiles(Job& job, const RegistryValues& values, const JobSurroundings& around) {
  for (const std::string_view name : NumberedTexts(values, kSourceFile, "SourceFileNum")) {
    job.directory.names.emplace_back(name);
  }
  job.subdirectories = IsOne(values, "SourceSubDirs");
  job.directory.indices = StoredNumbers<std::uint32_t>(values, "SourceFileSelNum", "SourceFileSels");

  for (const std::string_view text : NumberedTexts(values, kSourceListFile, "SourceFilelistNum")) {
    if (text.empty()) continue;
    FileListEntry entry =
        Has(job.filter, kTimedList) ? ParseStoredEntry(text) : EntryFromPath(std::string(text));
    if (!IsUsablePath(entry.path)) continue;
    if (!entry.cdTrack && HasDriveLetter(entry.path)) entry.path = around.nativePath(entry.path);
    job.files.Append(std::move(entry));
  }
  job.files.Select(StoredNumbers<std::size_t>(values, "SourceFilelistSelNum", "SourceFilelistSels"));
  job.fileWindowMaximised = job.Mode() == SourceMode::List && IsOne(values, "SourceMediumFileWinMax");
}

void LoadWindow(Job& job, const RegistryValues& values) {
  const auto rectangle = Numbers<std::int32_t>(values.Text("SizingRect").value_or(""));
  if (rectangle.size() == 4) job.sizing = {rectangle[0], rectangle[1], rectangle[2], rectangle[3]};
  const auto status = Numbers<std::uint32_t>(values.Text("Filterstatus").value_or(""));
  if (status.size() == kFilterCount) std::ranges::copy(status, job.filterStatus.begin());
}

void LoadDestination(Job& job, const RegistryValues& values, const JobSurroundings& around) {
  const std::string_view name = values.Text("DestFilename").value_or("");
  if (IsUsablePath(name)) job.destinationName = around.nativePath(std::string(name));
  const std::string_view directory = values.Text("DestDirectory").value_or("");
  if (!directory.empty() && IsUsablePath(directory))
    job.targetDirectory = around.nativePath(std::string(directory));
  job.destinationIsScreen = IsOne(values, "DestScreen?");

  std::int32_t device = NarrowTo<std::int32_t>(values.Integer("DestDevice").value_or(0)).value_or(0);
  if (device >= kMidiDeviceBase) device -= kMidiDeviceBase;
  const auto within = [device](std::size_t count) {
    return device >= 0 && std::cmp_less(device, count) ? device : 0;
  };
  const std::uint32_t panels = IsFilter(job.filter) ? Descriptor(job.filter).panels : 0;
  if ((panels & kPanelAudioDevices) != 0) {
    device = within(around.audioDevices);
  } else if ((panels & kPanelMidiDevices) != 0) {
    device = within(around.midiDevices) + kMidiDeviceBase;
  }
  job.destinationDevice = device;
}

// The values of a job's key that belong to a filter; those of the current one come first.
RegistryValues FilterValues(const RegistryValues& values) {
  RegistryValues others;
  for (const auto& [name, value] : values.All()) {
    if (name.starts_with(kOtherFilters)) others.Set(std::string_view(name).substr(1), value);
  }
  for (const auto& entry : values.All()) {
    const std::string& name = entry.first;
    if (name.starts_with(kOtherFilters)) continue;
    if (HasPrefix(name, kSourceFile) || HasPrefix(name, kSourceListFile)) continue;
    const bool own = std::ranges::any_of(
        kOwnValues, [&](std::string_view known) { return EqualsIgnoringCase(known, name); });
    if (!own) others.Set(name, entry.second);
  }
  return others;
}

void SaveFiles(const Job& job, RegistryValues& values) {
  for (std::size_t i = 0; i < job.directory.names.size(); ++i) {
    values.SetText(NumberedName(kSourceFile, i + 1), job.directory.names[i]);
  }
  const bool burner = Has(job.filter, kTimedList);
  for (std::size_t i = 0; i < job.files.Size(); ++i) {
    const std::string name = NumberedName(kSourceListFile, i + 1);
    if (burner) {
      values.SetText(name, StoredEntry(job.files[i], true));
    } else {
      values.SetText(name, job.files[i].path);
    }
  }
  values.SetInteger("SourceFileNum", static_cast<std::int64_t>(job.directory.names.size()));
  values.SetInteger("SourceFilelistNum", static_cast<std::int64_t>(job.files.Size()));
  values.SetInteger("SourceFileSelNum", static_cast<std::int64_t>(job.directory.indices.size()));
  values.SetText("SourceFileSels", Joined(job.directory.indices));
  values.SetInteger("SourceFilelistSelNum", static_cast<std::int64_t>(job.files.Selection().size()));
  values.SetText("SourceFilelistSels", Joined(job.files.Selection()));
}

// How many saved jobs there are. Where the settings are lost with their "Job Number", the keys tell it.
Result<std::size_t> JobCount(const Registry& registry) {
  const auto settings = registry.Read(SettingsKey());
  if (!settings && settings.error() != Outcome::WrongFormat) return Failure(settings.error());
  if (settings && !settings->All().empty()) {
    const auto count = std::clamp<std::int64_t>(settings->Integer("Job Number").value_or(0), 0, kMaxJobs);
    return static_cast<std::size_t>(count);
  }
  std::size_t count = 0;
  while (count < kMaxJobs && registry.Exists(JobKey(count + 1)).value_or(false)) ++count;
  return count;
}

}  // namespace

JobSurroundings JobSurroundingsOf(
    const VolumeTable& table, ModuleFinder modules,
    std::function<std::optional<AudioCd>(const std::string& directory)> audioCd) {
  const auto volumes = std::make_shared<const VolumeTable>(table);
  JobSurroundings around;
  around.modules = std::move(modules);
  const Volume* const home = volumes->Find(0);
  around.homeDirectory = home != nullptr ? home->path : "/";
  // A disc drive is its own directory.
  around.isDirectory = [volumes](const std::string& path) {
    return IsDirectory(path) ||
           std::ranges::find(volumes->Volumes(), path, &Volume::path) != volumes->Volumes().end();
  };
  around.nativePath = [volumes](const std::string& path) { return volumes->NativePath(path).value_or(path); };
  around.driveOf = [volumes](const std::string& path) { return volumes->DriveOfPath(path); };
  around.onDataDisc = [volumes, audioCd = std::move(audioCd)](const std::string& path) {
    const Volume* const volume = volumes->Find(volumes->DriveOfPath(path));
    return volume != nullptr && volume->kind == Volume::Kind::Optical && !audioCd(volume->path);
  };
  return around;
}

Job JobFromValues(const RegistryValues& values, std::size_t number, const JobSurroundings& around) {
  Job job;
  LoadTitle(job, values, number);
  const auto filter = values.Integer("Filter").value_or(-1);
  if (filter >= 0 && std::cmp_less(filter, kFilterCount)) job.filter = static_cast<FilterId>(filter);
  job.previousFilter = job.filter;
  LoadSourcePlace(job, values, number == 0, around);
  LoadFiles(job, values, around);
  LoadWindow(job, values);
  job.stored = FilterValues(values);
  if (IsFilter(job.filter)) job.parameters = LoadParameters(around.modules(job.filter), job.stored);
  LoadDestination(job, values, around);
  job.filterFixed = number != 0 && IsOne(values, "FilterFixed");
  return job;
}

RegistryValues ValuesOfJob(const Job& job, const ModuleFinder& modules) {
  RegistryValues values;
  SaveFiles(job, values);  // first, as long lists are put at the end at no cost
  const FilterModule* const module = IsFilter(job.filter) ? modules(job.filter) : nullptr;
  if (module != nullptr && job.parameters) {
    SaveParameters(*module, *job.parameters, values);
    RegistryValues others;
    for (const auto& [name, value] : job.stored.All()) {
      if (values.Find(name) == nullptr) others.Set(kOtherFilters + name, value);
    }
    for (const auto& [name, value] : others.All()) values.Set(name, value);
  } else {
    for (const auto& [name, value] : job.stored.All()) values.Set(name, value);
  }
  values.SetText("Title", job.title);
  values.SetText("Description", job.description);
  values.SetText("SourcePath", job.directory.path);
  values.SetInteger("SourceDrive", job.sourceDrive);
  if (job.subdirectories) values.SetText("SourceSubDirs", "1");
  values.SetText("SourceMediumFileWinMax", job.fileWindowMaximised ? "1" : "0");
  const SizingRectangle& sizing = job.sizing;
  values.SetText("SizingRect", Joined(std::array{sizing.left, sizing.top, sizing.right, sizing.bottom}));
  values.SetText("Filterstatus", Joined(job.filterStatus));
  values.SetText("FilterFixed", job.filterFixed ? "1" : "0");
  values.SetInteger("Filter", static_cast<std::int32_t>(job.filter));
  if (!job.destinationName.empty()) values.SetText("DestFilename", job.destinationName);
  if (!job.targetDirectory.empty()) values.SetText("DestDirectory", job.targetDirectory);
  values.SetText("DestScreen?", job.destinationIsScreen ? "1" : "0");
  values.SetInteger("DestDevice", job.destinationDevice);
  return values;
}

Result<std::vector<RegistryValues>> ReadJobs(const Registry& registry) {
  const auto count = JobCount(registry);
  if (!count) return Failure(count.error());
  std::vector<RegistryValues> jobs;
  for (std::size_t i = 0; i <= *count; ++i) {
    auto values = registry.Read(JobKey(i));
    const auto others = registry.Read(JobKey(i) + '\\' + std::string(kOtherFiltersKey));
    // One damaged key is no reason to lose the others.
    for (const auto* const read : {&std::as_const(values), &others}) {
      if (!*read && read->error() != Outcome::WrongFormat) return Failure(read->error());
    }
    RegistryValues job = values ? std::move(*values) : RegistryValues{};
    if (others) {
      for (const auto& [name, value] : others->All()) job.Set(kOtherFilters + name, value);
    }
    jobs.push_back(std::move(job));
  }
  return jobs;
}

Outcome WriteJobs(Registry& registry, const std::vector<RegistryValues>& jobs) {
  return registry.Transaction([&]() -> Outcome {
    const RegistryValue number{RegistryValue::Kind::Text, std::to_string(jobs.size() - 1)};
    Outcome written = registry.SetValue(SettingsKey(), "Job Number", number);
    for (std::size_t i = 0; i < jobs.size() && Succeeded(written); ++i) {
      RegistryValues values;
      RegistryValues others;
      for (const auto& [name, value] : jobs[i].All()) {
        if (name.starts_with(kOtherFilters)) {
          others.Set(std::string_view(name).substr(1), value);
        } else {
          values.Set(name, value);
        }
      }
      written = registry.Write(JobKey(i), values);
      const std::string below = JobKey(i) + '\\' + std::string(kOtherFiltersKey);
      if (Succeeded(written))
        written = others.All().empty() ? registry.DeleteKey(below) : registry.Write(below, others);
    }
    return written;
  });
}

StoredJobs JobsFrom(const std::vector<RegistryValues>& values, const JobSurroundings& around) {
  StoredJobs jobs;
  for (std::size_t i = 0; i < values.size(); ++i) {
    Job job = JobFromValues(values[i], i, around);
    if (i == 0) {
      jobs.defaultJob = std::move(job);
    } else {
      jobs.saved.push_back(std::move(job));
    }
  }
  return jobs;
}

Result<StoredJobs> LoadJobs(const Registry& registry, const JobSurroundings& around) {
  const auto values = ReadJobs(registry);
  if (!values) return Failure(values.error());
  return JobsFrom(*values, around);
}

Outcome SaveJobs(Registry& registry, const Job& defaultJob, const std::vector<const Job*>& saved,
                 const ModuleFinder& modules) {
  std::vector<RegistryValues> jobs{ValuesOfJob(defaultJob, modules)};
  for (const Job* const job : saved) jobs.push_back(ValuesOfJob(*job, modules));
  return WriteJobs(registry, jobs);
}

}  // namespace ts5
