// What a search looks for, and how it is stopped.
#pragma once

#include <functional>
#include <vector>

#include "search/search_melody.h"
#include "search/search_options.h"

namespace ts5 {

struct MelodyQuery {
  std::vector<MelodyElement> elements;
  SearchOptions options;
};

// Polled while a file is searched; may be empty.
using CancelCheck = std::function<bool()>;

}  // namespace ts5
