// The calls of the system by which files come into being and change. What must survive a power cut is done
// through them, so that a test can record them and say after each what a cut would leave.
//
// They report like the system: negative and errno on a failure. Interrupted calls are repeated.
#pragma once

#include <fcntl.h>
#include <sys/types.h>

#include <cerrno>
#include <cstdint>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/outcome.h"

namespace ts5 {

template <typename Call>
auto Retry(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

class DiskCalls {
 public:
  DiskCalls() = default;
  DiskCalls(const DiskCalls&) = delete;
  DiskCalls& operator=(const DiskCalls&) = delete;
  virtual ~DiskCalls() = default;

  // A new file, open for reading and writing; EEXIST when the name is taken.
  virtual int Create(const std::string& path, mode_t mode);
  virtual ssize_t Write(int file, ByteView bytes, std::uint64_t offset);
  virtual int Truncate(int file, std::uint64_t size);
  virtual int Flush(int file);
  // All of the file system that holds the directory. EOPNOTSUPP where that is no promise.
  virtual int FlushFileSystem(const std::string& directory);
  virtual int FlushDirectory(const std::string& directory);
  virtual int Rename(const std::string& from, const std::string& to);
  virtual int RenameKeeping(const std::string& from, const std::string& to);  // EEXIST instead of replacing
  virtual int Link(const std::string& from, const std::string& to);
  virtual int Unlink(const std::string& path);
};

// The calls of this process: the system's, unless there are others in their place.
[[nodiscard]] DiskCalls& Disk();

// All of the bytes into an open file, from an offset on. WriteFailed: errno says why.
[[nodiscard]] Outcome WriteAll(int file, std::uint64_t offset, ByteView bytes);

// Puts others in their place for as long as it lives. For tests; no file may be at work when it begins or
// ends.
class OtherDiskCalls {
 public:
  explicit OtherDiskCalls(DiskCalls& calls);
  OtherDiskCalls(const OtherDiskCalls&) = delete;
  OtherDiskCalls& operator=(const OtherDiskCalls&) = delete;
  ~OtherDiskCalls();
};

}  // namespace ts5
