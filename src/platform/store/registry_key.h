// Keys of the registry: HKEY_LOCAL_MACHINE or HKEY_CURRENT_USER (short HKLM, HKCU), and parts behind it,
// separated by '\'.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ts5 {

inline constexpr std::string_view kLocalMachine = "HKEY_LOCAL_MACHINE";
inline constexpr std::string_view kCurrentUser = "HKEY_CURRENT_USER";
inline constexpr std::size_t kMaxKeyPart = 255;   // characters of one part of a key
inline constexpr std::size_t kMaxKeyDepth = 512;  // parts, the root included

// The key with the full name of its root and single separators; nothing when it has no known root, or a part
// that is too long, too deep or no text.
[[nodiscard]] std::optional<std::string> NormalisedKey(std::string_view key);

// Of a normalised key: the one above, "" for a root; the last part.
[[nodiscard]] std::string_view ParentOf(std::string_view key);
[[nodiscard]] std::string_view LastPartOf(std::string_view key);

}  // namespace ts5
