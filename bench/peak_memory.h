// The highest resident memory of this process since the last reset, from Linux' /proc.
#pragma once

#include <fstream>
#include <string>

namespace ts5 {

inline void ResetPeakMemory() {
  std::ofstream("/proc/self/clear_refs") << "5";
}

// In MB; 0 where the system does not tell.
inline double PeakMemory() {
  std::ifstream in("/proc/self/status");
  for (std::string word; in >> word;) {
    double kilobytes = 0;
    if (word == "VmHWM:" && in >> kilobytes) return kilobytes / 1024;
  }
  return 0;
}

}  // namespace ts5
