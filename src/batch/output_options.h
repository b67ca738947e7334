// How much of a run is said, and in which form.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "frame/run.h"

namespace ts5::batch {

struct OutputOptions {
  bool json = false;                       // one JSON object and nothing else
  bool quiet = false;                      // the result, but nothing on the way
  std::vector<std::string> melodies = {};  // what the hits of a search are named by
  std::optional<RunShare> share = {};      // that the run was told to take
};

}  // namespace ts5::batch
