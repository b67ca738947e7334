#include "platform/files/files.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <optional>
#include <system_error>
#include <utility>

#include "platform/base/text.h"
#include "platform/files/fault.h"
#include "platform/files/file_steps.h"

namespace ts5 {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 16;

std::string RandomName(std::string_view prefix, std::string_view extension) {
  return std::string(prefix) + Format("%012x", RandomBits() >> 16) + std::string(extension);
}

// Reads up to capacity bytes; fewer only at the end of the file.
Result<std::size_t> ReadUpTo(int descriptor, std::uint8_t* out, std::size_t capacity) {
  std::size_t filled = 0;
  while (filled < capacity) {
    const ssize_t got = Retry([&] { return ::read(descriptor, out + filled, capacity - filled); });
    if (got < 0) return Failure(Outcome::ReadFailed);
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  return filled;
}

Outcome CopyInto(StagedFile& copy, int source) {
  Bytes block(kBlock);
  for (;;) {
    const auto got = ReadUpTo(source, block.data(), block.size());
    if (!got) return Outcome::SourceFailed;
    if (*got == 0) return copy.Flush();
    if (const Outcome written = copy.Write(ByteView(block).first(*got)); Failed(written)) return written;
  }
}

Outcome MoveAcross(const std::string& from, const std::string& to) {
  struct stat status {};
  const auto source = OpenRegular(from, status);
  if (!source) return source.error();
  auto copy = StagedFile::Create(to);
  if (!copy) return copy.error();
  if (const Outcome copied = CopyInto(*copy, source->Get()); Failed(copied)) return copied;
  const timespec times[] = {status.st_atim, status.st_mtim};
  (void)::utimensat(AT_FDCWD, copy->TemporaryPath().c_str(), times, 0);
  (void)::chmod(copy->TemporaryPath().c_str(), status.st_mode & 07777);
  if (RenameKeeping(copy->TemporaryPath(), to) != 0) return Outcome::TargetFailed;
  if (const Outcome flushed = FlushDirectory(NativeDirectory(to)); Failed(flushed)) return flushed;
  if (Disk().Unlink(from) == 0) return Outcome::Success;
  (void)Disk().Unlink(to);
  return Outcome::SourceFailed;
}

}  // namespace

Result<Bytes> ReadFile(const std::string& path, std::uint64_t limit) {
  struct stat status {};
  const auto file = OpenRegular(path, status);
  if (!file) return Failure(file.error());
  if (std::cmp_greater(status.st_size, limit)) return Failure(Outcome::ReadFailed);
  try {
    // One byte more than the file is said to have, so that a file that grew is seen without another read.
    Bytes content(static_cast<std::size_t>(status.st_size) + 1);
    std::size_t filled = 0;
    for (;;) {
      const auto got = ReadUpTo(file->Get(), content.data() + filled, content.size() - filled);
      if (!got) return Failure(NoteReadFault(got.error(), errno, path));
      filled += *got;
      if (filled > limit) return Failure(Outcome::ReadFailed);
      if (filled < content.size()) break;
      content.resize(content.size() + std::max(content.size() / 2, kBlock));
    }
    content.resize(filled);
    return content;
  } catch (const std::bad_alloc&) {
    return Failure(Outcome::OutOfMemory);
  }
}

Result<Bytes> ReadFileStart(const std::string& path, std::size_t count) {
  struct stat status {};
  const auto file = OpenRegular(path, status);
  if (!file) return Failure(file.error());
  Bytes content(std::min(count, std::max(static_cast<std::size_t>(status.st_size), kBlock)));
  const auto got = ReadUpTo(file->Get(), content.data(), content.size());
  if (!got) return Failure(got.error());
  content.resize(*got);
  return content;
}

bool FileExists(const std::string& path) {
  return StatusOf(path, false).has_value();
}

bool IsDirectory(const std::string& path) {
  const auto status = StatusOf(path, true);
  return status && S_ISDIR(status->st_mode);
}

Outcome RemoveFile(const std::string& path) {
  return Reachable(path) && Disk().Unlink(path) == 0 ? Outcome::Success : Outcome::TargetFailed;
}

std::size_t MissingDirectories(const std::string& path) {
  std::size_t missing = 0;
  for (std::string there = path; !StatusOf(there, true) && there != NativeDirectory(there);
       there = NativeDirectory(there))
    ++missing;
  return missing;
}

Outcome MakeDirectories(const std::string& path) {
  if (!Reachable(path)) return Outcome::TargetFailed;
  std::error_code error;
  std::filesystem::create_directories(path, error);
  if (IsDirectory(path)) return Outcome::Success;
  std::string there = path;  // as far as there is anything
  while (!StatusOf(there, true) && there != NativeDirectory(there)) there = NativeDirectory(there);
  return NoteWriteFault(Outcome::TargetFailed, error ? error.value() : ENOTDIR, there);
}

Outcome RenameFile(const std::string& from, const std::string& to) {
  if (!FileExists(from)) return Outcome::SourceFailed;
  if (!Reachable(to)) return Outcome::TargetFailed;
  switch (RenameKeeping(from, to)) {
    case 0:
      return Outcome::Success;
    case EXDEV:
      return MoveAcross(from, to);
    case EACCES:
    case EPERM:
      return ::access(NativeDirectory(from).c_str(), W_OK) == 0 ? Outcome::TargetFailed
                                                                : Outcome::SourceFailed;
    default:
      return FileExists(from) ? Outcome::TargetFailed : Outcome::SourceFailed;
  }
}

std::optional<FileIdentity> IdentityOf(const std::string& path) {
  const auto status = StatusOf(path, true);
  if (!status) return std::nullopt;
  return FileIdentity{status->st_dev, status->st_ino};
}

bool IsSameFile(const std::string& a, const std::string& b) {
  const auto first = IdentityOf(a);
  return first && first == IdentityOf(b);
}

Outcome WriteFile(const std::string& target, ByteView content) {
  auto file = StagedFile::Create(target);
  if (!file) return file.error();
  if (const Outcome written = file->Write(content); Failed(written)) return written;
  return file->Commit();
}

Result<TemporaryFile> TemporaryFile::Create(std::string_view prefix, const std::string& directory,
                                            std::string_view extension) {
  std::string place = directory;
  if (place.empty()) {
    const char* const wanted = std::getenv("TMPDIR");
    place = wanted != nullptr && IsDirectory(wanted) ? wanted : "/tmp";
  }
  if (!Reachable(place)) return Failure(Outcome::TargetFailed);
  const std::string ending =
      extension.empty() || extension.starts_with('.') ? std::string(extension) : "." + std::string(extension);
  auto created = CreateUnique(
      place, [&] { return RandomName(prefix, ending); }, 0600);
  if (!created) return Failure(created.error());
  TemporaryFile file;
  file.path_ = std::move(created->path);
  return file;
}

TemporaryFile::TemporaryFile(TemporaryFile&& other) noexcept : path_(std::exchange(other.path_, {})) {}

TemporaryFile& TemporaryFile::operator=(TemporaryFile&& other) noexcept {
  std::swap(path_, other.path_);
  return *this;
}

TemporaryFile::~TemporaryFile() {
  if (!path_.empty()) (void)Disk().Unlink(path_);
}

}  // namespace ts5
