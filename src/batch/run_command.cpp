// "ts5-batch run": a filter over files, with parameters from the command line.
#include <algorithm>

#include "app/filter_modules.h"
#include "batch/arguments.h"
#include "batch/command_line.h"
#include "batch/commands.h"
#include "batch/melody_options.h"
#include "batch/run_session.h"
#include "batch/store.h"
#include "batch/texts.h"
#include "frame/cd_tracks.h"
#include "frame/directory_listing.h"
#include "frame/file_list_file.h"
#include "frame/filter_bar.h"
#include "frame/filter_catalogue.h"
#include "frame/settings_store.h"
#include "frame/texts.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "platform/text.h"
#include "platform/volumes.h"

namespace ts5::batch {
namespace {

constexpr std::string_view kCommand = "run";

struct Request {
  std::string filter;
  std::vector<std::string> settings;
  std::optional<std::string> destination;
  std::optional<std::string> destinationDirectory;
  std::optional<std::string> overwrite;
  std::optional<std::string> list;
  std::optional<std::string> directory;
  std::optional<std::string> device;
  std::optional<std::string> input;
  MelodyOptions melody;
  OutputOptions output;
  std::vector<std::string> files;
};

// Identifiers of the filters, of all or of those that this build can run.
std::string FilterNames(bool runnable) {
  std::string names;
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    if (runnable && !CanRun(filter.id)) continue;
    names += (names.empty() ? "" : ", ") + std::string(filter.identifier);
  }
  return names;
}

struct FilterExamples {
  FilterId filter;
  TextId text;
};

// One line per filter.
constexpr FilterExamples kExamples[] = {
    {FilterId::ScoreToMidi, texts::BatchExamplesScoreToMidi},
    {FilterId::ScoreSearch, texts::BatchExamplesScoreSearch},
    {FilterId::MidiSearch, texts::BatchExamplesMidiSearch},
    {FilterId::MidiPlayer, texts::BatchExamplesMidiPlayer},
    {FilterId::MidiConverter, texts::BatchExamplesMidiConverter},
    {FilterId::MidiToWave, texts::BatchExamplesMidiToWave},
    {FilterId::AudioPlayer, texts::BatchExamplesAudioPlayer},
    {FilterId::WaveConverter, texts::BatchExamplesWaveConverter},
    {FilterId::ScorePlayer, texts::BatchExamplesScorePlayer},
};

TextId ExamplesOf(FilterId filter) {
  const auto* const row = std::ranges::find(kExamples, filter, &FilterExamples::filter);
  return row == std::end(kExamples) ? texts::BatchRunExamples : row->text;
}

// The help of the filter's parameters, with the defaults; how to get it while no filter is named.
std::string ParameterHelp(const std::string& filter) {
  const FilterModule* module = FindModule(FindFilter(filter));
  if (module == nullptr) return "\n" + std::string(Text(texts::BatchHelpParameterTail)) + "\n";
  const auto parameters = module->create();
  std::string help = "\n" + std::string(Text(texts::BatchHelpParameters)) + "\n";
  std::size_t width = 0;
  for (const ParameterField& field : module->fields) width = std::max(width, field.name.size());
  for (const ParameterField& field : module->fields) {
    RegistryValues values;
    field.save(*parameters, values);
    const std::string preset(values.Text(field.name).value_or(""));
    help += "  " + Padded(field.name, width + 2) + field.description +
            (preset.empty() ? "" : "  (" + preset + ")") + "\n";
  }
  return help;
}

// A path of a command line counts from the current directory; a bare name would be completed with the
// directory of the source.
std::string FromCurrentDirectory(const std::string& path) {
  return DirectoryOf(path).empty() ? JoinPath(".", path) : path;
}

// The first number that is free, for a destination that is there already.
std::string NumberedIfThere(const std::string& path) {
  if (!HasExtension(path)) return path;
  const std::string_view head = WithoutExtension(path);
  const TargetName name{.head = std::string(head), .tail = path.substr(head.size())};
  return SettledName(name, true, SystemDestinationFiles()).value_or(path);
}

// The result file of a search in a directory: named after the only file, else with the first free number. A
// directory counts as several files, as its tree is not known yet.
std::string ResultFileIn(const Job& job, const DestinationRules& rules, bool wholeDirectory) {
  const DestinationFiles files = SystemDestinationFiles();
  const std::string first = wholeDirectory ? JoinPath(job.directory.path, "") : job.files[0].path;
  const TargetName name =
      ResultFileNameFor(rules, first, wholeDirectory ? 2 : ItemCount(job), wholeDirectory, files);
  return SettledName(name, rules.overwrite == OverwritePolicy::Number, files).value_or(name.Plain());
}

// What cannot be right whatever the files hold; nothing when all is well.
std::optional<std::string> Contradiction(const Request& request) {
  const bool names = !request.files.empty() || request.list;
  if (request.directory && names) return std::string(Text(texts::BatchDirAlone));
  if (!request.directory && !names) return std::string(Text(texts::BatchNoSources));
  if (request.destination && request.destinationDirectory) return std::string(Text(texts::BatchDestTwice));
  if (request.overwrite && !ParseOverwrite(*request.overwrite)) {
    return Format(Text(texts::BatchOverwriteWrong), *request.overwrite);
  }
  const auto missing = [](const std::optional<std::string>& directory) {
    return directory && !IsDirectory(*directory);
  };
  if (missing(request.destinationDirectory))
    return Format(Text(texts::BatchNoDirectory), *request.destinationDirectory);
  if (missing(request.directory) && !IsCdDrive(*request.directory))
    return Format(Text(texts::BatchNoDirectory), *request.directory);
  return std::nullopt;
}

// The files of a directory that the filter takes, all selected; a search walks the whole tree. False after
// saying what is wrong.
bool TakeDirectory(Console& console, Job& job, const std::string& directory) {
  job.sourceDrive = 0;
  job.directory.path = directory;
  if (IsSearch(job.filter)) return true;
  std::uint32_t index = 0;
  const auto take = [&](const std::vector<DirectoryItem>& items) {
    for (const DirectoryItem& item : items) {
      SourceContext one{.listMode = false, .sourceIsAudioCd = item.cdTrack, .selection = {}};
      one.selection.Add(item.name, item.cdTrack);
      if (Accepts(job.filter, one)) {
        job.directory.names.push_back(item.name);
        job.directory.indices.push_back(index);
      }
      ++index;
    }
  };
  const ListingEnd end = ListDirectory(directory, FindAudioCd, {}, take);
  if (Failed(end.outcome)) {
    PrintError(console, Format(Text(texts::BatchDirectoryUnreadable), directory));
    return false;
  }
  if (job.directory.names.empty()) {
    PrintError(console, Format(Text(texts::BatchDirectoryEmpty), directory));
    return false;
  }
  return true;
}

// Takes the entries of a file list, and says what is missing of it. Nothing when it cannot be used at all,
// else whether all files were there.
std::optional<bool> TakeList(Console& console, Job& job, const std::string& path) {
  const bool burner = job.filter == FilterId::CdBurner;
  auto loaded = LoadFileList(path, burner, VolumeTable::OfThisMachine(), CdTrackExists);
  if (const auto message = LoadMessage(loaded, path)) PrintError(console, message->text);
  if (!loaded) return std::nullopt;
  const bool complete = loaded->missing == 0;
  if (TakeLoadedList(job.files, std::move(*loaded), true, burner)) {
    PrintError(console, Text(texts::TooManyTracks));
  }
  return complete;
}

}  // namespace

int RunCommand(CommandLine line, Console& console) {
  Request request;
  Arguments arguments(kCommand, texts::BatchRunSummary, texts::BatchRunExamples);
  arguments.Required("FILTER", request.filter, texts::BatchHelpFilter);
  arguments.Repeated("--set", "NAME=WERT", request.settings, texts::BatchHelpSet);
  arguments.Option("--dest", "DATEI", request.destination, texts::BatchHelpDest);
  arguments.Option("--dest-dir", "VERZ", request.destinationDirectory, texts::BatchHelpDestDir);
  arguments.Option("--overwrite", "yes|number|ask", request.overwrite, texts::BatchHelpOverwrite);
  arguments.Option("--list", "LISTE.sts", request.list, texts::BatchHelpList);
  arguments.Option("--dir", "VERZ", request.directory, texts::BatchHelpDir);
  arguments.Option("--device", "NAME", request.device, texts::BatchHelpDevice);
  arguments.Option("--input", "NAME", request.input, texts::BatchHelpInput);
  AddMelodyOptions(arguments, request.melody);
  arguments.Flag("--json", request.output.json, texts::BatchHelpJson);
  arguments.Flag("--quiet", request.output.quiet, texts::BatchHelpQuiet);
  arguments.Rest("DATEI", request.files, texts::BatchHelpFiles, 0);
  arguments.HelpTail([&] { return ParameterHelp(request.filter); });
  arguments.HelpExamples([&] { return ExamplesOf(FindFilter(request.filter)); });
  if (const auto status = arguments.Read(line, console)) return *status;

  Job job;
  job.filter = FindFilter(request.filter);
  if (job.filter == FilterId::None) {
    return WrongUsage(console, kCommand,
                      Format(Text(texts::BatchFilterUnknown), request.filter, FilterNames(false)));
  }
  const FilterModule* module = FindModule(job.filter);
  if (!CanRun(job.filter)) {
    return WrongUsage(
        console, kCommand,
        Format(Text(texts::BatchFilterAbsent), Descriptor(job.filter).identifier, FilterNames(true)));
  }
  job.parameters = module->create();
  if (const auto fault = ApplySettings(module->fields, *job.parameters, request.settings)) {
    return WrongUsage(console, kCommand, *fault);
  }
  // A drive goes by its name too.
  if (request.directory && !IsDirectory(*request.directory))
    request.directory = CdDirectoryOf(*request.directory).value_or(*request.directory);
  if (const auto fault = Contradiction(request)) return WrongUsage(console, kCommand, *fault);

  auto registry = OpenRegistry(console);
  if (!registry) return kExitFailed;
  if (const auto fault = TakeMelody(request.melody, *registry, job))
    return WrongUsage(console, kCommand, *fault);
  if (module->missing) {
    if (const auto text = module->missing(job)) return WrongUsage(console, kCommand, Text(*text));
  }
  const Settings settings = LoadSettings(*registry, DefaultSettingsGround());
  DestinationRules rules = DestinationRulesOf(settings);
  rules.overwrite = ParseOverwrite(request.overwrite.value_or("ask")).value_or(OverwritePolicy::Ask);
  if (request.destinationDirectory) {
    rules.sourceDirectory = false;
    rules.directory = *request.destinationDirectory;
  }

  bool complete = true;
  if (request.directory) {
    if (!TakeDirectory(console, job, *request.directory)) return kExitFailed;
  } else {
    job.sourceDrive = kListModeDrive;
    if (request.list) {
      const auto taken = TakeList(console, job, *request.list);
      if (!taken) return kExitFailed;
      complete = *taken;
    }
    for (const std::string& file : request.files) job.files.Append({.path = file});
    job.files.SelectAll();
  }
  const bool resultFile = request.destination || request.destinationDirectory;
  job.destinationIsScreen = IsSearch(job.filter) && !resultFile;
  if (request.destination) {
    if (ItemCount(job) > 1 && !IsSearch(job.filter))
      return WrongUsage(console, kCommand, Text(texts::BatchDestForOne));
    job.destinationName = FromCurrentDirectory(*request.destination);
    rules.chosenName = true;
    if (rules.overwrite == OverwritePolicy::Number)
      job.destinationName = NumberedIfThere(job.destinationName);
  }
  if (request.destinationDirectory && IsSearch(job.filter) && (request.directory || ItemCount(job) > 0)) {
    job.destinationName = ResultFileIn(job, rules, request.directory.has_value());
    rules.chosenName = true;
  }
  const RunDevices devices{.output = request.device.value_or(""), .input = request.input.value_or("")};
  const int status = RunOnConsole(
      console, job, {.settings = settings, .devices = devices, .destination = rules}, request.output);
  return status == kExitSuccess && !complete ? kExitFailed : status;
}

}  // namespace ts5::batch
