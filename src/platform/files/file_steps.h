// Steps that the functions on files are made of. For this folder only.
#pragma once

#include <sys/stat.h>

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"
#include "platform/files/disk_calls.h"

namespace ts5 {

// False of a name with a NUL inside: it would reach another file than the one it names.
[[nodiscard]] bool Reachable(const std::string& path);
[[nodiscard]] std::optional<struct stat> StatusOf(const std::string& path, bool followLinks);
[[nodiscard]] bool SameInode(const struct stat& a, const struct stat& b);
// A regular file for reading, opened without waiting for the other end of a pipe or a device. SourceFailed;
// the fault is noted.
[[nodiscard]] Result<FileDescriptor> OpenRegular(const std::string& path, struct stat& status);
// The directory of a native path. Only '/' separates here: a '\' may be part of a name.
[[nodiscard]] std::string NativeDirectory(const std::string& path);
// WriteFailed of a full disk, else TargetFailed; the fault is noted.
Outcome CreatingFailed(int error, const std::string& path);
[[nodiscard]] std::uint64_t RandomBits();

struct CreatedFile {
  FileDescriptor descriptor;
  std::string path;
};
template <typename MakeName>
[[nodiscard]] Result<CreatedFile> CreateUnique(const std::string& directory, const MakeName& makeName,
                                               mode_t mode) {
  constexpr int kMaxAttempts = 100;
  for (int attempt = 0; attempt < kMaxAttempts; ++attempt) {
    std::string path = directory + "/" + makeName();
    FileDescriptor descriptor(Disk().Create(path, mode));
    if (descriptor) return CreatedFile{std::move(descriptor), std::move(path)};
    if (errno != EEXIST) return Failure(CreatingFailed(errno, directory));
  }
  return Failure(Outcome::TargetFailed);
}

// Whether a file of that name is one that a staged write has not put in its place yet. Without its directory.
[[nodiscard]] bool IsStagedName(std::string_view name);

// Renames without ever replacing anything; 0 or the error number.
[[nodiscard]] int RenameKeeping(const std::string& from, const std::string& to);
// A rename is on the disk only when its directory is: WriteFailed. Some file systems cannot flush
// directories; they are taken at their word.
[[nodiscard]] Outcome FlushDirectory(const std::string& directory);

}  // namespace ts5
