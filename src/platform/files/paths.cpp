#include "platform/files/paths.h"

#include <vector>

#include "platform/base/text.h"

namespace ts5 {
namespace {

constexpr std::string_view kSeparators = "/\\";

bool IsSeparator(char c) {
  return c == '/' || c == '\\';
}

bool HasDrive(std::string_view path) {
  return path.size() >= 2 && path[1] == ':' &&
         ((path[0] >= 'a' && path[0] <= 'z') || (path[0] >= 'A' && path[0] <= 'Z'));
}

// How much of the path is its root: "/" or "c:\", which stays when names are taken off; 0 for a relative
// path.
std::size_t RootLength(std::string_view path) {
  const std::size_t drive = HasDrive(path) ? 2 : 0;
  return path.size() > drive && IsSeparator(path[drive]) ? drive + 1 : drive;
}

// Where the dot of the extension stands, npos without one.
std::size_t DotOf(std::string_view path) {
  const std::size_t dot = path.rfind('.');
  const std::size_t name = path.size() - FileNameOf(path).size();
  return dot == std::string_view::npos || dot < name ? std::string_view::npos : dot;
}

}  // namespace

bool IsUsablePath(std::string_view path) {
  return !path.empty() && path.find('\0') == std::string_view::npos && IsUtf8(path) &&
         (path.size() <= kMaxPathCharacters || CharacterCount(path) <= kMaxPathCharacters);
}

std::string_view FileNameOf(std::string_view path) {
  const std::size_t separator = path.find_last_of(kSeparators);
  return separator == std::string_view::npos ? path : path.substr(separator + 1);
}

std::string_view DirectoryOf(std::string_view path) {
  const std::size_t root = RootLength(path);
  std::size_t end = path.size() - FileNameOf(path).size();
  while (end > root && IsSeparator(path[end - 1])) --end;
  return path.substr(0, end);
}

std::string_view ExtensionOf(std::string_view path) {
  const std::size_t dot = DotOf(path);
  return dot == std::string_view::npos ? std::string_view{} : path.substr(dot + 1);
}

bool HasExtension(std::string_view path) {
  return DotOf(path) != std::string_view::npos;
}

std::string_view WithoutExtension(std::string_view path) {
  return path.substr(0, DotOf(path));
}

std::string WithExtension(std::string_view path, std::string_view extension) {
  if (extension.starts_with('.')) extension.remove_prefix(1);
  std::string result(WithoutExtension(path));
  if (!extension.empty()) (result += '.') += extension;
  return result;
}

std::string JoinPath(std::string_view directory, std::string_view name) {
  if (directory.empty() || IsAbsolutePath(name)) return std::string(name);
  std::string result(directory);
  if (!IsSeparator(result.back())) result += HasDrive(directory) ? '\\' : '/';
  return result += name;
}

std::optional<std::string> PathBelow(std::string_view directory, std::string_view path) {
  if (directory.empty() || !path.starts_with(directory)) return std::nullopt;
  path.remove_prefix(directory.size());
  if (path.empty()) return std::string();
  if (IsSeparator(path.front())) {
    path.remove_prefix(1);
  } else if (!IsSeparator(directory.back())) {
    return std::nullopt;
  }
  return std::string(path);
}

bool IsAbsolutePath(std::string_view path) {
  const std::size_t root = RootLength(path);
  return root > 0 && IsSeparator(path[root - 1]);
}

std::string NormalisedPath(std::string_view path) {
  // Below the native root a '\' may be part of a name: such a file keeps it.
  const std::string_view separators = path.starts_with('/') ? kSeparators.substr(0, 1) : kSeparators;
  const char separator = HasDrive(path) ? '\\' : '/';
  const std::size_t root = RootLength(path);

  std::vector<std::string_view> names;
  for (std::size_t start = root; start < path.size();) {
    const std::size_t end = std::min(path.find_first_of(separators, start), path.size());
    const std::string_view name = path.substr(start, end - start);
    start = end + 1;
    if (name.empty() || name == ".") continue;
    if (name != "..") {
      names.push_back(name);
    } else if (!names.empty() && names.back() != "..") {
      names.pop_back();
    } else if (!IsAbsolutePath(path)) {
      names.push_back(name);
    }
  }

  std::string result(path.substr(0, root));
  if (IsAbsolutePath(path)) result.back() = separator;
  for (std::size_t i = 0; i < names.size(); ++i) {
    if (i > 0) result += separator;
    result += names[i];
  }
  return result.empty() && !path.empty() ? "." : result;
}

}  // namespace ts5
