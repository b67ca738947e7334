// Many lines of text, any of which can be had at once: a result file, or the hits of the screen list as a
// result file shows them. Nothing is put together before it is looked at, so that a million lines open like
// ten.
#pragma once

#include <cstddef>
#include <cstdint>
#include <functional>
#include <string>

#include "platform/base/outcome.h"
#include "search/search_results.h"

namespace ts5 {

inline constexpr std::uint64_t kMaxResultFile = std::uint64_t{256} << 20;  // longer ones are not shown
inline constexpr std::size_t kMaxResultLines = 10'000'000;                 // the same for their lines
inline constexpr std::size_t kMaxLineLength = 4096;  // what a longer line has more is left out

struct ResultLines {
  std::size_t count = 0;
  std::size_t longest = 0;                             // bytes of the longest line, about its characters
  std::function<std::string(std::size_t index)> line;  // UTF-8, without its end

  // So many lines from the first one on, each with a line feed behind it.
  [[nodiscard]] std::string Text(std::size_t first, std::size_t number) const;
};

// The lines look at the results, which must not change.
[[nodiscard]] ResultLines LinesOf(const SearchResults& results);

// SourceFailed: the file cannot be opened; WrongFormat: it does not begin as a result file does; ReadFailed:
// it cannot be read whole, or is too long; OutOfMemory, also for too many lines; Cancelled: stopped, polled
// while it is read, said so.
[[nodiscard]] Result<ResultLines> LoadResultFile(const std::string& path,
                                                 const std::function<bool()>& stopped = {});
// What to tell the user then.
[[nodiscard]] std::string_view ResultFileFailureText(Outcome outcome);

}  // namespace ts5
