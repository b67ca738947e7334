#include "disc/disc_info.h"

#include <algorithm>

#include "disc/disc_memory.h"
#include "disc/pause_search.h"
#include "disc/texts.h"
#include "platform/base/text.h"
#include "platform/disc/claimed_drive.h"

namespace ts5::disc {
namespace {

constexpr std::uint8_t kXaDisc = 0x20;
constexpr std::uint8_t kSessionComplete = 3;
constexpr std::uint32_t kDataBytes = 2048;
constexpr std::uint32_t kBytesPerMb = 1024 * 1024;

std::string Number(std::int64_t value) {
  return std::to_string(value);
}

// From where the next track would begin to the last possible lead-out.
std::uint32_t FreeSectorsOf(CdDrive& drive, const DiscInformation& info) {
  if (!info.leadOut) return 0;
  const auto next = drive.ReadNextWritable();
  const Lba start = next ? *next->nextWritable : Lba{};
  return static_cast<std::uint32_t>(std::max(*info.leadOut - start, 0));
}

TextId TypeText(const DiscReport& report) {
  if (report.info && report.info->erasable) return texts::DiscTypeRw;
  if (report.info && report.info->type == kXaDisc) return texts::DiscTypeXa;
  if (!report.toc) return report.info ? texts::DiscTypeAudio : texts::DiscUnknown;
  return report.toc->IsAudioCd() ? texts::DiscTypeAudio : texts::DiscTypeData;
}

TextId StatusText(const DiscReport& report) {
  const std::string_view status = report.Status();
  if (status == "blank") return texts::DiscEmpty;
  if (status == "open") return texts::DiscOpen;
  if (status == "damaged") return texts::DiscSpoilt;
  return status == "finalized" ? texts::DiscFinished : texts::DiscUnknown;
}

std::string TimeOf(std::uint32_t sectors) {
  const Msf time = MsfOfLength(static_cast<std::int32_t>(sectors));
  return Format(Text(texts::TrackTime), int{time.minute}, int{time.second}, int{time.frame});
}

// Title and performer: what the disc says of itself, or what is known of it.
void AddTexts(std::vector<PropertyRow>& rows, const CdText::Entry& disc, const CdText::Entry& known) {
  const auto add = [&](TextId own, TextId remembered, const std::string& said, const std::string& other) {
    if (!said.empty()) rows.push_back({std::string(Text(own)), said});
    if (said.empty() && !other.empty()) rows.push_back({std::string(Text(remembered)), other});
  };
  add(texts::TrackInfoTitle, texts::TrackInfoKnownTitle, disc.title, known.title);
  add(texts::TrackInfoPerformer, texts::TrackInfoKnownPerformer, disc.performer, known.performer);
}

}  // namespace

std::string_view DiscReport::Status() const {
  if (!info) return toc ? "finalized" : "";
  switch (info->status) {
    case DiscStatus::Blank:
      return "blank";
    case DiscStatus::Open:
      return "open";
    default:
      return info->lastSession == kSessionComplete ? "finalized" : "damaged";
  }
}

std::optional<std::uint32_t> BlankSectors(const std::string& drive) {
  auto opened = CdDrive::Open(drive);
  if (!opened) return std::nullopt;
  if (opened->State() == MediaState::UnitAttention) (void)opened->State();
  const auto info = opened->ReadDiscInfo();
  if (!info || info->status != DiscStatus::Blank) return std::nullopt;
  return FreeSectorsOf(*opened, *info);
}

DiscReport ReadDiscReport(CdDrive& drive, bool pauses) {
  DiscReport report;
  if (drive.State() == MediaState::UnitAttention) (void)drive.State();
  if (const auto info = drive.ReadDiscInfo()) report.info = *info;
  const bool blank = report.info && report.info->status == DiscStatus::Blank;
  if (report.info) report.freeSectors = FreeSectorsOf(drive, *report.info);
  if (blank) return report;
  auto toc = drive.ReadToc();
  if (!toc) return report;
  report.toc = *std::move(toc);
  report.catalogue = drive.ReadCatalogue();
  report.text = drive.ReadCdText();
  report.known = DiscMemory().Completed(*report.toc, report.text);
  for (const TocTrack& track : report.toc->tracks) {
    TrackReport one{track,
                    {},
                    track.audio ? drive.ReadIsrc(track.number) : std::string(),
                    report.text.Track(track.number)};
    if (track.number == report.toc->tracks.front().number) {
      one.pause = static_cast<std::uint32_t>(kPregapSectors);
    } else if (pauses) {
      one.pause = FindPause(drive, *report.toc, track.number);
    }
    report.tracks.push_back(std::move(one));
  }
  return report;
}

EraseOutcome EraseDisc(const std::string& drive, BlankType type) {
  auto opened = ClaimedDrive::Open(drive);
  if (!opened) return opened.error() == Outcome::InUse ? EraseOutcome::Busy : EraseOutcome::NotOpened;
  if (opened->drive.State() == MediaState::UnitAttention) (void)opened->drive.State();
  return Succeeded(opened->drive.Blank(type)) ? EraseOutcome::Erased : EraseOutcome::Failed;
}

TextId EraseText(EraseOutcome outcome) {
  switch (outcome) {
    case EraseOutcome::Erased:
      return texts::EraseDone;
    case EraseOutcome::NotOpened:
      return texts::RemarkDriveNotOpened;
    case EraseOutcome::Busy:
      return texts::RemarkDriveBusy;
    case EraseOutcome::Failed:
      break;
  }
  return texts::EraseFailed;
}

std::vector<PropertyRow> DiscRows(const DiscReport& report) {
  const bool blank = report.info && report.info->status == DiscStatus::Blank;
  const auto known = [&](bool there, std::string value) {
    if (blank) return std::string(Text(texts::DiscEmpty));
    return there ? std::move(value) : std::string(Text(texts::DiscUnknown));
  };
  std::vector<PropertyRow> rows;
  const auto add = [&](TextId name, std::string value) {
    rows.push_back({std::string(Text(name)), std::move(value)});
  };
  const bool tracks = report.toc && !report.toc->tracks.empty();
  add(texts::DiscInfoType, std::string(Text(TypeText(report))));
  add(texts::DiscInfoStatus, std::string(Text(StatusText(report))));
  add(texts::DiscInfoFirst, known(tracks, tracks ? Number(report.toc->tracks.front().number) : ""));
  add(texts::DiscInfoLast, known(tracks, tracks ? Number(report.toc->tracks.back().number) : ""));
  const int sessions = report.info ? report.info->sessions : 1;
  add(texts::DiscInfoSessions,
      known(sessions > 0,
            std::string(Text(sessions > 1 ? texts::DiscMultiSession : texts::DiscSingleSession))));
  const bool open = report.info && report.info->lastSession != kSessionComplete;
  add(texts::DiscInfoOpen, std::string(Text(open ? texts::DiscYes : texts::DiscNo)));
  add(texts::DiscInfoFree, Number(std::int64_t{report.freeSectors} * kDataBytes / kBytesPerMb));
  const std::optional<std::uint32_t> capacity =
      report.info && report.info->leadOut
          ? std::optional(static_cast<std::uint32_t>(report.info->leadOut->value))
      : report.toc ? std::optional(report.toc->leadOut)
                   : std::nullopt;
  const std::uint32_t seconds = capacity.value_or(0) / kSectorsPerSecond;
  add(texts::DiscInfoCapacity, capacity ? Format(Text(texts::DiscInfoMinutes), seconds / 60, seconds % 60)
                                        : std::string(Text(texts::DiscUnknown)));
  if (!report.catalogue.empty()) add(texts::DiscInfoCatalogue, report.catalogue);
  AddTexts(rows, report.text.disc, report.known.disc);
  return rows;
}

std::optional<std::vector<PropertyRow>> TrackRows(CdDrive& drive, const DiscReport& report, int track) {
  const auto found =
      std::ranges::find(report.tracks, track, [](const TrackReport& one) { return one.toc.number; });
  if (found == report.tracks.end()) return std::nullopt;
  const auto info = drive.ReadTrackInformation(static_cast<std::uint8_t>(track));
  std::vector<PropertyRow> rows;
  const auto add = [&](TextId name, std::string value) {
    rows.push_back({std::string(Text(name)), std::move(value)});
  };
  const TextId type = found->toc.audio              ? texts::TrackAudio
                      : info && info->dataMode == 2 ? texts::TrackMode2
                                                    : texts::TrackMode1;
  add(texts::TrackInfoType, std::string(Text(type)));
  add(texts::TrackInfoSession, info ? Number(info->session) : Format(Text(texts::TrackUncertain), 1));
  add(texts::TrackInfoStart, TimeOf(found->toc.start + static_cast<std::uint32_t>(kPregapSectors)));
  add(texts::TrackInfoLength, TimeOf(found->toc.sectors));
  const std::string& code = found->isrc.empty() ? report.catalogue : found->isrc;
  add(texts::TrackInfoCode, code.empty() ? std::string(Text(texts::DiscUnknown)) : code);
  const std::uint32_t pause = found->pause.value_or(0);
  add(texts::TrackInfoPause,
      found->pause ? Format(Text(texts::TrackPauseTime), pause / kSectorsPerSecond, pause % kSectorsPerSecond)
                   : Format(Text(texts::TrackUncertain), 0));
  AddTexts(rows, found->text, report.known.Track(track));
  return rows;
}

}  // namespace ts5::disc
