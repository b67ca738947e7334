// What is known of a library that the program runs with: its version, and the day on which its file was made.
#pragma once

#include <optional>
#include <string_view>

namespace ts5 {

struct LibraryVersion {
  std::string_view name;  // e.g. "libmp3lame"
  std::string_view full;  // its version as the library writes it
  unsigned major = 0;
  unsigned minor = 0;
  unsigned day = 0;
  unsigned month = 0;
  unsigned year = 0;
};

// function: one of the library. Nothing when its file cannot be found, so that nothing is known of it.
[[nodiscard]] std::optional<LibraryVersion> VersionOfLibrary(std::string_view name, std::string_view full,
                                                             const void* function);

}  // namespace ts5
