#include "frame/job.h"

#include <algorithm>
#include <string_view>
#include <unordered_set>

#include "platform/files/paths.h"

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

Job WithOnly(const Job& job, const std::vector<std::string>& sources) {
  const std::unordered_set<std::string_view> wanted(sources.begin(), sources.end());
  Job only = job;
  if (job.Mode() == SourceMode::Directory && ItemCount(job) > 0) {
    only.directory.Deselect();
    for (std::size_t i = 0; i < ItemCount(job); ++i) {
      if (!wanted.contains(ItemSource(job, i))) continue;
      only.directory.names.push_back(job.directory.names[i]);
      if (i < job.directory.indices.size()) only.directory.indices.push_back(job.directory.indices[i]);
    }
    return only;
  }
  only.files.Clear();
  if (job.Mode() == SourceMode::List) {
    for (std::size_t i = 0; i < ItemCount(job); ++i) {
      auto entry = ItemEntry(job, i);
      if (entry && wanted.contains(entry->path)) only.files.Append(*std::move(entry));
    }
  } else {
    for (const std::string& source : sources) only.files.Append(EntryFromPath(source));
  }
  only.sourceDrive = kListModeDrive;
  only.files.SelectAll();
  return only;
}

}  // namespace ts5
