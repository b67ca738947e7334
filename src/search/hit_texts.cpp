#include "search/hit_texts.h"

#include <algorithm>

#include "platform/base/casts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "search/texts.h"

namespace ts5 {
namespace {

constexpr std::string_view kLineEnd = "\r\n";
constexpr std::string_view kTagLine =
    "===========================================================================sts5=\r\n";
constexpr std::string_view kDoubleRule =
    "================================================================================\r\n";
constexpr std::string_view kRule =
    "--------------------------------------------------------------------------------\r\n";
constexpr std::size_t kLongExtension = 7;  // with its dot; so long a one is cut with the name

std::int32_t Minutes(const SearchHit& hit) {
  return hit.time / 1000 / 60;
}
std::int32_t Seconds(const SearchHit& hit) {
  return hit.time / 1000 % 60;
}
// What people see of an index; hits of damaged numbers stay in range.
std::int64_t Ordinal(std::int32_t index) {
  return std::int64_t{index} + 1;
}

std::string ShownPath(const SearchHit& hit, bool wholePath) {
  return wholePath ? hit.file : std::string(FileNameOf(hit.file));
}

std::string ShortenedName(const std::string& path) {
  const std::size_t separator = path.find_last_of("/\\");
  const std::size_t name = separator == std::string::npos ? 0 : separator + 1;
  const std::size_t dot = path.rfind('.');
  std::string extension;
  if (dot != std::string::npos && dot >= name && path.size() - dot < kLongExtension)
    extension = path.substr(dot);
  return path.substr(0, kMaxShortPath - 1 - extension.size()) + "~" + extension;
}

// A path as it stands in a line of text: characters that would break the line are replaced.
std::string LinePath(const std::string& path) {
  std::string text = Windows1252FromUtf8(path);
  std::ranges::replace_if(
      text, [](char c) { return static_cast<unsigned char>(c) < 0x20; }, '?');
  return text;
}

TextId EndingText(SearchEnd ending) {
  switch (ending) {
    case SearchEnd::Cancelled:
      return texts::ResultEndCancelled;
    case SearchEnd::Failed:
      return texts::ResultEndFailed;
    case SearchEnd::Finished:
      break;
  }
  return texts::ResultEndSucceeded;
}

}  // namespace

std::array<std::string_view, 4> HitColumnTitles(SearchKind kind) {
  const bool midi = kind == SearchKind::Midi;
  return {Text(texts::ColumnFile), Text(midi ? texts::ColumnTrack : texts::ColumnStaffVoice),
          Text(texts::ColumnBar), Text(midi ? texts::ColumnTime : texts::ColumnBeat)};
}

HitRow HitColumns(SearchKind kind, const SearchHit& hit, bool wholePath) {
  const std::string bar = std::to_string(Ordinal(hit.bar));
  if (kind == SearchKind::Midi) {
    return {ShownPath(hit, wholePath), std::to_string(Ordinal(hit.track)), bar,
            Format("%02i:%02i", Minutes(hit), Seconds(hit))};
  }
  return {ShownPath(hit, wholePath), Format("%i/%i", Ordinal(hit.track), Ordinal(hit.voice)), bar,
          std::to_string(Ordinal(hit.time))};
}

HitRow PrintedHit(SearchKind kind, const SearchHit& hit, bool wholePath) {
  const std::string bar = Format(Text(texts::PrintBar), Ordinal(hit.bar));
  if (kind == SearchKind::Midi) {
    return {ShownPath(hit, wholePath), Format(Text(texts::PrintTrack), Ordinal(hit.track)), bar,
            Format(Text(texts::PrintTime), Minutes(hit), Seconds(hit))};
  }
  return {ShownPath(hit, wholePath),
          Format(Text(texts::PrintStaffVoice), Ordinal(hit.track), Ordinal(hit.voice)), bar,
          Format(Text(texts::PrintBeat), Ordinal(hit.time))};
}

std::string ShortenedPath(std::string path) {
  std::size_t from = 0;
  while (path.size() > kMaxShortPath) {
    const std::size_t first = path.find_first_of("/\\", from);
    const std::size_t second = first == std::string::npos ? first : path.find_first_of("/\\", first + 1);
    if (second == std::string::npos) return ShortenedName(path);
    from = second;
    if (second > first + 1) {
      path.replace(first + 1, second - first - 1, "...");
      from = first + 4;
    }
  }
  return path;
}

std::string HitLine(SearchKind kind, const SearchHit& hit) {
  // Back in UTF-8 every character of the code page is one of width 1, so that the format pads it right.
  const std::string file = Utf8FromWindows1252(ShortenedPath(LinePath(hit.file)));
  const std::string line = kind == SearchKind::Midi
                               ? Format(Text(texts::HitLineMidi), file, Ordinal(hit.track), Ordinal(hit.bar),
                                        Minutes(hit), Seconds(hit))
                               : Format(Text(texts::HitLineScore), file, Ordinal(hit.track),
                                        Ordinal(hit.voice), Ordinal(hit.bar), Ordinal(hit.time));
  return Windows1252FromUtf8(line);
}

std::string ResultTitle(const SearchRecord& record) {
  const std::string_view name = record.melodyName.empty() ? Text(texts::MelodyUnknown) : record.melodyName;
  return Format(Text(texts::ResultTitle), name);
}

std::string ResultDate(const SearchRecord& record) {
  const CivilTime& t = record.start;
  return Format(Text(texts::ResultDate), t.day, t.month, t.year, t.hour, t.minute, t.second);
}

std::string ResultEnding(const SearchRecord& record) {
  const CivilTime& t = record.end;
  return Format(Text(EndingText(record.ending)), t.hour, t.minute, t.second);
}

std::array<std::string, 3> ResultCounts(const SearchRecord& record) {
  const SearchStatistics& counts = record.statistics;
  return {Format(Text(texts::ResultSearched), std::uint64_t{counts.searched} + counts.unsuitable),
          Format(Text(texts::ResultUnsuitable), counts.unsuitable),
          Format(Text(texts::ResultFound), counts.hits)};
}

std::string_view ResultTagLine() {
  return kTagLine;
}

std::string ResultHeader(const SearchRecord& record) {
  std::string text(kTagLine);
  text.append(ResultTitle(record)).append(kLineEnd).append(kDoubleRule);
  return text.append(ResultDate(record)).append(kLineEnd).append(kRule);
}

std::string ResultFooter(const SearchRecord& record) {
  const std::string_view label = Text(texts::ResultStatistics);
  std::string text(kRule);
  text.append(ResultEnding(record)).append(kLineEnd).append(kRule);
  std::string indent(label);
  for (const std::string& count : ResultCounts(record)) {
    text.append(indent).append(count).append(kLineEnd);
    indent.assign(label.size(), ' ');
  }
  return text.append(kDoubleRule);
}

}  // namespace ts5
