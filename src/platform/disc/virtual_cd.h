// The virtual CD drive of the program: it takes CUE sheets in place of discs and answers commands as a drive
// does, so that audio CDs can be used on a machine without a drive. Which disc is in it outlives the program
// and is shared by all its processes; it is kept in the directory that stands for the drive.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/base/outcome.h"
#include "platform/disc/disc_image.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/scsi_transport.h"

namespace ts5 {

// The directory that stands for the drive, below ProgramDirectory(). It is made when the first disc is put
// in.
[[nodiscard]] std::string VirtualCdDirectory();
[[nodiscard]] DriveName VirtualCdName();

// The CUE sheet that is in the drive; nothing when it is empty.
[[nodiscard]] std::optional<std::string> VirtualDisc();
// Puts a disc in the place of the one that is in the drive, if the sheet makes a disc: else as
// DiscImage::Open. InUse: the drive is playing. WriteFailed, TargetFailed: it cannot be kept.
[[nodiscard]] Outcome InsertVirtualDisc(const std::string& cuePath);
[[nodiscard]] Outcome EjectVirtualDisc();  // InUse, TargetFailed; Success for an empty drive

// The drive with what is in it now; a disc whose files are gone counts as none.
[[nodiscard]] std::unique_ptr<ScsiTransport> OpenVirtualCd();
[[nodiscard]] std::unique_ptr<ScsiTransport> VirtualCd(std::optional<DiscImage> disc);

}  // namespace ts5
