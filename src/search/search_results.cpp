#include "search/search_results.h"

#include <algorithm>
#include <iterator>
#include <new>
#include <utility>

namespace ts5 {

void SearchResults::Begin(SearchRecord record, OldSearchResults policy, const std::function<bool()>& ask) {
  const bool otherKind = record.kind != record_.kind;
  if (!rows_.empty()) {
    const bool clear =
        otherKind || policy == OldSearchResults::Delete || (policy == OldSearchResults::Ask && ask());
    if (clear) Clear();
  }
  searches_.push_back({rows_.size(), record.notes});
  record_ = std::move(record);
}

void SearchResults::Clear() {
  searches_ = {};
  files_ = {};
  rows_ = {};
}

Outcome SearchResults::Add(const SearchHit& hit) {
  try {
    if (files_.empty() || files_.back() != hit.file) files_.push_back(hit.file);
    rows_.push_back({{hit.firstSystem, hit.lastSystem, hit.firstObject, hit.lastObject, hit.verticalPosition,
                      hit.track, hit.voice, hit.bar, hit.time, hit.melody},
                     static_cast<std::uint32_t>(files_.size() - 1)});
  } catch (const std::bad_alloc&) {
    return Outcome::OutOfMemory;
  }
  return Outcome::Success;
}

SearchHit SearchResults::Hit(std::size_t index) const {
  const Row& row = rows_[index];
  const auto& [firstSystem, lastSystem, firstObject, lastObject, position, track, voice, bar, time, melody] =
      row.numbers;
  return {files_[row.file],
          firstSystem,
          lastSystem,
          firstObject,
          lastObject,
          position,
          track,
          voice,
          bar,
          time,
          melody};
}

std::size_t SearchResults::Notes(std::size_t index) const {
  const auto behind = std::ranges::upper_bound(searches_, index, {}, &Search::firstRow);
  return behind == searches_.begin() ? record_.notes : std::prev(behind)->notes;
}

HitRow SearchResults::Columns(std::size_t index, bool wholePath) const {
  return HitColumns(record_.kind, Hit(index), wholePath);
}

std::string SearchResults::CopyText(std::span<const std::size_t> indices, bool wholePath) const {
  std::string text;
  for (const std::size_t index : indices) {
    const HitRow row = Columns(index, wholePath);
    text.append(row[0]).append("\t").append(row[1]).append("\t").append(row[2]).append("\t").append(row[3]);
    text.append("\n");
  }
  return text;
}

}  // namespace ts5
