// Disc drives: which there are and what is on their discs, and the discs of the virtual ones.
#include <array>
#include <optional>
#include <string>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "disc/disc_info.h"
#include "disc/texts.h"
#include "frame/cd_tracks.h"
#include "frame/file_view.h"
#include "platform/base/text.h"
#include "platform/disc/cd_drive.h"
#include "platform/disc/drive_claim.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"

namespace ts5::batch {
namespace {

// A disc that is changed, and what is said when that fails.
int Changed(Console& console, Outcome outcome, const std::string& path) {
  if (Succeeded(outcome)) return kExitSuccess;
  PrintError(console, DiscFailureText(outcome, path));
  return kExitFailed;
}

// --- list

Json DiscJson(const disc::DiscReport& report) {
  if (!report.HasDisc()) return nullptr;
  Json json{{"status", std::string(report.Status())},
            {"erasable", report.info && report.info->erasable},
            {"mcn", report.catalogue},
            {"title", report.text.disc.title},
            {"performer", report.text.disc.performer},
            {"freeFrames", report.freeSectors},
            {"tracks", Json::array()}};
  for (const disc::TrackReport& track : report.tracks) {
    Json row{{"number", track.toc.number},  {"audio", track.toc.audio},  {"start", track.toc.start},
             {"frames", track.toc.sectors}, {"pregap", nullptr},         {"control", track.toc.control},
             {"isrc", track.isrc},          {"title", track.text.title}, {"performer", track.text.performer}};
    if (track.pause) row["pregap"] = *track.pause;
    json["tracks"].push_back(std::move(row));
  }
  return json;
}

Json SpeedsOf(CdDrive& drive) {
  constexpr std::array kSteps{1, 2, 4, 8, 10, 12, 16, 20, 24, 32, 40, 48, 52};
  Json speeds = Json::array();
  const auto capabilities = drive.ReadCapabilities();
  const std::uint32_t most = capabilities ? capabilities->writeSpeed : 0;
  for (const int step : kSteps)
    if (step > 1 && std::cmp_less_equal(step, most)) speeds.push_back(step);
  return speeds;
}

void PrintDrive(Console& console, const CdDriveEntry& entry, const disc::DiscReport& report) {
  console.out << entry.name.Whole() << "  (" << entry.path << ")\n";
  if (!report.HasDisc()) {
    console.out << "  " << Text(texts::BatchNoDisc) << '\n';
  } else if (report.Status() != "blank" && report.tracks.empty()) {
    // A disc that a broken burning has left.
    const PropertyRow status = disc::DiscRows(report)[1];
    console.out << "  " << status.label << ": " << status.value << '\n';
  } else if (report.tracks.empty()) {
    const std::uint32_t seconds = report.freeSectors / kSectorsPerSecond;
    console.out << "  " << Format(Text(texts::BatchFreeDisc), seconds / 60, seconds % 60) << '\n';
  }
  for (const disc::TrackReport& track : report.tracks) {
    console.out << "  " << Padded(CdTrackEntry(entry.name, track.toc.number), 40) << ' '
                << (track.toc.audio ? TimeText(track.toc.sectors / kSectorsPerSecond)
                                    : std::string(Text(texts::BatchDataTrack)));
    const std::string title = report.known.Track(track.toc.number).title;
    if (!title.empty()) console.out << "  " << Printable(title);
    console.out << '\n';
  }
}

int ListCommand(CommandLine line, Console& console) {
  bool json = false;
  Arguments arguments("cd list", texts::BatchCdListSummary, texts::BatchCdListExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;

  Json rows = Json::array();
  for (const CdDriveEntry& entry : ScanDrives()) {
    auto drive = CdDrive::Open(entry.path);
    if (!drive) continue;
    // Looking for pauses moves the head of a real drive for minutes.
    const disc::DiscReport report = disc::ReadDiscReport(*drive, json && IsVirtualDrive(entry.path));
    if (!json) {
      PrintDrive(console, entry, report);
      continue;
    }
    const auto capabilities = drive->ReadCapabilities();
    rows.push_back({{"name", entry.name.Whole()},
                    {"path", entry.path},
                    {"virtual", IsVirtualDrive(entry.path)},
                    {"writer", capabilities && (capabilities->writesCdR || capabilities->writesCdRw)},
                    {"speeds", SpeedsOf(*drive)},
                    {"disc", DiscJson(report)}});
  }
  if (json) console.out << JsonText({{"drives", rows}});
  return kExitSuccess;
}

// --- discs of virtual drives

int InsertCommand(CommandLine line, Console& console) {
  std::string path;
  Arguments arguments("cd insert", texts::BatchCdInsertSummary, texts::BatchCdInsertExamples);
  arguments.Required("DATEI.cue", path, texts::BatchHelpCueFile);
  if (const auto status = arguments.Read(line, console)) return *status;
  return Changed(console, InsertVirtualDisc(path), path);
}

int BlankCommand(CommandLine line, Console& console) {
  constexpr int kLong = 80;
  constexpr int kShort = 74;
  std::string directory;
  std::optional<std::string> minutes;
  bool rewritable = false;
  Arguments arguments("cd blank", texts::BatchCdBlankSummary, texts::BatchCdBlankExamples);
  arguments.Required("VERZ", directory, texts::BatchHelpBlankDirectory);
  arguments.Option("--minutes", "74|80", minutes, texts::BatchHelpBlankMinutes);
  arguments.Flag("--rw", rewritable, texts::BatchHelpBlankRw);
  if (const auto status = arguments.Read(line, console)) return *status;
  const auto length = ParseInteger(minutes.value_or("80"));
  if (length != kLong && length != kShort)
    return WrongUsage(console, "cd blank", Format(Text(texts::BatchBlankMinutesWrong), *minutes));
  const Outcome outcome = InsertBlankDisc(directory, static_cast<int>(*length), rewritable);
  if (Succeeded(outcome)) return kExitSuccess;
  // The drive may be at work, or the directory holds a disc.
  const bool there = outcome == Outcome::InUse && RecordedDisc::Load(directory).has_value();
  PrintError(console,
             there ? Format(Text(texts::BatchBlankThere), directory) : DiscFailureText(outcome, directory));
  return kExitFailed;
}

// --- one drive

// The path of the drive of that name or path; nothing after saying that there is none.
std::optional<std::string> DrivePath(Console& console, const std::string& name) {
  auto path = IsCdDrive(name) ? std::optional(name) : CdDirectoryOf(name);
  if (!path) PrintError(console, Format(Text(texts::BatchDriveUnknown), name));
  return path;
}

// The same, open.
std::optional<CdDrive> OpenDrive(Console& console, const std::string& name) {
  const auto path = DrivePath(console, name);
  if (!path) return std::nullopt;
  auto drive = CdDrive::Open(*path);
  if (drive) return *std::move(drive);
  PrintError(console, Text(texts::RemarkDriveNotOpened));
  return std::nullopt;
}

void PrintRows(Console& console, const std::vector<PropertyRow>& rows) {
  constexpr std::size_t kLabel = 28;
  for (const PropertyRow& row : rows) console.out << Padded(row.label, kLabel) << row.value << '\n';
}

int InfoCommand(CommandLine line, Console& console) {
  std::string name;
  Arguments arguments("cd info", texts::BatchCdInfoSummary, texts::BatchCdInfoExamples);
  arguments.Required("LAUFWERK", name, texts::BatchHelpAnyDrive);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto drive = OpenDrive(console, name);
  if (!drive) return kExitFailed;
  const disc::DiscReport report = disc::ReadDiscReport(*drive, false);
  if (!report.HasDisc()) {
    PrintError(console, Format(Text(texts::RemarkDiscUnknown), 1200));
    return kExitFailed;
  }
  PrintRows(console, disc::DiscRows(report));
  return kExitSuccess;
}

int TrackCommand(CommandLine line, Console& console) {
  std::string name;
  std::string number;
  Arguments arguments("cd track", texts::BatchCdTrackSummary, texts::BatchCdTrackExamples);
  arguments.Required("LAUFWERK", name, texts::BatchHelpAnyDrive);
  arguments.Required("TRACK", number, texts::BatchHelpTrackNumber);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto drive = OpenDrive(console, name);
  if (!drive) return kExitFailed;
  const disc::DiscReport report = disc::ReadDiscReport(*drive, true);
  const auto track = ParseInteger(number);
  const auto rows = track && *track > 0 && *track < 100
                        ? disc::TrackRows(*drive, report, static_cast<int>(*track))
                        : std::nullopt;
  if (!rows) {
    PrintError(console, Text(texts::TrackInfoFailed));
    return kExitFailed;
  }
  PrintRows(console, *rows);
  return kExitSuccess;
}

int EraseCommand(CommandLine line, Console& console) {
  std::string name;
  bool full = false;
  Arguments arguments("cd erase", texts::BatchCdEraseSummary, texts::BatchCdEraseExamples);
  arguments.Required("LAUFWERK", name, texts::BatchHelpAnyDrive);
  arguments.Flag("--full", full, texts::BatchHelpEraseFull);
  if (const auto status = arguments.Read(line, console)) return *status;
  const auto path = DrivePath(console, name);
  if (!path) return kExitFailed;
  const disc::EraseOutcome outcome = disc::EraseDisc(*path, full ? BlankType::Complete : BlankType::Minimal);
  if (outcome == disc::EraseOutcome::Erased) {
    console.out << Text(disc::EraseText(outcome)) << '\n';
    return kExitSuccess;
  }
  PrintError(console, Text(disc::EraseText(outcome)));
  return kExitFailed;
}

int EjectCommand(CommandLine line, Console& console) {
  std::optional<std::string> name;
  Arguments arguments("cd eject", texts::BatchCdEjectSummary, texts::BatchCdEjectExamples);
  arguments.Optional("LAUFWERK", name, texts::BatchHelpEjectDrive);
  if (const auto status = arguments.Read(line, console)) return *status;
  const auto path = name && !IsCdDrive(*name) ? CdDirectoryOf(*name) : name;
  if (!name || path == VirtualCdDirectory())
    return Changed(console, EjectVirtualDisc(), VirtualDisc().value_or(""));
  auto drive = OpenDrive(console, *name);
  if (!drive) return kExitFailed;
  const auto claim = DriveClaim::Take(*path);
  const bool busy = !claim && claim.error() == Outcome::InUse;
  return Changed(console, busy ? Outcome::InUse : drive->Eject(), *name);
}

int LoadCommand(CommandLine line, Console& console) {
  std::string name;
  Arguments arguments("cd load", texts::BatchCdLoadSummary, texts::BatchCdLoadExamples);
  arguments.Required("LAUFWERK", name, texts::BatchHelpAnyDrive);
  if (const auto status = arguments.Read(line, console)) return *status;
  auto drive = OpenDrive(console, name);
  return drive ? Changed(console, drive->Load(), name) : kExitFailed;
}

constexpr std::array kCommands{
    Command{"list", texts::BatchCdListSummary, ListCommand},
    Command{"insert", texts::BatchCdInsertSummary, InsertCommand},
    Command{"blank", texts::BatchCdBlankSummary, BlankCommand},
    Command{"info", texts::BatchCdInfoSummary, InfoCommand},
    Command{"track", texts::BatchCdTrackSummary, TrackCommand},
    Command{"erase", texts::BatchCdEraseSummary, EraseCommand},
    Command{"eject", texts::BatchCdEjectSummary, EjectCommand},
    Command{"load", texts::BatchCdLoadSummary, LoadCommand},
};
constexpr CommandGroup kGroup{"cd", kCommands, texts::BatchCdSummary, texts::BatchCdOverviewExamples};

}  // namespace

int CdCommand(CommandLine line, Console& console) {
  return Dispatch(kGroup, line, console);
}

}  // namespace ts5::batch
