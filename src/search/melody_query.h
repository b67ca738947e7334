// What a search looks for, and how it is stopped.
#pragma once

#include <vector>

#include "platform/work_watch.h"
#include "search/search_melody.h"
#include "search/search_options.h"

namespace ts5 {

struct MelodyQuery {
  std::vector<MelodyElement> elements;
  SearchOptions options;
};

}  // namespace ts5
