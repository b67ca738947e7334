// The programs that a user would take instead, run on one core as we are.
#pragma once

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

}  // namespace ts5
