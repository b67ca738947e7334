#include "platform/files.h"

#include <fcntl.h>
#include <stdio.h>
#include <sys/random.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <cstdlib>
#include <filesystem>
#include <new>
#include <optional>
#include <utility>

#include "platform/text.h"

namespace ts5 {
namespace {

constexpr std::size_t kBlock = std::size_t{1} << 16;
constexpr int kMaxLinks = 40;  // as many as the kernel follows
constexpr int kMaxNameAttempts = 100;

template <typename Call>
auto Retry(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

// A name with a NUL inside would reach another file than the one it names.
bool Reachable(const std::string& path) {
  return !path.empty() && path.find('\0') == std::string::npos;
}

std::optional<struct stat> Status(const std::string& path, bool followLinks) {
  struct stat status {};
  if (!Reachable(path)) return std::nullopt;
  const int result = followLinks ? ::stat(path.c_str(), &status) : ::lstat(path.c_str(), &status);
  return result == 0 ? std::optional(status) : std::nullopt;
}

// The directory of a native path. Only '/' separates here: a '\' may be part of a name.
std::string NativeDirectory(const std::string& path) {
  const std::size_t slash = path.rfind('/');
  if (slash == std::string::npos) return ".";
  return slash == 0 ? "/" : path.substr(0, slash);
}

Outcome OutcomeOfCreating(int error) {
  return error == ENOSPC || error == EDQUOT ? Outcome::WriteFailed : Outcome::TargetFailed;
}

std::string RandomName(std::string_view prefix, std::string_view extension) {
  std::uint64_t bits = 0;
  (void)!::getrandom(&bits, sizeof bits, 0);
  return std::string(prefix) + Format("%012x", bits >> 16) + std::string(extension);
}

struct CreatedFile {
  FileDescriptor descriptor;
  std::string path;
};

Result<CreatedFile> CreateUnique(const std::string& directory, std::string_view prefix,
                                 std::string_view extension, mode_t mode) {
  for (int attempt = 0; attempt < kMaxNameAttempts; ++attempt) {
    std::string path = directory + "/" + RandomName(prefix, extension);
    FileDescriptor descriptor(Retry(
        [&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode); }));
    if (descriptor) return CreatedFile{std::move(descriptor), std::move(path)};
    if (errno != EEXIST) return Failure(OutcomeOfCreating(errno));
  }
  return Failure(Outcome::TargetFailed);
}

// A regular file, opened without waiting for the other end of a pipe or a device.
Result<FileDescriptor> OpenRegular(const std::string& path, struct stat& status) {
  if (!Reachable(path)) return Failure(Outcome::SourceFailed);
  FileDescriptor descriptor(
      Retry([&] { return ::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NOCTTY | O_NONBLOCK); }));
  if (!descriptor || ::fstat(descriptor.Get(), &status) != 0 || !S_ISREG(status.st_mode)) {
    return Failure(Outcome::SourceFailed);
  }
  return descriptor;
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

Outcome WriteAll(int descriptor, std::uint64_t offset, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t put =
        Retry([&] { return ::pwrite(descriptor, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
    if (put <= 0) return Outcome::WriteFailed;
    bytes = bytes.subspan(static_cast<std::size_t>(put));
    offset += static_cast<std::uint64_t>(put);
  }
  return Outcome::Success;
}

// A rename is on the disk only when its directory is. Some file systems cannot flush directories; they are
// taken at their word.
Outcome FlushDirectory(const std::string& directory) {
  const FileDescriptor descriptor(
      Retry([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  if (!descriptor || Retry([&] { return ::fsync(descriptor.Get()); }) == 0) return Outcome::Success;
  return errno == EIO || errno == ENOSPC || errno == EDQUOT ? Outcome::WriteFailed : Outcome::Success;
}

// Where a symbolic link leads in the end, also when nothing is there yet.
std::optional<std::string> FollowLinks(std::string path) {
  for (int links = 0; links < kMaxLinks; ++links) {
    const auto status = Status(path, false);
    if (!status || !S_ISLNK(status->st_mode)) return path;
    std::error_code error;
    const std::string destination = std::filesystem::read_symlink(path, error).string();
    if (error) return std::nullopt;
    path = destination.starts_with('/') ? destination : NativeDirectory(path) + "/" + destination;
  }
  return std::nullopt;
}

struct Place {
  std::string path;                     // behind all links
  std::optional<struct stat> existing;  // what stands there
};

// The place a target name stands for, refused when it may not be written over.
Result<Place> PlaceOf(const std::string& target) {
  if (!Reachable(target) || target.back() == '/') return Failure(Outcome::TargetFailed);
  const auto path = FollowLinks(target);
  if (!path) return Failure(Outcome::TargetFailed);
  Place place{*path, Status(*path, false)};
  if (place.existing) {
    const mode_t mode = place.existing->st_mode;
    if (!S_ISREG(mode) || (mode & S_IWUSR) == 0 || ::access(path->c_str(), W_OK) != 0) {
      return Failure(Outcome::TargetFailed);
    }
  }
  return place;
}

void TakeOver(int descriptor, const struct stat& existing) {
  // Only root may give files away; for others the new file simply belongs to its writer.
  if (::fchown(descriptor, existing.st_uid, existing.st_gid) != 0) {
    (void)!::fchown(descriptor, static_cast<uid_t>(-1), existing.st_gid);
  }
  (void)::fchmod(descriptor, existing.st_mode & 07777);
}

bool SameInode(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Renames without ever replacing anything; 0 or the error number.
int RenameKeeping(const std::string& from, const std::string& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return 0;
  if (errno == EEXIST) {
    // On a file system that ignores case, another spelling of the same name is no other file.
    const auto a = Status(from, false);
    const auto b = Status(to, false);
    const bool respelled = a && b && SameInode(*a, *b) && a->st_nlink == 1 && EqualsIgnoringCase(from, to);
    return respelled && ::rename(from.c_str(), to.c_str()) == 0 ? 0 : EEXIST;
  }
  if (errno != EINVAL && errno != ENOSYS) return errno;
  // The file system does not know the flag. A second link does not replace either.
  if (::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0) == 0)
    return ::unlink(from.c_str()) == 0 ? 0 : errno;
  if (errno == EEXIST || errno == ENOENT) return errno;
  if (FileExists(to)) return EEXIST;
  return ::rename(from.c_str(), to.c_str()) == 0 ? 0 : errno;
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
  if (::unlink(from.c_str()) == 0) return Outcome::Success;
  (void)::unlink(to.c_str());
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
      if (!got) return Failure(got.error());
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
  return Status(path, false).has_value();
}

bool IsDirectory(const std::string& path) {
  const auto status = Status(path, true);
  return status && S_ISDIR(status->st_mode);
}

Outcome RemoveFile(const std::string& path) {
  return Reachable(path) && ::unlink(path.c_str()) == 0 ? Outcome::Success : Outcome::TargetFailed;
}

Outcome MakeDirectories(const std::string& path) {
  if (!Reachable(path)) return Outcome::TargetFailed;
  std::error_code error;
  std::filesystem::create_directories(path, error);
  return IsDirectory(path) ? Outcome::Success : Outcome::TargetFailed;
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

bool IsSameFile(const std::string& a, const std::string& b) {
  const auto first = Status(a, true);
  const auto second = Status(b, true);
  return first && second && SameInode(*first, *second);
}

Result<StagedFile> StagedFile::Create(const std::string& target) {
  const auto place = PlaceOf(target);
  if (!place) return Failure(place.error());
  const mode_t mode = place->existing ? place->existing->st_mode & 0777 : 0666;
  auto created = CreateUnique(NativeDirectory(place->path), ".sTS5-", "", mode);
  if (!created) return Failure(created.error());
  StagedFile file;
  file.target_ = target;
  file.temporary_ = std::move(created->path);
  file.descriptor_ = std::move(created->descriptor);
  return file;
}

StagedFile::StagedFile(StagedFile&& other) noexcept
    : target_(std::move(other.target_)),
      temporary_(std::exchange(other.temporary_, {})),
      descriptor_(std::move(other.descriptor_)),
      size_(other.size_),
      failed_(other.failed_) {}

StagedFile& StagedFile::operator=(StagedFile&& other) noexcept {
  if (this == &other) return *this;
  Discard();
  target_ = std::move(other.target_);
  temporary_ = std::exchange(other.temporary_, {});
  descriptor_ = std::move(other.descriptor_);
  size_ = other.size_;
  failed_ = other.failed_;
  return *this;
}

StagedFile::~StagedFile() {
  Discard();
}

void StagedFile::Discard() {
  (void)descriptor_.Close();
  if (!temporary_.empty()) (void)::unlink(temporary_.c_str());
  temporary_.clear();
}

Outcome StagedFile::Write(ByteView bytes) {
  const Outcome written = descriptor_ ? WriteAll(descriptor_.Get(), size_, bytes) : Outcome::WriteFailed;
  failed_ = failed_ || Failed(written);
  size_ += bytes.size();
  return written;
}

Outcome StagedFile::WriteAt(std::uint64_t offset, ByteView bytes) {
  const bool inside = descriptor_ && offset <= size_ && bytes.size() <= size_ - offset;
  const Outcome written = inside ? WriteAll(descriptor_.Get(), offset, bytes) : Outcome::WriteFailed;
  failed_ = failed_ || Failed(written);
  return written;
}

Outcome StagedFile::Flush() {
  const bool flushed = descriptor_ && Retry([&] { return ::fsync(descriptor_.Get()); }) == 0;
  failed_ = failed_ || !flushed;
  return flushed ? Outcome::Success : Outcome::WriteFailed;
}

Outcome StagedFile::Commit() {
  return CommitAs(target_);
}

Outcome StagedFile::CommitAs(const std::string& target) {
  if (failed_ || !descriptor_) return Outcome::WriteFailed;
  const auto place = PlaceOf(target);
  if (!place) return place.error();
  if (place->existing) TakeOver(descriptor_.Get(), *place->existing);
  if (const Outcome flushed = Flush(); Failed(flushed)) return flushed;
  if (!descriptor_.Close()) return Outcome::WriteFailed;
  if (::rename(temporary_.c_str(), place->path.c_str()) != 0) return OutcomeOfCreating(errno);
  target_ = target;
  temporary_.clear();
  return FlushDirectory(NativeDirectory(place->path));
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
  auto created = CreateUnique(place, prefix, ending, 0600);
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
  if (!path_.empty()) (void)::unlink(path_.c_str());
}

}  // namespace ts5
