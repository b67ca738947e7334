// The virtual recorder of the program: a CD-R/CD-RW drive whose discs are directories of files (see
// RecordedDisc). It is as strict as a real one: commands out of order, wrong addresses and cue sheets that
// contradict themselves are refused with the sense of the standard. Which disc is in it outlives the program
// and is shared by all its processes.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/base/outcome.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/recorded_disc.h"
#include "platform/disc/scsi_transport.h"

namespace ts5 {

// The directory that stands for the drive, below ProgramDirectory().
[[nodiscard]] std::string VirtualRecorderDirectory();
[[nodiscard]] DriveName VirtualRecorderName();

// What is in the drive: a directory with a disc, and whether the tray is out.
struct RecorderTray {
  std::string disc = {};  // "" for none
  bool open = false;
};
[[nodiscard]] RecorderTray ReadRecorderTray();
// Puts a new blank disc into the drive, in the place of the one that is in it; that one's files stay where
// they are. InUse: the drive is at work, or there is a disc in the directory already; TargetFailed,
// WriteFailed.
[[nodiscard]] Outcome InsertBlankDisc(const std::string& directory, int minutes, bool rewritable);
// Puts in a disc that was written before. SourceFailed, WrongFormat: as RecordedDisc::Load; InUse.
[[nodiscard]] Outcome InsertRecordedDisc(const std::string& directory);

// Whether the recorder takes its time as a real one does: its buffer empties at the speed of writing and may
// run dry.
enum class RecorderTime : std::uint8_t { None, Real };
// STAVORA_RECORDER_TIME=real
[[nodiscard]] RecorderTime RecorderTimeOfEnvironment();

[[nodiscard]] std::unique_ptr<ScsiTransport> OpenVirtualRecorder(RecorderTime time = RecorderTime::None);

}  // namespace ts5
