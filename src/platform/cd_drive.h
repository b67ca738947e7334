// Disc drives as the program uses them: those of this machine and the virtual one.
//
//   auto drive = CdDrive::Open("/dev/sr0");
//   const auto toc = drive->ReadToc();
//   drive->ReadAudio(toc->Find(2)->start, sectors);
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "platform/disc_image.h"
#include "platform/mmc.h"
#include "platform/outcome.h"
#include "platform/scsi_transport.h"
#include "platform/work_watch.h"

namespace ts5 {

// Sectors that one command reads: what every drive and adapter takes at once.
inline constexpr std::uint32_t kSectorsPerRead = 26;

enum class MediaState : std::uint8_t { Ready = 0, NotReady = 1, UnitAttention = 2, NoMedium = 4 };

class CdDrive {
 public:
  // path: a device file, or VirtualCdDirectory(). SourceFailed: no such drive, or it may not be opened.
  [[nodiscard]] static Result<CdDrive> Open(const std::string& path);
  explicit CdDrive(std::unique_ptr<ScsiTransport> transport) : transport_(std::move(transport)) {}

  // CdDriveFailed: it does not answer, or is no disc drive.
  [[nodiscard]] Result<DriveName> Name();
  [[nodiscard]] MediaState State();
  // Waits a few seconds for a disc that the drive is still getting ready. CdDriveFailed: there is no disc, or
  // none with a table of contents; Cancelled.
  [[nodiscard]] Result<DiscToc> ReadToc(const CancelCheck& cancelled = {});
  // Whole sectors of audio tracks. ReadFailed, also when the disc has been taken out.
  [[nodiscard]] Outcome ReadAudio(std::uint32_t sector, std::span<std::uint8_t> out);

 private:
  std::unique_ptr<ScsiTransport> transport_;
};

struct CdDriveEntry {
  std::string path;
  DriveName name;
};

// The device files of this machine's disc drives, in their order ("/dev/sr0"...).
[[nodiscard]] std::vector<std::string> CdDeviceFiles();
// The drives that answer, the virtual one last.
[[nodiscard]] std::vector<CdDriveEntry> CdDrives();

}  // namespace ts5
