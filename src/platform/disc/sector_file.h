// The sectors of a disc as one file, written one behind the other from the pause before the first track.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cstdint>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"
#include "platform/disc/disc_address.h"
#include "platform/files/disk_calls.h"

namespace ts5 {

class SectorFile {
 public:
  Outcome Open(const std::string& path, bool fresh) {
    file_ =
        FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (fresh ? O_TRUNC : 0), 0666));
    return file_ ? Outcome::Success : Outcome::TargetFailed;
  }
  Outcome Write(Lba address, ByteView data) {
    auto offset = static_cast<std::uint64_t>(address.value + kPregapSectors) * kAudioSectorBytes;
    while (!data.empty()) {
      const ssize_t written = Disk().Write(file_.Get(), data, offset);
      if (written <= 0) return Outcome::WriteFailed;
      data = data.subspan(static_cast<std::size_t>(written));
      offset += static_cast<std::uint64_t>(written);
    }
    return Outcome::Success;
  }
  Outcome Flush() {
    return !file_ || ::fdatasync(file_.Get()) == 0 ? Outcome::Success : Outcome::WriteFailed;
  }
  void Close() { file_ = FileDescriptor(); }
  explicit operator bool() const { return static_cast<bool>(file_); }

 private:
  FileDescriptor file_;
};

}  // namespace ts5
