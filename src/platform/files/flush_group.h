// Files that are put in place together: while a group is there, commits of staged files on its thread share
// their flushes.
//
//   FlushGroup group;
//   group.FlushContents(files);                                  // once for all
//   for (StagedFile* file : files) (void)file->CommitAs(...);     // each under its name, in order
//   if (Failed(group.FlushDirectories())) ...                     // once for each directory
//
// A power cut leaves at each name what was there or the whole new file, as without a group; but only what
// FlushDirectories has said Success of is there for certain.
#pragma once

#include <set>
#include <span>
#include <string>

#include "platform/base/outcome.h"

namespace ts5 {

class StagedFile;

class FlushGroup {
 public:
  FlushGroup();
  FlushGroup(const FlushGroup&) = delete;
  FlushGroup& operator=(const FlushGroup&) = delete;
  ~FlushGroup();  // flushes the directories that are left

  // What fails here is tried again, and said, when that file is committed.
  void FlushContents(std::span<StagedFile* const> files);
  [[nodiscard]] Outcome FlushDirectories();  // WriteFailed: of one of them at least

  // For StagedFile. The innermost group of this thread; nullptr when there is none.
  [[nodiscard]] static FlushGroup* Current();
  [[nodiscard]] bool HasFlushed(const std::string& path) const { return flushed_.contains(path); }
  void AddDirectory(std::string directory) { directories_.insert(std::move(directory)); }

 private:
  FlushGroup* outer_;
  std::set<std::string> flushed_;      // paths of staged files
  std::set<std::string> directories_;  // with new names
};

}  // namespace ts5
