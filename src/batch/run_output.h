// What is said of a run at its end.
#pragma once

#include <ostream>
#include <string>

#include "frame/remarks.h"
#include "frame/run_result.h"
#include "frame/search_hit.h"
#include "search/search_results.h"

namespace ts5::batch {

// What the results dialog shows: title, counts, remarks.
[[nodiscard]] std::string ResultText(const RunResult& result);

// Writes one JSON object:
//   {"filter","title","lines":[{"label","count"}],"remarks":[...],
//    "items":[{"source","destination","code"}],"hits":[{"file","track",...}]}
// code: the outcome code of the item, 0 or positive for success. Bytes of a name that are not UTF-8 become
// U+FFFD. Hits are written one by one, however many there are.
void WriteResultJson(const RunResult& result, const SearchResults& hits, std::ostream& out);

// One line for a place where a search found its melody.
[[nodiscard]] std::string HitText(SearchKind kind, const SearchHit& hit);

// What went wrong with one item, in the words of its filter's table; "" for one that succeeded.
[[nodiscard]] std::string ItemRemark(const RunItem& item, std::span<const Remark> table);

// Cancelled before failed before success.
[[nodiscard]] int ExitStatusOf(const RunResult& result);

}  // namespace ts5::batch
