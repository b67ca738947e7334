// Path names as texts. Native paths use '/', old lists bring '\'; every function here takes both alike and
// touches no disk.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>

namespace ts5 {

inline constexpr std::size_t kMaxPathCharacters = 259;

// Whether the system takes the path at all: UTF-8, not empty, at most kMaxPathCharacters. A longer path is
// refused like a file that cannot be taken; it is never cut.
[[nodiscard]] bool IsUsablePath(std::string_view path);

// "/a/b/c.mid" -> "c.mid"; the text itself when it has no separator.
[[nodiscard]] std::string_view FileNameOf(std::string_view path);
// "/a/b/c.mid" -> "/a/b", "/c.mid" -> "/", "c:\c.mid" -> "c:\", "c.mid" -> "".
[[nodiscard]] std::string_view DirectoryOf(std::string_view path);
// The text after the last '.' of the file name, without the dot: "mid"; "" without a dot.
[[nodiscard]] std::string_view ExtensionOf(std::string_view path);
[[nodiscard]] bool HasExtension(std::string_view path);
// The path without its extension and dot.
[[nodiscard]] std::string_view WithoutExtension(std::string_view path);
// The path with its extension replaced, or added where it has none.
[[nodiscard]] std::string WithExtension(std::string_view path, std::string_view extension);
// One separator between the two; an empty directory gives the name alone; an absolute name replaces all.
[[nodiscard]] std::string JoinPath(std::string_view directory, std::string_view name);
// What JoinPath(directory, ...) makes the path of: "/a" and "/a/b/c.mid" -> "b/c.mid", "/a" and "/a" -> "".
// Nothing when it does not lie below.
[[nodiscard]] std::optional<std::string> PathBelow(std::string_view directory, std::string_view path);
[[nodiscard]] bool IsAbsolutePath(std::string_view path);
// Separators doubled or at the end are taken off, "." and ".." are resolved as texts.
[[nodiscard]] std::string NormalisedPath(std::string_view path);

}  // namespace ts5
