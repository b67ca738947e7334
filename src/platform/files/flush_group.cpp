#include "platform/files/flush_group.h"

#include <map>
#include <utility>
#include <vector>

#include "platform/files/file_steps.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

// From so many files on, one flush of all that their file system holds costs less than one for each.
constexpr std::size_t kWorthTogether = 3;

FlushGroup*& OfThisThread() {
  thread_local FlushGroup* current = nullptr;
  return current;
}

}  // namespace

FlushGroup::FlushGroup() : outer_(std::exchange(OfThisThread(), this)) {}

FlushGroup::~FlushGroup() {
  (void)FlushDirectories();
  OfThisThread() = outer_;
}

FlushGroup* FlushGroup::Current() {
  return OfThisThread();
}

void FlushGroup::FlushContents(std::span<StagedFile* const> files) {
  std::map<std::string, std::vector<StagedFile*>> places;
  for (StagedFile* const file : files) places[NativeDirectory(file->TemporaryPath())].push_back(file);
  std::set<dev_t> whole;  // file systems
  for (const auto& [directory, its] : places) {
    const auto place = StatusOf(directory, true);
    bool done = place && whole.contains(place->st_dev);
    if (!done && place && files.size() >= kWorthTogether) done = Disk().FlushFileSystem(directory) == 0;
    if (done) whole.insert(place->st_dev);
    for (StagedFile* const file : its) {
      if (done || Succeeded(file->Flush())) flushed_.insert(file->TemporaryPath());
    }
  }
}

Outcome FlushGroup::FlushDirectories() {
  Outcome all = Outcome::Success;
  for (const std::string& directory : directories_) {
    if (const Outcome flushed = FlushDirectory(directory); Failed(flushed)) all = flushed;
  }
  directories_.clear();
  return all;
}

}  // namespace ts5
