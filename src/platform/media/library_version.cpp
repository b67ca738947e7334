#include "platform/media/library_version.h"

#include <dlfcn.h>

#include "platform/base/calendar.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

unsigned NumberAt(std::string_view& text) {
  const std::size_t end = text.find('.');
  const auto number = ParseInteger(text.substr(0, end)).value_or(0);
  text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
  return static_cast<unsigned>(number);
}

}  // namespace

std::optional<LibraryVersion> VersionOfLibrary(std::string_view name, std::string_view full,
                                               const void* function) {
  Dl_info info{};
  if (dladdr(function, &info) == 0 || info.dli_fname == nullptr) return std::nullopt;
  const auto made = LastWriteDate(info.dli_fname);
  if (!made) return std::nullopt;
  const auto [day, month, year] = NumbersOf(*made);
  std::string_view rest = full;
  LibraryVersion version{.name = name, .full = full};
  version.major = NumberAt(rest);
  version.minor = NumberAt(rest);
  version.day = static_cast<unsigned>(day);
  version.month = static_cast<unsigned>(month);
  version.year = static_cast<unsigned>(year);
  return version;
}

}  // namespace ts5
