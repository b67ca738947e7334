// Calls of the disk that work and keep book of what a power cut between any two of them could leave. A disk
// may have written, of what was not flushed, anything: each name by itself may be what it was at any time
// since its directory was flushed, and a file that was written to since its own flush may hold anything.
#pragma once

#include <map>
#include <mutex>
#include <set>
#include <string>
#include <vector>

#include "platform/files/disk_calls.h"
#include "platform/files/files.h"

namespace ts5::test {

class PowerCut : public DiskCalls {
 public:
  // After each call, the name has to be what it is now or a whole file; it may be nothing only when it is
  // now.
  void Watch(const std::string& path);
  // After each call, one of the two has to be a whole file.
  void WatchMove(const std::string& from, const std::string& to) { moves_[from] = to; }

  [[nodiscard]] std::vector<std::string> Harm() const { return harm_; }  // calls after which a cut does harm
  [[nodiscard]] int Calls() const { return calls_; }
  [[nodiscard]] int Flushes() const { return flushes_; }  // of files, file systems and directories
  int refusals = 0;  // renames that are refused first, as if the two were on different disks

  int Create(const std::string& path, mode_t mode) override;
  ssize_t Write(int file, ByteView bytes, std::uint64_t offset) override;
  int Truncate(int file, std::uint64_t size) override;
  int Flush(int file) override;
  int FlushFileSystem(const std::string& directory) override;
  int FlushDirectory(const std::string& directory) override;
  int Rename(const std::string& from, const std::string& to) override;
  int RenameKeeping(const std::string& from, const std::string& to) override;
  int Unlink(const std::string& path) override;

 private:
  using Node = std::uint64_t;  // an inode; 0: nothing
  static Node NodeAt(const std::string& path);
  std::vector<Node>& History(
      const std::string& path);  // what the name may be, the last one if nothing happens
  [[nodiscard]] bool IsWhole(const std::string& path);
  int Moved(const std::string& from, const std::string& to, int result);
  void Check(const std::string& call);

  std::mutex mutex_;
  std::map<std::string, std::vector<Node>> names_;
  std::map<std::string, Node> watched_;
  std::map<std::string, std::string> moves_;
  std::set<Node> unflushed_;
  std::vector<std::string> harm_;
  int calls_ = 0;
  int flushes_ = 0;
};

}  // namespace ts5::test
