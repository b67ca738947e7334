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
    const std::uint64_t from = static_cast<std::uint64_t>(address.value + kPregapSectors) * kAudioSectorBytes;
    flushed_ = false;
    if (const Outcome written = WriteAll(file_.Get(), from, data); Failed(written)) return written;
    Hasten(from, data.size());
    return Outcome::Success;
  }
  Outcome Flush() {
    if (!file_ || flushed_) return Outcome::Success;
    flushed_ = ::fdatasync(file_.Get()) == 0;
    return flushed_ ? Outcome::Success : Outcome::WriteFailed;
  }
  void Close() { *this = SectorFile(); }
  explicit operator bool() const { return static_cast<bool>(file_); }

 private:
  // The disk begins with what has come, so that the flush has less to wait for.
  void Hasten(std::uint64_t from, std::uint64_t size) {
    constexpr std::uint64_t kWorthIt = std::uint64_t{8} << 20;
    if (waiting_ == 0) waitingFrom_ = from;
    waiting_ += size;
    if (waiting_ < kWorthIt) return;
    (void)::sync_file_range(file_.Get(), static_cast<off64_t>(waitingFrom_), static_cast<off64_t>(waiting_),
                            SYNC_FILE_RANGE_WRITE);
    waiting_ = 0;
  }

  FileDescriptor file_;
  bool flushed_ = true;
  std::uint64_t waitingFrom_ = 0;
  std::uint64_t waiting_ = 0;
};

}  // namespace ts5
