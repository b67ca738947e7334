// Commands to the drives of this machine, through the kernel's SCSI generic interface (SG_IO, version 3).
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"
#include "platform/disc/scsi_transport.h"

namespace ts5 {

// The system call: descriptor and request (an sg_io_hdr); 0 or -1, as ioctl.
using ScsiCall = std::function<int(int descriptor, void* request)>;

// SourceFailed: the device file does not exist or may not be opened. A drive without a disc opens too.
[[nodiscard]] Result<std::unique_ptr<ScsiTransport>> OpenScsiDevice(const std::string& device);
[[nodiscard]] std::unique_ptr<ScsiTransport> ScsiGeneric(FileDescriptor descriptor, ScsiCall call);

}  // namespace ts5
