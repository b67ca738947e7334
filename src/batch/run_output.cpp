#include "batch/run_output.h"

#include <algorithm>

#include "batch/console.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/remarks.h"
#include "platform/strings.h"
#include "platform/text.h"

namespace ts5::batch {

namespace {

Json HitJson(const SearchHit& hit) {
  return {{"file", hit.file},
          {"track", hit.track},
          {"voice", hit.voice},
          {"bar", hit.bar},
          {"time", hit.time},
          {"firstSystem", hit.firstSystem},
          {"lastSystem", hit.lastSystem},
          {"firstObject", hit.firstObject},
          {"lastObject", hit.lastObject}};
}

// Without the line end behind it, all lines but the first one moved to the right.
std::string Indented(const Json& json, std::string_view indent) {
  std::string indented;
  const std::string text = JsonText(json);
  for (const std::string_view line : Split(Trim(text), '\n')) {
    if (!indented.empty()) indented.append("\n").append(indent);
    indented.append(line);
  }
  return indented;
}

}  // namespace

std::string ResultText(const RunResult& result) {
  std::size_t width = 0;
  for (const RunLine& line : result.lines) width = std::max(width, CharacterCount(line.label));
  std::string text = result.title + "\n";
  for (const RunLine& line : result.lines) {
    if (line.label.empty()) continue;
    const std::string count = std::to_string(line.count);
    text += "  " + Padded(line.label, width + 2) + std::string(count.size() < 6 ? 6 - count.size() : 0, ' ') +
            count + "\n";
  }
  text += std::string(Text(texts::BatchRemarks)) + "\n";
  const std::string remarks = RemarksText(result);
  for (const std::string_view line : Split(remarks, '\n')) text += "  " + std::string(Trim(line)) + "\n";
  return text;
}

void WriteResultJson(const RunResult& result, const SearchResults& hits, std::ostream& out) {
  Json json;
  json["filter"] = IsFilter(result.filter) ? std::string(Descriptor(result.filter).identifier) : "";
  json["title"] = result.title;
  json["lines"] = Json::array();
  for (const RunLine& line : result.lines) {
    if (!line.label.empty()) json["lines"].push_back({{"label", line.label}, {"count", line.count}});
  }
  json["remarks"] = result.remarks;
  json["items"] = Json::array();
  for (const RunItem& item : result.items) {
    json["items"].push_back(
        {{"source", item.source}, {"destination", item.destination}, {"code", item.code}});
  }
  // The object without its closing bracket, and the hits behind it.
  std::string text = JsonText(json);
  text.erase(text.rfind("\n}"));
  out << text << ",\n  \"hits\": [";
  for (std::size_t i = 0; i < hits.Size(); ++i) {
    out << (i == 0 ? "\n    " : ",\n    ") << Indented(HitJson(hits.Hit(i)), "    ");
  }
  out << (hits.Size() == 0 ? "]\n}\n" : "\n  ]\n}\n");
}

std::string HitText(SearchKind kind, const SearchHit& hit) {
  const auto ordinal = [](std::int32_t index) { return std::int64_t{index} + 1; };
  if (kind == SearchKind::Score) {
    return Format(Text(texts::BatchHitScore), hit.file, ordinal(hit.track), ordinal(hit.voice),
                  ordinal(hit.bar), ordinal(hit.time));
  }
  const std::int32_t seconds = hit.time / 1000;
  return Format(Text(texts::BatchHitMidi), hit.file, ordinal(hit.track), ordinal(hit.bar), seconds / 60,
                seconds % 60);
}

std::string ItemRemark(const RunItem& item, std::span<const Remark> table) {
  if (item.code >= 0) return "";
  const auto lines = RemarkLines(table, Status{.code = item.code, .number = item.code});
  return lines.empty() ? Format(Text(texts::BatchItemCode), item.code) : lines.front();
}

int ExitStatusOf(const RunResult& result) {
  if (result.cancelled) return kExitCancelled;
  return FailureCount(result) > 0 ? kExitFailed : kExitSuccess;
}

}  // namespace ts5::batch
