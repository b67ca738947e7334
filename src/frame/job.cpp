#include "frame/job.h"

#include <algorithm>

#include "platform/paths.h"

namespace ts5 {

std::size_t ItemCount(const Job& job) {
  if (job.Mode() == SourceMode::Directory) return job.directory.names.size();
  return job.files.Selection().empty() ? job.files.Size() : job.files.Selection().size();
}

std::optional<FileListEntry> ItemEntry(const Job& job, std::size_t index) {
  const std::size_t count = ItemCount(job);
  if (count == 0) return std::nullopt;
  index = std::min(index, count - 1);
  if (job.Mode() == SourceMode::Directory) {
    const std::string& name = job.directory.names[index];
    // A name without a dot stands for a track of the audio CD that the directory lies on.
    return FileListEntry{.path = JoinPath(job.directory.path, name), .cdTrack = IsCdTrackText(name)};
  }
  return job.files[job.files.Selection().empty() ? index : job.files.Selection()[index]];
}

std::string ItemSource(const Job& job, std::size_t index) {
  const auto entry = ItemEntry(job, index);
  return entry ? entry->path : std::string();
}

}  // namespace ts5
