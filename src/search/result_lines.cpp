#include "search/result_lines.h"

#include <algorithm>
#include <cstring>
#include <memory>
#include <new>
#include <string_view>
#include <utility>
#include <vector>

#include "frame/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/input_file.h"
#include "search/hit_texts.h"
#include "search/texts.h"

namespace ts5 {
namespace {

// A whole file and where its lines begin.
struct FileText {
  Bytes bytes;
  std::vector<std::uint32_t> starts;  // and the end of the file behind them

  [[nodiscard]] std::string_view Line(std::size_t index) const {
    std::string_view line = AsText(bytes).substr(starts[index], starts[index + 1] - starts[index]);
    for (const char end : {'\n', '\r'}) {
      if (!line.empty() && line.back() == end) line.remove_suffix(1);
    }
    return line.substr(0, kMaxLineLength);
  }
};
static_assert(kMaxResultFile <= UINT32_MAX);

bool FindLines(FileText& text) {
  const std::uint8_t* const begin = text.bytes.data();
  const std::uint8_t* const end = begin + text.bytes.size();
  for (const std::uint8_t* at = begin; at != end;) {
    if (text.starts.size() == kMaxResultLines) return false;
    text.starts.push_back(static_cast<std::uint32_t>(at - begin));
    const void* const feed = std::memchr(at, '\n', static_cast<std::size_t>(end - at));
    at = feed == nullptr ? end : static_cast<const std::uint8_t*>(feed) + 1;
  }
  text.starts.push_back(static_cast<std::uint32_t>(text.bytes.size()));
  return true;
}

std::vector<std::string> SplitLines(const std::string& text) {
  std::vector<std::string> lines;
  for (const std::string_view line : Split(text, '\n')) lines.emplace_back(line.substr(0, line.find('\r')));
  if (!lines.empty() && lines.back().empty()) lines.pop_back();
  return lines;
}

std::size_t LongestOf(const std::vector<std::string>& lines) {
  std::size_t longest = 0;
  for (const std::string& line : lines) longest = std::max(longest, line.size());
  return longest;
}

}  // namespace

std::string ResultLines::Text(std::size_t first, std::size_t number) const {
  std::string text;
  for (std::size_t i = first; i < first + number; ++i) text.append(line(i)).append("\n");
  return text;
}

ResultLines LinesOf(const SearchResults& results) {
  constexpr std::size_t kUsualHitLine = 84;
  std::vector<std::string> head = SplitLines(ResultHeader(results.Record()));
  std::vector<std::string> foot = SplitLines(ResultFooter(results.Record()));
  ResultLines lines;
  lines.count = head.size() + results.Size() + foot.size();
  lines.longest = std::max({LongestOf(head), LongestOf(foot), kUsualHitLine});
  lines.line = [&results, head = std::move(head), foot = std::move(foot)](std::size_t index) {
    if (index < head.size()) return head[index];
    index -= head.size();
    if (index >= results.Size()) return foot[index - results.Size()];
    const std::string line = HitLine(results.Record().kind, results.Hit(index));
    return Utf8FromWindows1252(std::string_view(line).substr(0, line.find('\r')));
  };
  return lines;
}

Result<ResultLines> LoadResultFile(const std::string& path, const std::function<bool()>& stopped) {
  const auto file = InputFile::Open(path);
  if (!file) return Failure(file.error());
  const std::string_view tag = ResultTagLine();
  Bytes start(tag.size());
  const auto got = file->ReadAt(0, start);
  if (!got) return Failure(got.error());
  if (*got < start.size() || AsText(start) != tag) return Failure(Outcome::WrongFormat);
  auto bytes = file->ReadAll(kMaxResultFile, stopped);
  if (!bytes) return Failure(bytes.error());
  try {
    const auto text = std::make_shared<FileText>();
    text->bytes = std::move(*bytes);
    if (!FindLines(*text)) return Failure(Outcome::OutOfMemory);
    ResultLines lines;
    lines.count = text->starts.size() - 1;
    for (std::size_t i = 0; i < lines.count; ++i)
      lines.longest = std::max(lines.longest, text->Line(i).size());
    lines.line = [text](std::size_t index) { return Utf8FromWindows1252(text->Line(index)); };
    return lines;
  } catch (const std::bad_alloc&) {
    return Failure(Outcome::OutOfMemory);
  }
}

std::string_view ResultFileFailureText(Outcome outcome) {
  switch (outcome) {
    case Outcome::WrongFormat:
      return Text(texts::NotAResultFile);
    case Outcome::SourceFailed:
      return Text(texts::RemarkSourceFailed);
    case Outcome::OutOfMemory:
      return Text(texts::RemarkOutOfMemory);
    default:
      return Text(texts::RemarkReadFailed);
  }
}

}  // namespace ts5
