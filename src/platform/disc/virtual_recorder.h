// The virtual recorder of the program: a CD-R/CD-RW drive whose discs are directories of files (see
// RecordedDisc). It is as strict as a real one: commands out of order, wrong addresses and cue sheets that
// contradict themselves are refused with the sense of the standard.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "platform/base/outcome.h"
#include "platform/disc/mmc_replies.h"
#include "platform/disc/recorded_disc.h"
#include "platform/disc/recorder_tray.h"
#include "platform/disc/scsi_transport.h"

namespace ts5 {

[[nodiscard]] DriveName VirtualRecorderName();

// Whether the recorder takes its time as a real one does: its buffer empties at the speed of writing and may
// run dry.
enum class RecorderTime : std::uint8_t { None, Real };
// STAVORA_RECORDER_TIME=real
[[nodiscard]] RecorderTime RecorderTimeOfEnvironment();

[[nodiscard]] std::unique_ptr<ScsiTransport> OpenVirtualRecorder(RecorderTime time = RecorderTime::None);

}  // namespace ts5
