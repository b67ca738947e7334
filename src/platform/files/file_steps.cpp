#include "platform/files/file_steps.h"

#include <sys/random.h>
#include <unistd.h>

#include <cstdio>

#include "platform/base/text.h"
#include "platform/files/fault.h"

namespace ts5 {

bool Reachable(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

std::optional<struct stat> StatusOf(const std::string& path, bool followLinks) {
  struct stat status {};
  if (!Reachable(path)) return std::nullopt;
  const int result = followLinks ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
  return result == 0 ? std::optional(status) : std::nullopt;
}

bool SameInode(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

Result<FileDescriptor> OpenRegular(const std::string& path, struct stat& status) {
  if (!Reachable(path)) return Failure(Outcome::SourceFailed);
  FileDescriptor descriptor(
      Retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
  if (!descriptor || ::fstat(descriptor.Get(), &status) != 0)
    return Failure(NoteReadFault(Outcome::SourceFailed, errno, path));
  if (!S_ISREG(status.st_mode))
    return Failure(NoteReadFault(Outcome::SourceFailed, S_ISDIR(status.st_mode) ? EISDIR : 0, path));
  return descriptor;
}

std::string NativeDirectory(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

Outcome CreatingFailed(int error, const std::string& path) {
  return NoteWriteFault(error == ENOSPC || error == EDQUOT ? Outcome::WriteFailed : Outcome::TargetFailed,
                        error, path);
}

std::uint64_t RandomBits() {
  std::uint64_t bits = 0;
  (void)!::getrandom(&bits, sizeof bits, 0);
  return bits;
}

int RenameKeeping(const std::string& from, const std::string& to) {
  if (Disk().RenameKeeping(from, to) == 0) return 0;
  if (errno == EEXIST) {
    // On a file system that ignores case, another spelling of the same name is no other file.
    const auto a = StatusOf(from, false);
    const auto b = StatusOf(to, false);
    const bool respelled = a && b && SameInode(*a, *b) && a->st_nlink == 1 && EqualsIgnoringCase(from, to);
    return respelled && Disk().Rename(from, to) == 0 ? 0 : EEXIST;
  }
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // The file system does not know the flag. A second link does not replace either.
  if (Disk().Link(from, to) == 0) return Disk().Unlink(from) == 0 ? 0 : errno;
  if (errno == EEXIST || errno == ENOENT) return errno;
  // Nor does something of our own that is made first, which the rename then replaces.
  const auto moved = StatusOf(from, false);
  if (moved && S_ISDIR(moved->st_mode)) {
    if (::mkdir(to.c_str(), 0700) != 0) return errno;
  } else if (!FileDescriptor(Disk().Create(to, 0600))) {
    return errno;
  }
  if (Disk().Rename(from, to) == 0) return 0;
  const int error = errno;
  (void)::remove(to.c_str());
  return error;
}

Outcome FlushDirectory(const std::string& directory) {
  if (Disk().FlushDirectory(directory) == 0) return Outcome::Success;
  return errno == EIO || errno == ENOSPC || errno == EDQUOT ? Outcome::WriteFailed : Outcome::Success;
}

}  // namespace ts5
