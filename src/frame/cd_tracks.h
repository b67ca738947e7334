// Tracks of audio CDs as lists and directories name them: "VENDOR PRODUCT\Track 3" in a list, "Track 03" in
// the directory that stands for a drive (see VolumeTable).
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/disc/cd_drive.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/volumes.h"

namespace ts5 {

// The texts of CD track entries. '.' and ':' of the drive's names become blanks, so that the entry is known
// as a track again when it is read back.
[[nodiscard]] std::string CdTrackEntry(const DriveName& drive, int track);  // "... \Track 3"
[[nodiscard]] std::string CdTrackEntry(const DriveName& drive,
                                       std::string_view trackName);  // "... \Track 03"
// "Track03.cda" -> 3; nothing when the name ends in no track number from 1 to 99.
[[nodiscard]] std::optional<int> TrackNumberOf(std::string_view cdaName);

// A track, and the drive that it is to come from.
struct CdTrackPlace {
  CdDriveEntry drive;
  int number = 0;

  [[nodiscard]] std::string Title() const;  // "Track 3 von VENDOR PRODUCT"
};

// What an entry or a path in a drive's directory names; nothing when it names no track, or none of a drive
// that is there. Whether there is a disc with that track shows when it is read.
[[nodiscard]] std::optional<CdTrackPlace> FindCdTrack(std::string_view source,
                                                      const std::vector<CdDriveEntry>& drives);
[[nodiscard]] std::optional<CdTrackPlace> FindCdTrack(std::string_view source);  // of this machine
// Whether the disc in that drive has the track; asks the drive.
[[nodiscard]] bool CdTrackExists(std::string_view source);

// Whether a path stands for a disc drive: its device file, or the directory of the virtual one.
[[nodiscard]] bool IsCdDrive(const std::string& path);
// The path that stands for the drive of that name, "VENDOR PRODUCT"; nothing when there is none.
[[nodiscard]] std::optional<std::string> CdDirectoryOf(std::string_view driveName);
// Why the disc of the virtual drive could not be changed, for the user.
[[nodiscard]] std::string DiscFailureText(Outcome outcome, std::string_view path);

struct AudioCd {
  struct Track {
    int number = 0;
    std::uint32_t seconds = 0;  // playing time
  };
  DriveName drive = {};
  std::vector<Track> tracks = {};  // those with music; data beside them are left out
};
// The audio CD that a directory stands for; nothing when it stands for none. Asks the drive, which may take
// seconds.
[[nodiscard]] std::optional<AudioCd> FindAudioCd(const std::string& directory);
// The name of the drive that a file lies on; nothing when that is no disc drive.
[[nodiscard]] std::optional<DriveName> DriveOfFile(const VolumeTable& volumes, std::string_view path);

}  // namespace ts5
