// The hits of the screen list with what is known of the search: the data behind the list view, the viewer and
// the printer. Used from one thread. Hits of one file share its name, so that a million of them fit easily.
#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <span>
#include <string>
#include <vector>

#include "frame/search_hit.h"
#include "frame/settings.h"
#include "platform/base/outcome.h"
#include "search/hit_texts.h"
#include "search/search_record.h"

namespace ts5 {

class SearchResults {
 public:
  // The start of a search: clears the old hits after the setting; ask is called when the user is to be asked
  // whether they are cleared (AskClearResults). A search of another kind always clears.
  void Begin(SearchRecord record, OldSearchResults policy, const std::function<bool()>& ask);
  void End(const SearchRecord& record) { record_ = record; }
  void Clear();

  // OutOfMemory: the hit is not kept.
  [[nodiscard]] Outcome Add(const SearchHit& hit);

  [[nodiscard]] std::size_t Size() const { return rows_.size(); }
  [[nodiscard]] SearchHit Hit(std::size_t index) const;
  // How many notes the melody has that the hit is a place of: the search may have been an earlier one.
  [[nodiscard]] std::size_t Notes(std::size_t index) const;
  [[nodiscard]] HitRow Columns(std::size_t index, bool wholePath) const;
  [[nodiscard]] const SearchRecord& Record() const { return record_; }
  // The rows as lines of text, columns separated by tabs, for the clipboard.
  [[nodiscard]] std::string CopyText(std::span<const std::size_t> indices, bool wholePath) const;

 private:
  // A hit in 44 bytes without anything to move: the numbers of SearchHit in their order, and whose file.
  struct Row {
    std::array<std::int32_t, 10> numbers;
    std::uint32_t file;
  };

  // Where the hits of a search begin.
  struct Search {
    std::size_t firstRow;
    std::size_t notes;
  };

  SearchRecord record_;
  std::vector<Search> searches_;
  std::vector<std::string> files_;
  std::vector<Row> rows_;
};

}  // namespace ts5
