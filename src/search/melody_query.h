// What a search looks for, and how it is stopped.
#pragma once

#include <cstddef>
#include <vector>

#include "platform/base/work_watch.h"
#include "search/search_melody.h"
#include "search/search_options.h"

namespace ts5 {

struct MelodyQuery {
  std::vector<MelodyElement> elements;
  SearchOptions options;
  // Further melodies that are looked for in the same pass; hits of the first of these have the number 1.
  std::vector<std::vector<MelodyElement>> more = {};

  [[nodiscard]] std::size_t Count() const { return 1 + more.size(); }
  [[nodiscard]] const std::vector<MelodyElement>& Melody(std::size_t number) const {
    return number == 0 ? elements : more[number - 1];
  }
};

}  // namespace ts5
