// What is on a disc and what it is, for dialogs and the console.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "frame/property_row.h"
#include "platform/base/strings.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {

struct TrackReport {
  TocTrack toc = {};
  std::optional<std::uint32_t> pause = {};  // sectors; nothing: not asked for, or not found
  std::string isrc = {};
  CdText::Entry text = {};
};

struct DiscReport {
  std::optional<DiscInformation> info = {};  // only of drives that write
  std::optional<DiscToc> toc = {};           // not of a blank disc
  std::vector<TrackReport> tracks = {};
  std::string catalogue = {};
  CdText text = {};   // what the disc says
  CdText known = {};  // and what is known of it where it says nothing
  std::uint32_t freeSectors = 0;

  // "blank", "open", "finalized", "damaged"; "" for no disc.
  [[nodiscard]] std::string_view Status() const;
  [[nodiscard]] bool HasDisc() const { return info || toc; }
};

// Sectors that can be written on the disc in the drive; nothing when there is none that is blank.
[[nodiscard]] std::optional<std::uint32_t> BlankSectors(const std::string& drive);

// Asks the drive. pauses: also for the pauses of the tracks, which takes a while.
[[nodiscard]] DiscReport ReadDiscReport(CdDrive& drive, bool pauses);

// Erasing the disc of a drive, which may take an hour.
enum class EraseOutcome : std::uint8_t { Erased, Failed, NotOpened, Busy };
[[nodiscard]] EraseOutcome EraseDisc(const std::string& drive, BlankType type);
[[nodiscard]] TextId EraseText(EraseOutcome outcome);

// The rows of the dialogs, in their order.
[[nodiscard]] std::vector<PropertyRow> DiscRows(const DiscReport& report);
// Nothing when the disc has no such track.
[[nodiscard]] std::optional<std::vector<PropertyRow>> TrackRows(CdDrive& drive, const DiscReport& report,
                                                                int track);

}  // namespace ts5::disc
