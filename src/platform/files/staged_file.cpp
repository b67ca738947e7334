// Staged files; declared in files.h.

#include <signal.h>
#include <sys/file.h>
#include <unistd.h>

#include <charconv>
#include <filesystem>
#include <optional>
#include <string_view>
#include <system_error>

#include "platform/base/text.h"
#include "platform/files/fault.h"
#include "platform/files/file_steps.h"
#include "platform/files/files.h"
#include "platform/files/flush_group.h"
#include "platform/files/real_paths.h"

namespace ts5 {
namespace {

// A staged file is ".sTS5-", the process number of its owner and four random digits. What a program of its
// own makes beside it bears that name with an extension.
constexpr std::string_view kStagedPrefix = ".sTS5-";
constexpr std::size_t kOwnerDigits = 8;
constexpr std::size_t kRandomDigits = 4;
std::string StagedName() {
  return std::string(kStagedPrefix) + Format("%08x%04x", static_cast<std::uint32_t>(::getpid()),
                                             static_cast<std::uint32_t>(RandomBits() & 0xffff));
}

// Locks the file for its owner. False when somebody took it for a left-over before it was locked.
bool Claim(int descriptor) {
  if (Retry([&] { return ::flock(descriptor, LOCK_EX | LOCK_NB); }) != 0) return errno != EWOULDBLOCK;
  struct stat status {};
  return ::fstat(descriptor, &status) == 0 && status.st_nlink > 0;
}

struct Place {
  std::string path;                          // behind all links
  std::optional<struct stat> existing = {};  // what stands there
};

// The place a target name stands for, refused when it may not be written over.
Result<Place> PlaceOf(const std::string& target) {
  if (!Reachable(target) || target.back() == '/') return Failure(Outcome::TargetFailed);
  auto path = BehindLinks(target);
  if (!path) return Failure(NoteWriteFault(Outcome::TargetFailed, ELOOP, target));
  Place place{*std::move(path)};
  place.existing = StatusOf(place.path, false);
  if (place.existing) {
    const mode_t mode = place.existing->st_mode;
    if (!S_ISREG(mode))
      return Failure(NoteWriteFault(Outcome::TargetFailed, S_ISDIR(mode) ? EISDIR : 0, place.path));
    if ((mode & S_IWUSR) == 0) return Failure(NoteWriteFault(Outcome::TargetFailed, EACCES, place.path));
    if (::access(place.path.c_str(), W_OK) != 0)
      return Failure(NoteWriteFault(Outcome::TargetFailed, errno, place.path));
  }
  return place;
}

void TakeOver(int descriptor, const struct stat& existing) {
  struct stat own {};
  if (::fstat(descriptor, &own) == 0 && own.st_uid == existing.st_uid && own.st_gid == existing.st_gid &&
      own.st_mode == existing.st_mode)
    return;
  // Only root may give files away; for others the new file simply belongs to its writer.
  if (::fchown(descriptor, existing.st_uid, existing.st_gid) != 0) {
    (void)!::fchown(descriptor, static_cast<uid_t>(-1), existing.st_gid);
  }
  (void)::fchmod(descriptor, existing.st_mode & 07777);
}

// The process that a staged file's name tells of; nothing when it is no such name.
std::optional<pid_t> OwnerOf(std::string_view name) {
  if (!name.starts_with(kStagedPrefix)) return std::nullopt;
  name.remove_prefix(kStagedPrefix.size());
  constexpr std::size_t kDigits = kOwnerDigits + kRandomDigits;
  if (name.size() > kDigits && name[kDigits] == '.') name = name.substr(0, kDigits);
  if (name.size() != kDigits) return std::nullopt;
  std::uint64_t number = 0;
  const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), number, 16);
  if (error != std::errc() || end != name.data() + name.size()) return std::nullopt;
  return static_cast<pid_t>(number >> (4 * kRandomDigits));
}

bool IsAlive(pid_t process) {
  return process > 0 && (::kill(process, 0) == 0 || errno == EPERM);
}

bool RemoveAbandoned(const std::string& path) {
  const FileDescriptor file(
      Retry([&] { return ::open(path.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK); }));
  struct stat held {};
  if (!file || ::fstat(file.Get(), &held) != 0 || !S_ISREG(held.st_mode) || held.st_uid != ::geteuid())
    return false;
  if (Retry([&] { return ::flock(file.Get(), LOCK_EX | LOCK_NB); }) != 0) return false;
  const auto there = StatusOf(path, false);
  return there && SameInode(*there, held) && Disk().Unlink(path) == 0;
}

}  // namespace

bool IsStagedName(std::string_view name) {
  return OwnerOf(name).has_value();
}

Result<StagedFile> StagedFile::Create(const std::string& target) {
  const auto place = PlaceOf(target);
  if (!place) return Failure(place.error());
  const mode_t mode = place->existing ? place->existing->st_mode & 0777 : 0666;
  auto created = CreateUnique(NativeDirectory(place->path), StagedName, mode);
  while (created && !Claim(created->descriptor.Get()))
    created = CreateUnique(NativeDirectory(place->path), StagedName, mode);
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
  if (!temporary_.empty()) (void)Disk().Unlink(temporary_);
  temporary_.clear();
}

// After a failed call; the file is not to be committed any more.
Outcome StagedFile::FailWriting() {
  failed_ = true;
  return NoteWriteFault(Outcome::WriteFailed, errno, target_);
}

Outcome StagedFile::Write(ByteView bytes) {
  const Outcome written = descriptor_ ? WriteAll(descriptor_.Get(), size_, bytes) : Outcome::WriteFailed;
  if (Failed(written)) return FailWriting();
  size_ += bytes.size();
  return written;
}

Outcome StagedFile::WriteAt(std::uint64_t offset, ByteView bytes) {
  const bool inside = descriptor_ && offset <= size_ && bytes.size() <= size_ - offset;
  const Outcome written = inside ? WriteAll(descriptor_.Get(), offset, bytes) : Outcome::WriteFailed;
  return Failed(written) ? FailWriting() : written;
}

Outcome StagedFile::Shorten(std::uint64_t size) {
  const bool shortened = descriptor_ && size <= size_ && Disk().Truncate(descriptor_.Get(), size) == 0;
  if (!shortened) return FailWriting();
  size_ = size;
  return Outcome::Success;
}

// What stands under the temporary name now, whoever put it there.
bool StagedFile::TakeUp() {
  const auto there = StatusOf(temporary_, false);
  struct stat held {};
  if (!there || !S_ISREG(there->st_mode) || !descriptor_ || ::fstat(descriptor_.Get(), &held) != 0)
    return false;
  if (SameInode(*there, held)) return true;
  descriptor_ = FileDescriptor(
      Retry([&] { return ::open(temporary_.c_str(), O_RDWR | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK); }));
  return descriptor_ && Claim(descriptor_.Get());
}

bool StagedFile::IsEmpty() const {
  const auto there = StatusOf(temporary_, false);
  return !there || there->st_size == 0;
}

Outcome StagedFile::Flush() {
  if (const FlushGroup* const group = FlushGroup::Current();
      group != nullptr && group->HasFlushed(temporary_))
    return Outcome::Success;
  const bool flushed = TakeUp() && Disk().Flush(descriptor_.Get()) == 0;
  return flushed ? Outcome::Success : FailWriting();
}

Outcome StagedFile::Commit() {
  return CommitAs(target_);
}

Outcome StagedFile::CommitAs(const std::string& target) {
  if (failed_ || !descriptor_) return Outcome::WriteFailed;
  const auto place = PlaceOf(target);
  if (!place) return place.error();
  if (!TakeUp()) return Outcome::WriteFailed;
  if (place->existing) TakeOver(descriptor_.Get(), *place->existing);
  if (const Outcome flushed = Flush(); Failed(flushed)) return flushed;
  if (Disk().Rename(temporary_, place->path) != 0) return CreatingFailed(errno, target);
  return Committed(target, place->path);
}

Result<bool> StagedFile::CommitNew(const std::string& target) {
  if (failed_ || !descriptor_) return Failure(Outcome::WriteFailed);
  if (!Reachable(target) || target.back() == '/') return Failure(Outcome::TargetFailed);
  if (FileExists(target)) return false;
  if (const Outcome flushed = Flush(); Failed(flushed)) return Failure(flushed);
  if (const int error = RenameKeeping(temporary_, target); error != 0) {
    if (error == EEXIST) return false;
    return Failure(CreatingFailed(error, target));
  }
  if (const Outcome done = Committed(target, target); Failed(done)) return Failure(done);
  return true;
}

Outcome StagedFile::Committed(const std::string& target, const std::string& path) {
  target_ = target;
  temporary_.clear();
  (void)descriptor_.Close();  // it is on the disk already
  FlushGroup* const group = FlushGroup::Current();
  if (group == nullptr) return FlushDirectory(NativeDirectory(path));
  group->AddDirectory(NativeDirectory(path));
  return Outcome::Success;
}

std::size_t ClearAbandonedFiles(const std::string& directory) {
  std::size_t removed = 0;
  std::error_code error;
  const std::filesystem::path place = directory.empty() ? "." : directory;
  for (auto entry = std::filesystem::directory_iterator(place, error);
       !error && entry != std::filesystem::directory_iterator(); entry.increment(error)) {
    const auto owner = OwnerOf(entry->path().filename().native());
    if (owner && !IsAlive(*owner) && RemoveAbandoned(entry->path().native())) ++removed;
  }
  return removed;
}

}  // namespace ts5
