// The sectors of a disc as one file, written one behind the other from the pause before the first track.
#pragma once

#include <fcntl.h>
#include <unistd.h>

#include <cerrno>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"
#include "platform/disc/disc_address.h"

namespace ts5 {

class SectorFile {
 public:
  Outcome Open(const std::string& path, bool fresh) {
    file_ =
        FileDescriptor(::open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC | (fresh ? O_TRUNC : 0), 0666));
    return file_ ? Outcome::Success : Outcome::TargetFailed;
  }
  Outcome Write(Lba address, ByteView data) {
    auto offset =
        (std::int64_t{address.value} + kPregapSectors) * static_cast<std::int64_t>(kAudioSectorBytes);
    while (!data.empty()) {
      const ssize_t written = ::pwrite(file_.Get(), data.data(), data.size(), offset);
      if (written < 0 && errno == EINTR) continue;
      if (written <= 0) return Outcome::WriteFailed;
      data = data.subspan(static_cast<std::size_t>(written));
      offset += written;
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
