#include "platform/files/disk_calls.h"

#include <linux/magic.h>
#include <stdio.h>
#include <sys/vfs.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>

#include "platform/base/descriptor.h"

namespace ts5 {
namespace {

// File systems that put all they hold on the disk when they are told to. Others (of user space, of the
// network) pass it on to nobody, or to a server that need not obey.
constexpr std::int64_t kXfs = 0x58465342;
constexpr std::array<std::int64_t, 5> kFlushedWhole = {EXT4_SUPER_MAGIC, kXfs, BTRFS_SUPER_MAGIC,
                                                       F2FS_SUPER_MAGIC, TMPFS_MAGIC};

DiskCalls& TheSystem() {
  static DiskCalls calls;
  return calls;
}

std::atomic<DiskCalls*>& Current() {
  static std::atomic<DiskCalls*> current = nullptr;
  return current;
}

// Large files go to the disk while they are written: the flush at their end has little left to wait for. A
// hint, which may fail.
constexpr std::uint64_t kFlushedAtOnce = std::uint64_t{1} << 23;
void BeginFlush(int file, std::uint64_t from, std::uint64_t to) {
  const std::uint64_t block = to / kFlushedAtOnce;
  if (block == from / kFlushedAtOnce) return;
  const auto end = static_cast<off_t>(block * kFlushedAtOnce);
  const auto length = static_cast<off_t>(kFlushedAtOnce);
  (void)::sync_file_range(file, end - length, length, SYNC_FILE_RANGE_WRITE);
}

}  // namespace

int DiskCalls::Create(const std::string& path, mode_t mode) {
  return Retry(
      [&] { return ::open(path.c_str(), O_RDWR | O_CREAT | O_EXCL | O_CLOEXEC | O_NOFOLLOW, mode); });
}

ssize_t DiskCalls::Write(int file, ByteView bytes, std::uint64_t offset) {
  const ssize_t put =
      Retry([&] { return ::pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)); });
  if (put > 0) BeginFlush(file, offset, offset + static_cast<std::uint64_t>(put));
  return put;
}

int DiskCalls::Truncate(int file, std::uint64_t size) {
  return Retry([&] { return ::ftruncate(file, static_cast<off_t>(size)); });
}

int DiskCalls::Flush(int file) {
  return Retry([&] { return ::fsync(file); });
}

int DiskCalls::FlushFileSystem(const std::string& directory) {
  const FileDescriptor descriptor(
      Retry([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  struct statfs status {};
  if (!descriptor || ::fstatfs(descriptor.Get(), &status) != 0) return -1;
  if (std::ranges::find(kFlushedWhole, static_cast<std::int64_t>(status.f_type)) == kFlushedWhole.end()) {
    errno = EOPNOTSUPP;
    return -1;
  }
  return Retry([&] { return ::syncfs(descriptor.Get()); });
}

int DiskCalls::FlushDirectory(const std::string& directory) {
  const FileDescriptor descriptor(
      Retry([&] { return ::open(directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC); }));
  // One that may be written but not read cannot be flushed by itself.
  return descriptor ? Flush(descriptor.Get()) : 0;
}

int DiskCalls::Rename(const std::string& from, const std::string& to) {
  return ::rename(from.c_str(), to.c_str());
}

int DiskCalls::RenameKeeping(const std::string& from, const std::string& to) {
  return ::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE);
}

int DiskCalls::Link(const std::string& from, const std::string& to) {
  return ::linkat(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), 0);
}

int DiskCalls::Unlink(const std::string& path) {
  return ::unlink(path.c_str());
}

DiskCalls& Disk() {
  DiskCalls* const current = Current();
  return current != nullptr ? *current : TheSystem();
}

Outcome WriteAll(int file, std::uint64_t offset, ByteView bytes) {
  while (!bytes.empty()) {
    const ssize_t put = Disk().Write(file, bytes, offset);
    if (put <= 0) return Outcome::WriteFailed;
    bytes = bytes.subspan(static_cast<std::size_t>(put));
    offset += static_cast<std::uint64_t>(put);
  }
  return Outcome::Success;
}

OtherDiskCalls::OtherDiskCalls(DiskCalls& calls) {
  Current() = &calls;
}

OtherDiskCalls::~OtherDiskCalls() {
  Current() = nullptr;
}

}  // namespace ts5
