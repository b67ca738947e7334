// Searches many files on several threads and tells of them in order, as if one came after the other: all hits
// of a file, then its outcome, then the next file. The first hits of the file whose turn it is come at once;
// files that are ahead of it wait when they have found much, so that memory stays bounded.
#pragma once

#include <functional>
#include <optional>
#include <string>

#include "search/hit_sink.h"
#include "search/melody_query.h"

namespace ts5 {

// Searches one file. Called on several threads at once.
using FileSearch =
    std::function<SearchOutcome(const std::string& path, const HitSink& sink, const CancelCheck& cancelled)>;

struct OrderedSearchEvents {
  std::function<std::optional<std::string>()> next;  // the next file; on any thread, one call at a time
  // On the thread that called SearchInOrder.
  std::function<void(const std::string& path)> begin;
  HitSink hit;
  std::function<bool(const std::string& path, const SearchOutcome& outcome)> end;  // false ends the search
};

// Returns when all files are done, end() said so, or hit() failed; its outcome is that of the file then.
void SearchInOrder(const FileSearch& search, const OrderedSearchEvents& events, const CancelCheck& cancelled,
                   unsigned threads);

}  // namespace ts5
