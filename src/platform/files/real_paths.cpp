#include "platform/files/real_paths.h"

#include <algorithm>
#include <filesystem>
#include <system_error>

#include "platform/files/file_steps.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;

constexpr int kMaxLinks = 40;  // as many as the kernel follows

}  // namespace

std::string FullPath(const std::string& path) {
  const bool foreign = IsAbsolutePath(path) && !path.starts_with('/');  // "c:\song.mid" is nowhere here
  if (path.empty() || foreign) return path;
  std::error_code error;
  const fs::path full = fs::absolute(path, error);
  if (error) return path;
  const bool plain = std::ranges::find(full, fs::path("..")) == full.end();
  std::string result = plain ? full.lexically_normal().string() : full.string();
  for (const std::string_view end : {"/", "/."}) {
    while (result.size() > end.size() && result.ends_with(end)) result.resize(result.size() - end.size());
  }
  return result;
}

std::optional<std::string> BehindLinks(std::string path) {
  for (int links = 0; links < kMaxLinks; ++links) {
    const auto status = StatusOf(path, false);
    if (!status || !S_ISLNK(status->st_mode)) return path;
    std::error_code error;
    const std::string destination = fs::read_symlink(path, error).string();
    if (error) return std::nullopt;
    path = destination.starts_with('/') ? destination : NativeDirectory(path) + "/" + destination;
  }
  return std::nullopt;
}

}  // namespace ts5
