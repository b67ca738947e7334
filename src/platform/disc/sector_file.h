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
    const auto sector = static_cast<std::uint64_t>(address.value + kPregapSectors);
    return WriteAll(file_.Get(), sector * kAudioSectorBytes, data);
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
