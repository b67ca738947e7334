// What the kernel tells of disc drives: one that comes or goes, a disc that is put in or taken out. Nobody
// has to ask the drives for it. Messages are those of the kernel's own group (NETLINK_KOBJECT_UEVENT).
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"

namespace ts5 {

struct DriveEvent {
  bool drive = false;       // the drive itself came or went; else only its disc
  std::string device = {};  // "/dev/sr0"

  bool operator==(const DriveEvent&) const = default;
};
// Nothing when the message tells of something else.
[[nodiscard]] std::optional<DriveEvent> ParseDriveEvent(ByteView message);

class DriveEvents {
 public:
  // SourceFailed: this system tells nothing.
  [[nodiscard]] static Result<DriveEvents> Open();
  [[nodiscard]] int Handle() const { return socket_.Get(); }  // readable when there is something to Read()
  [[nodiscard]] std::vector<DriveEvent> Read() const;         // never waits

 private:
  explicit DriveEvents(FileDescriptor socket) : socket_(std::move(socket)) {}
  FileDescriptor socket_;
};

}  // namespace ts5
