#include "frame/run_report.h"

#include <numeric>

#include "frame/texts.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kUtf8Mark = "\xEF\xBB\xBF";
constexpr std::string_view kLineEnd = "\r\n";

std::string OnOneLine(std::string text) {
  for (char& character : text) {
    if (static_cast<unsigned char>(character) < ' ') character = ' ';
  }
  return text;
}

std::string Line(const ReportRow& row, std::string_view end) {
  std::string line;
  for (const std::string& cell : row) line.append(line.empty() ? "" : "\t").append(OnOneLine(cell));
  return line.append(end);
}

}  // namespace

std::string_view ReportTitle(ReportColumn column) {
  constexpr std::array kTitles = {texts::ReportFile, texts::ReportOutcome, texts::ReportReason,
                                  texts::ReportDirectory};
  return Text(kTitles.at(static_cast<std::size_t>(column)));
}

ReportRow RowOf(const RunItem& item) {
  const std::string& path = item.source.empty() ? item.destination : item.source;
  return {std::string(FileNameOf(path)), std::string(EndText(EndOf(item))), ReasonText(item),
          std::string(DirectoryOf(path))};
}

std::string ReportLines(const RunResult& result, std::span<const std::size_t> items) {
  std::string text;
  for (const std::size_t item : items) text += Line(RowOf(result.items[item]), "\n");
  return text;
}

std::string ReportText(const RunResult& result) {
  std::string text(kUtf8Mark);
  text.append(TitleText(result)).append(kLineEnd).append(kLineEnd);
  for (const RunLine& line : Lines(result)) {
    if (!line.label.empty())
      text.append(line.label).append("\t").append(std::to_string(line.count)).append(kLineEnd);
  }
  text.append(kLineEnd).append(Text(texts::ReportRemarks)).append(kLineEnd);
  text.append(RemarksText(result)).append(kLineEnd).append(kLineEnd);
  ReportRow titles;
  for (std::size_t i = 0; i < titles.size(); ++i) titles.at(i) = ReportTitle(static_cast<ReportColumn>(i));
  text += Line(titles, kLineEnd);
  for (const RunItem& item : result.items) text += Line(RowOf(item), kLineEnd);
  return text;
}

std::vector<std::string> FailedSources(const RunResult& result) {
  std::vector<std::string> failed;
  for (const RunItem& item : result.items) {
    if (EndOf(item) == ItemEnd::Failed && !item.source.empty()) failed.push_back(item.source);
  }
  return failed;
}

}  // namespace ts5
