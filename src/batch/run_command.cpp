// "ts5-batch run": a filter over files, with parameters from the command line.
#include <algorithm>
#include <utility>

#include "audio/tags/attribute_store.h"
#include "batch/arguments.h"
#include "batch/command_line.h"
#include "batch/commands.h"
#include "batch/disc_options.h"
#include "batch/melody_options.h"
#include "batch/print_options.h"
#include "batch/run_session.h"
#include "batch/store.h"
#include "batch/target_preview.h"
#include "batch/texts.h"
#include "disc/texts.h"
#include "frame/cd_tracks.h"
#include "frame/directory_listing.h"
#include "frame/failure_reason.h"
#include "frame/file_list_file.h"
#include "frame/filter_bar.h"
#include "frame/filter_catalogue.h"
#include "frame/run_journal.h"
#include "frame/settings_store.h"
#include "frame/texts.h"
#include "modules/filter_modules.h"
#include "platform/base/text.h"
#include "platform/disc/volumes.h"
#include "platform/files/fault.h"
#include "platform/files/files.h"
#include "platform/files/real_paths.h"

namespace ts5::batch {
namespace {

constexpr std::string_view kCommand = "run";

struct Request {
  std::string filter;
  std::vector<std::string> settings;
  std::vector<std::string> attributes;
  std::optional<std::string> destination;
  std::optional<std::string> destinationDirectory;
  std::optional<std::string> overwrite;
  std::optional<std::string> list;
  std::optional<std::string> directory;
  bool subdirectories = false;
  std::optional<std::string> device;
  std::optional<std::string> input;
  std::optional<std::string> part;
  MelodyOptions melody;
  DiscOptions disc;
  PrintOptions print;
  OutputOptions output;
  bool preview = false;
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

TextId ExamplesOf(FilterId filter) {
  return IsFilter(filter) ? Descriptor(filter).examples : texts::BatchRunExamples;
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

// A source of a command line: a track of a CD, or a file in full, as results are read in other directories,
// too.
std::string SourceOf(const std::string& word) {
  return IsCdTrackText(word) && !FileExists(word) ? word : FullPath(word);
}

// The second line of a directory that could not be made just now.
std::string WhyNotMade() {
  const auto fault = TakeFault();
  if (!fault) return {};
  if (!IsDirectory(fault->path)) return "\n" + Format(Text(texts::BatchInTheWay), fault->path);
  return "\n" + FailureReason(Outcome::TargetFailed, {}, {}, fault);
}

// What cannot be right whatever the files hold; nothing when all is well.
std::optional<std::string> Contradiction(const Request& request) {
  const bool names = !request.files.empty() || request.list;
  if (request.directory && names) return std::string(Text(texts::BatchDirAlone));
  const FilterDescriptor& filter = Descriptor(FindFilter(request.filter));
  const bool takesFiles = !filter.several.empty() || !filter.wholeList.empty();
  if (takesFiles && !request.directory && !names) return std::string(Text(texts::BatchNoSources));
  if (request.destination && request.destinationDirectory) return std::string(Text(texts::BatchDestTwice));
  if (request.overwrite && !ParseOverwrite(*request.overwrite)) {
    return Format(Text(texts::BatchOverwriteWrong), *request.overwrite);
  }
  if (const auto& target = request.destinationDirectory;
      target && (IsCdDrive(*target) || CdDirectoryOf(*target)))
    return Format(Text(texts::BatchNoDirectory), *request.destinationDirectory);
  if (request.part && !ParseShare(*request.part)) return Format(Text(texts::BatchPartWrong), *request.part);
  if (request.directory && !IsDirectory(*request.directory) && !IsCdDrive(*request.directory))
    return Format(Text(texts::BatchNoDirectory), *request.directory);
  return std::nullopt;
}

// The share of the items that are known before the run: selected in the list of all, as targets are named for
// all parts together.
void SelectShare(Job& job, const RunShare& share) {
  if (share.parts == 1) return;
  if (job.Mode() == SourceMode::Directory && Has(job.filter, kTracksOnly)) {  // tracks belong to their drive
    DirectorySelection& tracks = job.directory;
    const std::vector<std::string> names = std::exchange(tracks.names, {});
    tracks.indices.clear();
    for (std::uint32_t i = 0; i < names.size(); ++i) {
      if (!share.Takes(i)) continue;
      tracks.names.push_back(names[i]);
      tracks.indices.push_back(i);
    }
    return;
  }
  FreeFileList files;
  std::vector<std::size_t> own;
  for (std::size_t i = 0; i < ItemCount(job); ++i) {
    if (auto entry = ItemEntry(job, i)) files.Append(*std::move(entry));
    if (share.Takes(i)) own.push_back(i);
  }
  files.Select(std::move(own));
  job.files = std::move(files);
  job.sourceDrive = kListModeDrive;
}

// The files of a directory that the filter takes, all selected; a search walks the whole tree. False after
// saying what is wrong.
bool TakeDirectory(Console& console, Job& job, const std::string& directory, bool subdirectories) {
  job.sourceDrive = 0;
  job.subdirectories = subdirectories;
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
  const ListingEnd end = (subdirectories ? ListTree : ListDirectory)(directory, FindAudioCd, {}, take);
  if (Failed(end.outcome)) {
    PrintError(console, Format(Text(texts::BatchDirectoryUnreadable), directory));
    return false;
  }
  if (job.directory.names.empty()) {
    PrintError(console, IsCdDrive(directory) ? std::string(Text(texts::DriveHasNoMusic))
                                             : Format(Text(texts::BatchDirectoryEmpty), directory));
    return false;
  }
  return true;
}

// Takes the entries of a file list, and says what is missing of it. Nothing when it cannot be used at all,
// else whether all files were there.
std::optional<bool> TakeList(Console& console, Job& job, const std::string& path) {
  const bool burner = Has(job.filter, kTimedList);
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
  arguments.Repeated("--attribute", "NAME=WERT", request.attributes, texts::BatchHelpAttribute);
  arguments.Option("--dest", "DATEI", request.destination, texts::BatchHelpDest);
  arguments.Option("--dest-dir", "VERZ", request.destinationDirectory, texts::BatchHelpDestDir);
  arguments.Option("--overwrite", "yes|number|ask", request.overwrite, texts::BatchHelpOverwrite);
  arguments.Option("--list", "LISTE.sts", request.list, texts::BatchHelpList);
  arguments.Option("--dir", "VERZ", request.directory, texts::BatchHelpDir);
  arguments.Flag("--subfolders", request.subdirectories, texts::BatchHelpSubfolders);
  arguments.Option("--part", "N/M", request.part, texts::BatchHelpPart);
  arguments.Option("--device", "NAME", request.device, texts::BatchHelpDevice);
  arguments.Option("--input", "NAME", request.input, texts::BatchHelpInput);
  AddMelodyOptions(arguments, request.melody);
  AddDiscOptions(arguments, request.disc);
  AddPrintOptions(arguments, request.print);
  arguments.Flag("--preview", request.preview, texts::BatchHelpPreview);
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
  for (const std::string& attribute : request.attributes) {
    if (!tags::ParseAttribute(attribute))
      return WrongUsage(console, kCommand, Format(Text(texts::BatchAttributeWrong), Shortened(attribute)));
    request.settings.push_back("FileAttribute=" + attribute);
  }
  if (const auto fault = ApplySettings(module->fields, *job.parameters, request.settings)) {
    return WrongUsage(console, kCommand, *fault);
  }
  // A drive goes by its name too.
  if (request.directory && !IsDirectory(*request.directory))
    request.directory = CdDirectoryOf(*request.directory).value_or(*request.directory);
  if (const auto fault = Contradiction(request)) return WrongUsage(console, kCommand, *fault);
  for (auto* const path : {&request.destination, &request.destinationDirectory, &request.directory,
                           &request.list, &request.print.layout, &request.print.pictures}) {
    if (*path) *path = FullPath(**path);
  }

  auto registry = OpenRegistry(console);
  if (!registry) return kExitFailed;
  if (const auto fault = TakeMelody(request.melody, *registry, job))
    return WrongUsage(console, kCommand, *fault);
  if (request.destination) job.destinationName = *request.destination;
  if (!request.print.printer) request.print.printer = request.device;
  if (const auto status = TakePrinting(request.print, *registry, kCommand, console, job)) return *status;
  if (module->missing) {
    if (const auto text = module->missing(job)) return WrongUsage(console, kCommand, Text(*text));
  }
  const Settings settings = LoadSettings(*registry, DefaultSettingsGround());
  DestinationRules rules = DestinationRulesOf(settings);
  rules.noPreset = false;  // a command has no field that could be filled in
  rules.overwrite = ParseOverwrite(request.overwrite.value_or("ask")).value_or(OverwritePolicy::Ask);
  if (request.destinationDirectory) {
    rules.sourceDirectory = false;
    rules.directory = *request.destinationDirectory;
  }

  if (request.destinationDirectory && !request.preview &&
      Failed(MakeDirectories(*request.destinationDirectory))) {
    PrintError(console,
               Format(Text(texts::BatchDirectoryNotMade), *request.destinationDirectory) + WhyNotMade());
    return kExitFailed;
  }

  bool complete = true;
  if (request.directory) {
    if (!TakeDirectory(console, job, *request.directory, request.subdirectories)) return kExitFailed;
    if (request.subdirectories) rules.structure = *request.directory;
  } else {
    job.sourceDrive = kListModeDrive;
    if (request.list) {
      const auto taken = TakeList(console, job, *request.list);
      if (!taken) return kExitFailed;
      complete = *taken;
    }
    for (const std::string& file : request.files) job.files.Append({.path = SourceOf(file)});
    job.files.SelectAll();
  }
  if (const auto fault = TakeDisc(request.print, console, job)) return WrongUsage(console, kCommand, *fault);
  if (request.print.pictures) return WritePictures(request.print, job, rules, console);
  const RunShare share = request.part ? ParseShare(*request.part).value_or(RunShare{}) : RunShare{};
  const bool walks = IsSearch(job.filter) && request.directory;
  if (!walks) SelectShare(job, share);
  request.output.melodies = request.melody.Names();
  if (request.part) request.output.share = share;
  const bool nothingSelected =
      job.Mode() == SourceMode::List ? job.files.Selection().empty() : job.directory.names.empty();
  if (share.parts > 1 && !walks && nothingSelected) {
    RunResult nothing;  // there are fewer items than parts
    nothing.filter = job.filter;
    nothing.titles = Descriptor(job.filter).titles;
    return PrintResult(console, nothing, {}, request.output);
  }
  const bool resultFile = request.destination || request.destinationDirectory;
  job.destinationIsScreen = IsSearch(job.filter) && !resultFile;
  if (request.destination) {
    if (ItemCount(job) > 1 && !IsSearch(job.filter) && !Has(job.filter, kNeedsNoSources))
      return WrongUsage(console, kCommand, Text(texts::BatchDestForOne));
    job.destinationName = *request.destination;
    rules.origin = NameOrigin::Command;
  }
  RunDevices devices{.output = request.device.value_or(""), .input = request.input.value_or("")};
  if (const auto fault = TakeDiscOptions(request.disc, job, devices))
    return WrongUsage(console, kCommand, *fault);
  if (request.preview) return PreviewOnConsole(console, job, rules, share, request.output.json);
  const int status = RunOnConsole(console, job,
                                  {.settings = settings,
                                   .devices = devices,
                                   .destination = rules,
                                   .share = share,
                                   .journals = JournalDirectory(DefaultRegistryPath())},
                                  request.output);
  return status == kExitSuccess && !complete ? kExitFailed : status;
}

}  // namespace ts5::batch
