// Files as users trust us with them: whole reads with limits, staged writes, temporary files.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"

namespace ts5 {

// Files that are taken into memory whole may be at most this long (1 GiB).
inline constexpr std::uint64_t kMaxFileInMemory = std::uint64_t{1} << 30;

// The whole file. SourceFailed: it cannot be opened, or is a directory, device or pipe; ReadFailed: an I/O
// error, or longer than limit.
[[nodiscard]] Result<Bytes> ReadFile(const std::string& path, std::uint64_t limit = kMaxFileInMemory);
// At most count bytes from the start of the file.
[[nodiscard]] Result<Bytes> ReadFileStart(const std::string& path, std::size_t count);

[[nodiscard]] bool FileExists(const std::string& path);  // anything of that name
[[nodiscard]] bool IsDirectory(const std::string& path);
[[nodiscard]] Outcome RemoveFile(const std::string& path);       // TargetFailed
[[nodiscard]] Outcome MakeDirectories(const std::string& path);  // with all above it; TargetFailed
// How many directories of the way to it are not there, itself included.
[[nodiscard]] std::size_t MissingDirectories(const std::string& path);
// SourceFailed when from cannot be moved, TargetFailed when to exists or cannot be made. Works across file
// systems by copying, and then removes the source only after the copy is flushed.
[[nodiscard]] Outcome RenameFile(const std::string& from, const std::string& to);

// What a file is, whatever its names are: device and inode.
struct FileIdentity {
  std::uint64_t device = 0;
  std::uint64_t file = 0;
  bool operator==(const FileIdentity&) const = default;
};
struct FileIdentityHash {
  std::size_t operator()(const FileIdentity& identity) const {
    return std::hash<std::uint64_t>()(identity.file ^ (identity.device << 48U));
  }
};
// Of the file or directory behind all links; nothing when there is none.
[[nodiscard]] std::optional<FileIdentity> IdentityOf(const std::string& path);
// Whether both names reach the same file, by link or other spelling. False when either does not exist.
[[nodiscard]] bool IsSameFile(const std::string& a, const std::string& b);

// A target that comes into being whole or not at all: written under a temporary name in the target's
// directory, flushed, and renamed over the target on Commit. Destroyed without Commit, it leaves nothing and
// the target as it was. An existing target keeps its permissions and owner; a target that is a symbolic link
// stays one, and the file it leads to is written. The temporary file is locked for as long as its owner
// lives, so that what a killed program left can be told from what is at work: see ClearAbandonedFiles.
//
// Other programs and libraries may write through TemporaryPath(), or put a file of their own there; what
// stands there on Flush is what is committed.
class StagedFile {
 public:
  // TargetFailed: the directory does not exist or cannot be written, or the target is a directory, a device
  // or write-protected (the owner's write permission is off). WriteFailed: the disk is full.
  [[nodiscard]] static Result<StagedFile> Create(const std::string& target);
  StagedFile(StagedFile&& other) noexcept;
  StagedFile& operator=(StagedFile&& other) noexcept;
  ~StagedFile();

  [[nodiscard]] Outcome Write(ByteView bytes);  // appends; WriteFailed
  // Overwrites bytes that were written already; WriteFailed, also behind the end.
  [[nodiscard]] Outcome WriteAt(std::uint64_t offset, ByteView bytes);
  // Drops what was written behind this size, which is at most Size(). WriteFailed.
  [[nodiscard]] Outcome Shorten(std::uint64_t size);
  [[nodiscard]] Outcome Flush();  // to the disk; WriteFailed
  // Flushes and renames over the target: WriteFailed (also after any failed write), TargetFailed.
  [[nodiscard]] Outcome Commit();
  // The same onto another name in the same directory, for a name that is settled only now.
  [[nodiscard]] Outcome CommitAs(const std::string& target);
  // The same onto a name that nobody has: nothing is ever replaced, not even what another program makes at
  // this moment. False when the name is taken, and the file can be committed under another one.
  [[nodiscard]] Result<bool> CommitNew(const std::string& target);

  [[nodiscard]] const std::string& TemporaryPath() const { return temporary_; }
  [[nodiscard]] std::uint64_t Size() const { return size_; }  // as far as Write() has come
  // Whether the file that would be committed has no bytes, whoever wrote it.
  [[nodiscard]] bool IsEmpty() const;

 private:
  StagedFile() = default;
  void Discard();
  [[nodiscard]] bool TakeUp();
  Outcome FailWriting();
  [[nodiscard]] Outcome Committed(const std::string& target, const std::string& path);

  std::string target_;
  std::string temporary_;  // "" when there is none any more
  FileDescriptor descriptor_;
  std::uint64_t size_ = 0;
  bool failed_ = false;
};

// Removes staged files of this user whose program was killed, and says how many. What a living program writes
// stays, also on a directory that several machines share, as far as its file system knows locks.
std::size_t ClearAbandonedFiles(const std::string& directory);

// The whole content in one step: staged, flushed, renamed.
[[nodiscard]] Outcome WriteFile(const std::string& target, ByteView content);

// A file in the user's temporary directory whose name begins with prefix; removed when the object dies.
inline constexpr std::string_view kTemporaryPrefix = "sTS5";
class TemporaryFile {
 public:
  // TargetFailed. directory: "" for the user's temporary directory ($TMPDIR, else /tmp).
  [[nodiscard]] static Result<TemporaryFile> Create(std::string_view prefix = kTemporaryPrefix,
                                                    const std::string& directory = {},
                                                    std::string_view extension = {});
  TemporaryFile(TemporaryFile&& other) noexcept;
  TemporaryFile& operator=(TemporaryFile&& other) noexcept;
  ~TemporaryFile();
  [[nodiscard]] const std::string& Path() const { return path_; }

 private:
  TemporaryFile() = default;
  std::string path_;
};

}  // namespace ts5
