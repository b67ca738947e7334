// Hits and searches as texts: rows of the screen list, lines of result files, rows of printed results.
// Numbers that people see count from 1.
#pragma once

#include <array>
#include <string>
#include <string_view>
#include <vector>

#include "frame/search_hit.h"
#include "search/search_record.h"

namespace ts5 {

using HitRow = std::array<std::string, 4>;

// Column titles of the screen list: file, track (or staff and voice), bar, time (or beat).
[[nodiscard]] std::array<std::string_view, 4> HitColumnTitles(SearchKind kind);
[[nodiscard]] HitRow HitColumns(SearchKind kind, const SearchHit& hit, bool wholePath);
[[nodiscard]] HitRow PrintedHit(SearchKind kind, const SearchHit& hit, bool wholePath);

// A path cut to 47 characters: directories become "..." from the front, at last the name itself is cut and
// marked by "~". Works on single-byte text; '/' and '\' both separate.
inline constexpr std::size_t kMaxShortPath = 47;
[[nodiscard]] std::string ShortenedPath(std::string path);

// The line of a result file in Windows-1252, with CR LF.
[[nodiscard]] std::string HitLine(SearchKind kind, const SearchHit& hit);

[[nodiscard]] std::string ResultTitle(const SearchRecord& record);  // with the melody's name or "unbekannt"
[[nodiscard]] std::string ResultDate(const SearchRecord& record);
[[nodiscard]] std::string ResultEnding(const SearchRecord& record);
// Files searched, files that are not suitable, melodies found.
[[nodiscard]] std::array<std::string, 3> ResultCounts(const SearchRecord& record);

// Head and foot of one search in a result file: UTF-8, with CR LF.
[[nodiscard]] std::string_view ResultTagLine();
[[nodiscard]] std::string ResultHeader(const SearchRecord& record);
[[nodiscard]] std::string ResultFooter(const SearchRecord& record);

}  // namespace ts5
