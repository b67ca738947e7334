#include "frame/file_list.h"

#include <algorithm>
#include <numeric>
#include <utility>

#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

std::uint64_t SecondsOf(const FileListEntry& entry) {
  return std::uint64_t{entry.duration} + entry.pause;
}

std::uint32_t SecondsIn(std::string_view text) {
  return static_cast<std::uint32_t>(std::max(0, LeadingInteger(text)));
}

}  // namespace

FileListEntry EntryFromPath(std::string path, std::uint32_t duration, std::uint32_t pause) {
  const bool cdTrack = IsCdTrackText(path);
  return {std::move(path), cdTrack, duration, pause};
}

std::string StoredEntry(const FileListEntry& entry, bool burner) {
  return burner ? Format("%s*%i|%i", entry.path, entry.duration, entry.pause) : entry.path;
}

FileListEntry ParseStoredEntry(std::string_view text) {
  const std::size_t star = text.rfind('*');
  const std::size_t bar = text.rfind('|');
  if (bar == std::string_view::npos) return EntryFromPath(std::string(text.substr(0, star)));
  const std::uint32_t duration = star == std::string_view::npos ? 0 : SecondsIn(text.substr(star + 1));
  return EntryFromPath(std::string(text.substr(0, star)), duration, SecondsIn(text.substr(bar + 1)));
}

void FreeFileList::Append(FileListEntry entry) {
  total_ += SecondsOf(entry);
  entries_.push_back(std::move(entry));
}

void FreeFileList::Remove(const std::vector<std::size_t>& indices) {
  std::vector<bool> removed(entries_.size());
  for (const std::size_t index : indices) {
    if (index < removed.size()) removed[index] = true;
  }
  const auto first = std::ranges::find(removed, true);
  if (first == removed.end()) return;

  // newIndex[i]: where entry i is afterwards.
  std::vector<std::size_t> newIndex(entries_.size());
  std::size_t kept = 0;
  for (std::size_t i = 0; i < entries_.size(); ++i) {
    newIndex[i] = kept;
    if (removed[i]) {
      total_ -= SecondsOf(entries_[i]);
    } else {
      if (kept != i) entries_[kept] = std::move(entries_[i]);
      ++kept;
    }
  }
  entries_.resize(kept);
  std::erase_if(selection_, [&](std::size_t index) { return removed[index]; });
  for (std::size_t& index : selection_) index = newIndex[index];

  focus_ = static_cast<std::size_t>(first - removed.begin());
  if (focus_ >= kept && kept > 0) focus_ = kept - 1;
}

bool FreeFileList::MoveUp() {
  return focus_ > 0 && focus_ < entries_.size() && SwapFocusedWith(focus_ - 1);
}

bool FreeFileList::MoveDown() {
  return focus_ + 1 < entries_.size() && SwapFocusedWith(focus_ + 1);
}

bool FreeFileList::SwapFocusedWith(std::size_t neighbour) {
  std::swap(entries_[focus_], entries_[neighbour]);
  for (std::size_t& index : selection_) {
    if (index == focus_) {
      index = neighbour;
    } else if (index == neighbour) {
      index = focus_;
    }
  }
  std::ranges::sort(selection_);
  focus_ = neighbour;
  return true;
}

void FreeFileList::SetPath(std::size_t index, std::string path) {
  entries_.at(index).path = std::move(path);
}

void FreeFileList::SetTimes(std::size_t index, std::uint32_t duration, std::uint32_t pause) {
  FileListEntry& entry = entries_.at(index);
  total_ -= SecondsOf(entry);
  entry.duration = duration;
  entry.pause = pause;
  total_ += SecondsOf(entry);
}

void FreeFileList::Clear() {
  *this = {};
}

void FreeFileList::Select(std::vector<std::size_t> indices) {
  std::erase_if(indices, [this](std::size_t index) { return index >= entries_.size(); });
  std::ranges::sort(indices);
  indices.erase(std::unique(indices.begin(), indices.end()), indices.end());
  selection_ = std::move(indices);
}

void FreeFileList::SelectAll() {
  selection_.resize(entries_.size());
  std::iota(selection_.begin(), selection_.end(), std::size_t{0});
}

bool FreeFileList::Reorder(const std::vector<std::size_t>& order) {
  constexpr std::size_t kNowhere = static_cast<std::size_t>(-1);
  if (order.size() != entries_.size()) return false;
  std::vector<std::size_t> newIndex(order.size(), kNowhere);
  for (std::size_t i = 0; i < order.size(); ++i) {
    if (order[i] >= newIndex.size() || newIndex[order[i]] != kNowhere) return false;
    newIndex[order[i]] = i;
  }
  std::vector<FileListEntry> entries(entries_.size());
  for (std::size_t i = 0; i < order.size(); ++i) entries[i] = std::move(entries_[order[i]]);
  entries_ = std::move(entries);
  for (std::size_t& index : selection_) index = newIndex[index];
  std::ranges::sort(selection_);
  if (focus_ < newIndex.size()) focus_ = newIndex[focus_];
  return true;
}

std::string DirectorySelection::NameOf(std::string_view file) const {
  return PathBelow(path, file).value_or(std::string(FileNameOf(file)));
}

}  // namespace ts5
