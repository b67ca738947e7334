// Prints the hits of the screen list: title, melody and date, one row per hit, and the statistics at the end.
#pragma once

#include <functional>

#include "search/search_results.h"

class QPrinter;

namespace ts5 {

// Called before every page with its number from 1 and how many there are; false aborts.
using PageProceed = std::function<bool(int page, int pages)>;

// Whole paths after the setting. False when it was aborted or the printer refused; an aborted job is taken
// back.
[[nodiscard]] bool PrintResults(const SearchResults& results, bool wholePaths, QPrinter& printer,
                                const PageProceed& proceed);

}  // namespace ts5
