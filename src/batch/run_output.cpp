#include "batch/run_output.h"

#include <algorithm>

#include "audio/audio_remarks.h"
#include "batch/console.h"
#include "batch/json_text.h"
#include "frame/file_types.h"
#include "frame/filter_catalogue.h"
#include "frame/remarks.h"
#include "platform/strings.h"
#include "platform/text.h"

namespace ts5::batch {

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
  text += std::string(Text(TextId::BatchRemarks)) + "\n";
  const std::string remarks = RemarksText(result);
  for (const std::string_view line : Split(remarks, '\n')) text += "  " + std::string(Trim(line)) + "\n";
  return text;
}

std::string ResultJson(const RunResult& result, std::span<const SearchHit> hits) {
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
  json["hits"] = Json::array();
  for (const SearchHit& hit : hits) {
    json["hits"].push_back({{"file", hit.file},
                            {"track", hit.track},
                            {"voice", hit.voice},
                            {"bar", hit.bar},
                            {"time", hit.time},
                            {"firstSystem", hit.firstSystem},
                            {"lastSystem", hit.lastSystem},
                            {"firstObject", hit.firstObject},
                            {"lastObject", hit.lastObject}});
  }
  return JsonText(json);
}

std::string HitText(const SearchHit& hit) {
  const FileTypeId type = FileTypeOf(hit.file);
  if (type == FileTypeId::Score || type == FileTypeId::StvXml || type == FileTypeId::Xml) {
    return Format(Text(TextId::BatchHitScore), hit.file, hit.track + 1, hit.voice + 1, hit.bar + 1,
                  hit.time + 1);
  }
  const std::int32_t seconds = hit.time / 1000;
  return Format(Text(TextId::BatchHitMidi), hit.file, hit.track + 1, hit.bar + 1, seconds / 60, seconds % 60);
}

std::string ItemRemark(const RunItem& item) {
  if (item.code >= 0) return "";
  auto lines = RemarkLines(ConversionRemarks(), Status{.code = item.code});
  if (lines.empty()) lines = RemarkLines(AudioRemarks(), Status{.code = item.code});
  return lines.empty() ? Format(Text(TextId::BatchItemCode), item.code) : lines.front();
}

int ExitStatusOf(const RunResult& result) {
  if (result.cancelled) return kExitCancelled;
  return FailureCount(result) > 0 ? kExitFailed : kExitSuccess;
}

}  // namespace ts5::batch
