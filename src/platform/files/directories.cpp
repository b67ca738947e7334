#include "platform/files/directories.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <filesystem>

#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kProgram = "stavora-ts5";

// The base directory rules of freedesktop.org: a variable that holds no absolute path counts as unset.
std::string Below(const char* variable, std::string_view standard) {
  const char* const value = std::getenv(variable);
  const bool usable = value != nullptr && value[0] == '/';
  return JoinPath(usable ? std::string(value) : JoinPath(HomeDirectory(), standard), kProgram);
}

}  // namespace

std::string HomeDirectory() {
  if (const char* const home = std::getenv("HOME"); home != nullptr && home[0] == '/')
    return NormalisedPath(home);
  const passwd* const user = ::getpwuid(::getuid());
  return user != nullptr && user->pw_dir != nullptr && user->pw_dir[0] == '/' ? user->pw_dir : "/";
}

std::string ConfigurationDirectory() {
  return Below("XDG_CONFIG_HOME", ".config");
}

std::string ProgramDirectory() {
  return Below("XDG_DATA_HOME", ".local/share");
}

std::string InstalledDirectory() {
  std::error_code error;
  const std::string program = std::filesystem::read_symlink("/proc/self/exe", error).string();
  const std::string prefix(DirectoryOf(DirectoryOf(program)));
  const std::string installed = JoinPath(JoinPath(prefix, "share"), kProgram);
  return !error && IsDirectory(installed) ? installed : TS5_SOURCE_RESOURCES;
}

std::string DemoDirectory() {
  const std::string resources = InstalledDirectory();
  for (const std::string& path : {JoinPath(resources, "demo"), resources + "/../../demo"}) {
    if (IsDirectory(path)) return path;
  }
  return {};
}

}  // namespace ts5
