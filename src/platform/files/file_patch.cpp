#include "platform/files/file_patch.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <utility>

namespace ts5 {
namespace {

// Goes on after interruptions and short transfers; false when the bytes run out or fail.
template <typename Transfer>
bool TransferAll(std::size_t count, Transfer transfer) {
  std::size_t done = 0;
  while (done < count) {
    const ssize_t moved = transfer(done, count - done);
    if (moved < 0 && errno == EINTR) continue;
    if (moved <= 0) return false;
    done += static_cast<std::size_t>(moved);
  }
  return true;
}

}  // namespace

Result<FilePatch> FilePatch::Open(const std::string& path) {
  struct stat status {};
  if (stat(path.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return Failure(Outcome::SourceFailed);
  if ((status.st_mode & S_IWUSR) == 0) (void)chmod(path.c_str(), (status.st_mode & 07777) | S_IWUSR);
  FileDescriptor descriptor(open(path.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
  if (!descriptor) return Failure(Outcome::SourceFailed);
  return FilePatch(std::move(descriptor));
}

Result<Bytes> FilePatch::ReadAt(std::uint64_t offset, std::size_t count) const {
  Bytes bytes(count);
  const bool whole = TransferAll(count, [&](std::size_t done, std::size_t left) {
    return pread(descriptor_.Get(), bytes.data() + done, left, static_cast<off_t>(offset + done));
  });
  if (!whole) return Failure(Outcome::ReadFailed);
  return bytes;
}

Outcome FilePatch::WriteAt(std::uint64_t offset, ByteView bytes) const {
  const bool whole = TransferAll(bytes.size(), [&](std::size_t done, std::size_t left) {
    return pwrite(descriptor_.Get(), bytes.data() + done, left, static_cast<off_t>(offset + done));
  });
  return whole ? Outcome::Success : Outcome::WriteFailed;
}

}  // namespace ts5
