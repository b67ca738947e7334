#include "platform/store/registry_key.h"

#include <algorithm>
#include <utility>

#include "platform/base/text.h"

namespace ts5 {
namespace {

bool IsKeyPart(std::string_view part) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20; };
  return IsUtf8(part) && std::ranges::none_of(part, isControl) && CharacterCount(part) <= kMaxKeyPart;
}

std::optional<std::string_view> RootOf(std::string_view name) {
  constexpr std::pair<std::string_view, std::string_view> kRoots[] = {{kLocalMachine, kLocalMachine},
                                                                      {"HKLM", kLocalMachine},
                                                                      {kCurrentUser, kCurrentUser},
                                                                      {"HKCU", kCurrentUser}};
  for (const auto& [known, full] : kRoots) {
    if (EqualsIgnoringCase(name, known)) return full;
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> NormalisedKey(std::string_view key) {
  std::string normalised;
  std::size_t depth = 0;
  for (const std::string_view part : Split(key, '\\')) {
    if (part.empty()) continue;
    if (++depth > kMaxKeyDepth || !IsKeyPart(part)) return std::nullopt;
    if (depth == 1) {
      const auto root = RootOf(part);
      if (!root) return std::nullopt;
      normalised = *root;
    } else {
      (normalised += '\\') += part;
    }
  }
  if (depth == 0) return std::nullopt;
  return normalised;
}

std::string_view ParentOf(std::string_view key) {
  const std::size_t separator = key.rfind('\\');
  return separator == std::string_view::npos ? std::string_view{} : key.substr(0, separator);
}

std::string_view LastPartOf(std::string_view key) {
  return key.substr(key.rfind('\\') + 1);
}

}  // namespace ts5
