// The programs that a user would take instead, run on one core as we are.
#pragma once

#include <sys/resource.h>

#include <cstdlib>
#include <string>

namespace ts5 {

// Whether the program of the command line is installed.
inline bool HasPeer(const std::string& command) {
  const std::string look = "command -v " + command.substr(0, command.find(' ')) + " >/dev/null 2>&1";
  return std::system(look.c_str()) == 0;
}

inline bool RunPeer(const std::string& command) {
  return std::system(("taskset -c 0 " + command + " >/dev/null 2>&1").c_str()) == 0;
}

// The processor's time of this process and of the programs that it has run: what a busy machine does not
// lengthen.
inline double ProcessorSeconds() {
  double seconds = 0;
  for (const int who : {RUSAGE_SELF, RUSAGE_CHILDREN}) {
    rusage usage{};
    if (getrusage(who, &usage) != 0) continue;
    seconds += static_cast<double>(usage.ru_utime.tv_sec + usage.ru_stime.tv_sec) +
               static_cast<double>(usage.ru_utime.tv_usec + usage.ru_stime.tv_usec) / 1e6;
  }
  return seconds;
}

}  // namespace ts5
