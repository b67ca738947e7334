// Calls of the disk that work, until one of them kills the program.
#pragma once

#include <signal.h>

#include <atomic>
#include <cerrno>

#include "platform/files/disk_calls.h"

namespace ts5::test {

struct KillingDisk : DiskCalls {
  // calls: which one it is that does not happen; what it was to write is half there. links: none on another
  // file system.
  explicit KillingDisk(int calls, bool links = true) : left(calls), links(links) {}

  void Count() {
    if (--left == 0) (void)::raise(SIGKILL);
  }
  int Create(const std::string& path, mode_t mode) override { return Count(), DiskCalls::Create(path, mode); }
  ssize_t Write(int file, ByteView bytes, std::uint64_t offset) override {
    if (left == 1) (void)DiskCalls::Write(file, bytes.first(bytes.size() / 2), offset);
    return Count(), DiskCalls::Write(file, bytes, offset);
  }
  int Flush(int file) override { return Count(), DiskCalls::Flush(file); }
  int Rename(const std::string& from, const std::string& to) override {
    return Count(), DiskCalls::Rename(from, to);
  }
  int RenameKeeping(const std::string& from, const std::string& to) override {
    return Count(), DiskCalls::RenameKeeping(from, to);
  }
  int Link(const std::string& from, const std::string& to) override {
    Count();
    errno = EXDEV;
    return links ? DiskCalls::Link(from, to) : -1;
  }
  int Unlink(const std::string& path) override { return Count(), DiskCalls::Unlink(path); }

  std::atomic<int> left;
  bool links;
};

}  // namespace ts5::test
