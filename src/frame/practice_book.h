// How each file was practised last, in a profile file of the program, so that the passage and the tempo of
// yesterday are there today. Every member may be used from any thread.
#pragma once

#include <cstddef>
#include <list>
#include <mutex>
#include <string>
#include <utility>

#include "frame/practice.h"
#include "platform/base/outcome.h"

namespace ts5 {

inline constexpr std::size_t kMostPractised = 2000;  // files; the one that was not practised for longest goes

class PracticeBook {
 public:
  // path: the file that keeps them; "": that of the program. Read when it is first asked.
  explicit PracticeBook(std::string path = {});

  // Plain playing for a file that is not known.
  [[nodiscard]] Practice Of(const std::string& file);
  void Keep(const std::string& file, const Practice& practice);
  // Writes what has changed, if anything has. TargetFailed, WriteFailed; it is tried again the next time.
  [[nodiscard]] Outcome Save();

 private:
  void Read();

  std::mutex mutex_;
  std::string path_;
  bool read_ = false;
  bool changed_ = false;
  std::list<std::pair<std::string, std::string>> entries_;  // file and practice, the last one first
};

}  // namespace ts5
