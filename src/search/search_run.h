// The run of a melody search: the target, the files, statistics and the end, on the worker thread of the job.
#pragma once

#include "frame/filter_module.h"
#include "frame/run.h"
#include "search/ordered_search.h"
#include "search/search_parameters.h"
#include "search/search_record.h"

namespace ts5 {

// Fills run.Result(): files searched, hits, unsuitable files, and the remark of the last file's outcome. Hits
// go to the screen or to the result file, as the job says. Without selected files a directory job walks its
// tree. threads: 0 for as many as there are cores.
void RunMelodySearch(Run& run, const SearchParameters& parameters, const FileSearch& search,
                     unsigned threads = 0);

// What is known of a search as it begins (now); the record of its end is the payload of the run's result.
[[nodiscard]] SearchRecord RecordAtStart(SearchKind kind, const SearchParameters& parameters);

[[nodiscard]] FilterModule MidiSearchModule();
[[nodiscard]] FilterModule ScoreSearchModule();

}  // namespace ts5
