// Disc drives as the program uses them: those of this machine and the virtual ones.
//
//   auto drive = CdDrive::Open("/dev/sr0");
//   const auto toc = drive->ReadToc();
//   drive->ReadCdAudio(Lba{...}, sectors);
//
// What a drive refuses is CdDriveFailed; LastSense() says why.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/base/outcome.h"
#include "platform/base/work_watch.h"
#include "platform/disc/cd_text.h"
#include "platform/disc/mmc_commands.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/scsi_transport.h"
#include "platform/disc/sense.h"

namespace ts5 {

// Sectors that one command reads or writes: what every drive and adapter takes at once.
inline constexpr std::uint32_t kSectorsPerCommand = 26;

enum class MediaState : std::uint8_t { Ready = 0, NotReady = 1, UnitAttention = 2, NoMedium = 4 };

// How long to wait for the mechanics. A virtual drive has none.
struct DrivePace {
  std::chrono::milliseconds poll{1000};         // of a drive that is busy with what it was told
  std::chrono::milliseconds beforeClose{1000};  // until a track-at-once disc is closed
  std::chrono::milliseconds beforeCloseAtOnce{3000};
};

class CdDrive {
 public:
  // path: a device file, or the directory of a virtual drive. SourceFailed: no such drive, or it may not be
  // opened.
  [[nodiscard]] static Result<CdDrive> Open(const std::string& path);
  explicit CdDrive(std::unique_ptr<ScsiTransport> transport, DrivePace pace = {})
      : transport_(std::move(transport)), pace_(pace) {}

  [[nodiscard]] const SenseData& LastSense() const { return lastSense_; }
  [[nodiscard]] const DrivePace& Pace() const { return pace_; }

  // CdDriveFailed: it does not answer, or is no disc drive.
  [[nodiscard]] Result<DriveName> Name();
  [[nodiscard]] MediaState State();
  // Waits for a drive that is busy, at most so long. CdDriveFailed, Cancelled.
  [[nodiscard]] Outcome WaitUntilReady(std::chrono::milliseconds patience, const CancelCheck& cancelled = {});

  // --- the disc
  // Waits a few seconds for a disc that the drive is still getting ready. CdDriveFailed: there is no disc, or
  // none with a table of contents; Cancelled.
  [[nodiscard]] Result<DiscToc> ReadToc(const CancelCheck& cancelled = {});
  // Whether the disc was changed or taken out since then. From there on no sectors and places are read: they
  // would be another disc's.
  [[nodiscard]] bool DiscChanged() const { return changed_; }
  [[nodiscard]] Result<DiscInformation> ReadDiscInfo();
  [[nodiscard]] Result<TrackInformation> ReadTrackInformation(std::uint8_t track);
  // The invisible track: where the next one begins, which is on the disc. CdDriveFailed: nothing can be
  // written.
  [[nodiscard]] Result<TrackInformation> ReadNextWritable();
  [[nodiscard]] std::string ReadCatalogue();  // "" when there is none
  [[nodiscard]] std::string ReadIsrc(int track);
  [[nodiscard]] CdText ReadCdText();  // empty when there is none
  // Whole sectors of audio tracks, each command a few times. ReadFailed, also when the disc has been taken
  // out; Cancelled.
  [[nodiscard]] Outcome ReadCdAudio(Lba address, std::span<std::uint8_t> out,
                                    const CancelCheck& cancelled = {});
  // The same once, with the drive's word on each sector: false where it could not correct all of it. Drives
  // without error pointers say nothing.
  [[nodiscard]] Outcome ReadCdAudioChecked(Lba address, std::span<std::uint8_t> out,
                                           std::vector<bool>& sound);
  // The track and index at a place, by playing from there. CdDriveFailed.
  [[nodiscard]] Result<SubChannelPosition> PlayAndPosition(Lba address);
  void SetAudioMute(bool mute);

  // --- the drive
  [[nodiscard]] Result<DriveCapabilities> ReadCapabilities();
  [[nodiscard]] Outcome SetSpeed(std::uint32_t factor);  // of reading and writing; 0: as fast as it goes
  [[nodiscard]] Outcome Eject();
  [[nodiscard]] Outcome Load();
  void PreventRemoval(bool prevent);

  // --- writing
  [[nodiscard]] Outcome SendOpc();
  // InvalidParameter: the drive's page cannot be read; CdDriveFailed: it does not take ours.
  [[nodiscard]] Outcome SetWriteParameters(const WriteParameters& parameters);
  [[nodiscard]] Outcome SendCueSheet(ByteView entries);
  // Sectors of 2352 bytes, or of 96 in the lead-in. Waits while the drive's buffer is full.
  [[nodiscard]] Outcome WriteSectors(Lba address, ByteView data, std::size_t sectorBytes = kAudioSectorBytes);
  [[nodiscard]] Outcome SynchronizeCache();
  // Waits until the drive is through, however often that takes.
  [[nodiscard]] Outcome Close(CloseWhat what, int track = 0);
  [[nodiscard]] Outcome Blank(BlankType type);

 private:
  ScsiReply Execute(const Cdb& cdb, std::span<std::uint8_t> in = {}, ByteView out = {});
  // Bytes that came; empty when the drive refuses.
  Bytes Ask(const Cdb& cdb, std::size_t room);
  Outcome Do(const Cdb& cdb, ByteView out = {});
  Outcome ReadPortion(Lba address, std::span<std::uint8_t> out, const CancelCheck& cancelled);

  std::unique_ptr<ScsiTransport> transport_;
  DrivePace pace_;
  SenseData lastSense_;
  bool changed_ = false;
};

struct CdDriveEntry {
  std::string path;
  DriveName name;
};

// The device files of this machine's disc drives, in their order ("/dev/sr0"...).
[[nodiscard]] std::vector<std::string> CdDeviceFiles();
// The drives that answer, the virtual ones last.
[[nodiscard]] std::vector<CdDriveEntry> ScanDrives();
// Those of them that write discs.
[[nodiscard]] std::vector<CdDriveEntry> CdWriters();
[[nodiscard]] bool IsVirtualDrive(const std::string& path);

}  // namespace ts5
