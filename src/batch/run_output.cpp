#include "batch/run_output.h"

#include <algorithm>

#include "batch/console.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/remarks.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5::batch {

namespace {

Json HitJson(const SearchHit& hit, const OutputOptions& options) {
  return {{"file", hit.file},
          {"track", hit.track},
          {"voice", hit.voice},
          {"bar", hit.bar},
          {"time", hit.time},
          {"firstSystem", hit.firstSystem},
          {"lastSystem", hit.lastSystem},
          {"firstObject", hit.firstObject},
          {"lastObject", hit.lastObject},
          {"melody", MelodyOf(hit, options)}};
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
  const auto lines = Lines(result);
  for (const RunLine& line : lines) width = std::max(width, CharacterCount(line.label));
  std::string text = std::string(TitleText(result)) + "\n";
  for (const RunLine& line : lines) {
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

std::string MelodyOf(const SearchHit& hit, const OutputOptions& options) {
  const auto number = static_cast<std::size_t>(hit.melody);
  return number < options.melodies.size() ? options.melodies[number] : std::string{};
}

void WriteResultJson(const RunResult& result, const SearchResults& hits, const OutputOptions& options,
                     std::ostream& out) {
  Json json;
  json["filter"] = IsFilter(result.filter) ? std::string(Descriptor(result.filter).identifier) : "";
  json["title"] = TitleText(result);
  if (options.share) json["part"] = {{"number", options.share->part}, {"of", options.share->parts}};
  json["lines"] = Json::array();
  for (const RunLine& line : Lines(result)) {
    if (!line.label.empty()) json["lines"].push_back({{"label", line.label}, {"count", line.count}});
  }
  json["remarks"] = result.remarks;
  json["items"] = Json::array();
  for (const RunItem& item : result.items) {
    Json& row = json["items"].emplace_back(
        Json{{"source", item.source}, {"destination", item.destination}, {"code", item.code}});
    if (!item.losses) continue;
    row["losses"] = Json::array();
    for (const ItemLoss& loss : *item.losses) {
      row["losses"].push_back(
          {{"kind", loss.kind}, {"bar", loss.bar}, {"staff", loss.staff}, {"count", loss.count}});
    }
  }
  // The object without its closing bracket, and the hits behind it.
  std::string text = JsonText(json);
  text.erase(text.rfind("\n}"));
  out << text << ",\n  \"hits\": [";
  for (std::size_t i = 0; i < hits.Size(); ++i) {
    out << (i == 0 ? "\n    " : ",\n    ") << Indented(HitJson(hits.Hit(i), options), "    ");
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

int ExitStatusOf(const RunResult& result) {
  if (result.cancelled) return kExitCancelled;
  return FailureCount(result) > 0 ? kExitFailed : kExitSuccess;
}

}  // namespace ts5::batch
