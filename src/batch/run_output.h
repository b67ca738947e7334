// What is said of a run at its end.
#pragma once

#include <ostream>
#include <string>

#include "batch/output_options.h"
#include "frame/remarks.h"
#include "frame/run_result.h"
#include "frame/search_hit.h"
#include "search/search_record.h"
#include "search/search_results.h"

namespace ts5::batch {

// What the results dialog shows: title, counts, remarks.
[[nodiscard]] std::string ResultText(const RunResult& result);

// Writes one JSON object:
//   {"filter","title","lines":[{"label","count"}],"remarks":[...],
//    "items":[{"source","destination","code","losses":[{"kind","bar","staff","count"}]}],
//    "hits":[{"file","track",...,"melody"}]}
// and "part":{"number","of"} when the run took a share of the items.
// code: the outcome code of the item, 0 or positive for success. Bytes of a name that are not UTF-8 become
// U+FFFD. Hits are written one by one, however many there are.
void WriteResultJson(const RunResult& result, const SearchResults& hits, const OutputOptions& options,
                     std::ostream& out);

// What the melody of a hit is called; "" when nobody said it.
[[nodiscard]] std::string MelodyOf(const SearchHit& hit, const OutputOptions& options);
// One line for a place where a search found its melody.
[[nodiscard]] std::string HitText(SearchKind kind, const SearchHit& hit);

// Cancelled before failed before success.
[[nodiscard]] int ExitStatusOf(const RunResult& result);

}  // namespace ts5::batch
