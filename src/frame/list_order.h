// Which entries of a list are shown, and in which order: a view on the list, which stays as it is.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "frame/file_facts.h"
#include "frame/file_list.h"
#include "frame/file_view.h"

namespace ts5 {

struct ListOrder {
  std::optional<FileColumn> column = {};  // nothing: the list's own order
  bool descending = false;
  std::string filter = {};  // words that are all in the name or the directory, whatever their case

  [[nodiscard]] bool IsOwn() const { return !column && filter.empty(); }
  // It cannot be told before the facts of all files are known.
  [[nodiscard]] bool NeedsFacts() const { return column && *column >= FileColumn::Length; }
  // And these are more than size and date.
  [[nodiscard]] bool NeedsMusic() const {
    return NeedsFacts() && *column != FileColumn::Size && *column != FileColumn::Date;
  }
  bool operator==(const ListOrder&) const = default;
};

// As the settings keep the sorting: the name of the column, "-" before it when it descends.
[[nodiscard]] std::string StoredSorting(const ListOrder& order);
[[nodiscard]] ListOrder SortingFrom(std::string_view stored);

// The facts of an entry; nullptr while they are not known.
using EntryFacts = std::function<const FileFacts*(std::size_t entry)>;

// The entries that are shown. Names go as people count ("Lied 2" before "Lied 10"), without regard to case;
// what has no such fact, or not yet, stands at the end either way, and equal ones keep the list's order.
// root: the directory in which all of them lie, of which the filter knows nothing.
[[nodiscard]] std::vector<std::uint32_t> ShownEntries(std::span<const FileListEntry> entries,
                                                      const ListOrder& order, std::string_view root,
                                                      const EntryFacts& facts);

// What a name is compared by.
[[nodiscard]] std::string SortKey(std::string_view name);
// Numbers inside count as numbers.
[[nodiscard]] int CompareKeys(std::string_view a, std::string_view b);

}  // namespace ts5
