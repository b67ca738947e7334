// The options of the disc filters: which drives, which pauses, which tracks.
#pragma once

#include <optional>
#include <string>

#include "batch/arguments.h"
#include "frame/job.h"
#include "frame/run.h"

namespace ts5::batch {

struct DiscOptions {
  std::optional<std::string> drive;   // that writes
  std::optional<std::string> source;  // that is read
  std::optional<std::string> pauses;  // seconds, one number a file
  std::optional<std::string> tracks;  // "1,3-5"
  std::optional<std::string> titles;  // for CD-TEXT, "Eins|Zwei", one a file
  std::optional<std::string> performers;
};

void AddDiscOptions(Arguments& arguments, DiscOptions& options);
// Takes them into a job whose sources are settled, and into the run's devices. What is wrong, for the user;
// nothing when all is well.
[[nodiscard]] std::optional<std::string> TakeDiscOptions(const DiscOptions& options, Job& job,
                                                         RunDevices& devices);

}  // namespace ts5::batch
