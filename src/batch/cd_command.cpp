// Disc drives: which there are and what is on their discs, and the disc of the virtual one.
#include <array>
#include <optional>
#include <string>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "frame/cd_tracks.h"
#include "frame/file_view.h"
#include "platform/cd_drive.h"
#include "platform/text.h"
#include "platform/virtual_cd.h"

namespace ts5::batch {
namespace {

// A disc that is changed, and what is said when that fails.
int Changed(Console& console, Outcome outcome, const std::string& path) {
  if (Succeeded(outcome)) return kExitSuccess;
  PrintError(console, DiscFailureText(outcome, path));
  return kExitFailed;
}

int ListCommand(CommandLine line, Console& console) {
  bool json = false;
  Arguments arguments("cd list", texts::BatchCdListSummary, texts::BatchCdListExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;

  Json rows = Json::array();
  for (const CdDriveEntry& entry : CdDrives()) {
    auto drive = CdDrive::Open(entry.path);
    const auto toc = drive ? drive->ReadToc() : Failure(Outcome::CdDriveFailed);
    Json row{{"drive", entry.name.vendor + " " + entry.name.product},
             {"path", entry.path},
             {"tracks", Json::array()}};
    if (!json) {
      console.out << row["drive"].get<std::string>() << "  (" << entry.path << ")\n";
      if (!toc) console.out << "  " << Text(texts::BatchNoDisc) << '\n';
    }
    for (const TocTrack& track : toc ? toc->tracks : std::vector<TocTrack>{}) {
      const std::string name = CdTrackEntry(entry.name, track.number);
      if (json) {
        row["tracks"].push_back(
            {{"track", name}, {"audio", track.audio}, {"start", track.start}, {"sectors", track.sectors}});
      } else {
        console.out << "  " << Padded(name, 40) << ' '
                    << (track.audio ? TimeText(track.sectors / kSectorsPerSecond)
                                    : std::string(Text(texts::BatchDataTrack)))
                    << '\n';
      }
    }
    rows.push_back(std::move(row));
  }
  if (json) console.out << JsonText({{"drives", rows}});
  return kExitSuccess;
}

int InsertCommand(CommandLine line, Console& console) {
  std::string path;
  Arguments arguments("cd insert", texts::BatchCdInsertSummary, texts::BatchCdInsertExamples);
  arguments.Required("DATEI.cue", path, texts::BatchHelpCueFile);
  if (const auto status = arguments.Read(line, console)) return *status;
  return Changed(console, InsertVirtualDisc(path), path);
}

int EjectCommand(CommandLine line, Console& console) {
  Arguments arguments("cd eject", texts::BatchCdEjectSummary, texts::BatchCdEjectExamples);
  if (const auto status = arguments.Read(line, console)) return *status;
  return Changed(console, EjectVirtualDisc(), VirtualDisc().value_or(""));
}

constexpr std::array kCommands{
    Command{"list", texts::BatchCdListSummary, ListCommand},
    Command{"insert", texts::BatchCdInsertSummary, InsertCommand},
    Command{"eject", texts::BatchCdEjectSummary, EjectCommand},
};
constexpr CommandGroup kGroup{"cd", kCommands, texts::BatchCdSummary, texts::BatchCdOverviewExamples};

}  // namespace

int CdCommand(CommandLine line, Console& console) {
  return Dispatch(kGroup, line, console);
}

}  // namespace ts5::batch
