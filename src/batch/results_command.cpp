// "ts5-batch results": what several machines found, put together to what one would have found.
#include <algorithm>
#include <array>
#include <cstdint>
#include <limits>
#include <optional>
#include <string>
#include <unordered_map>
#include <utility>
#include <vector>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "platform/base/text.h"
#include "platform/files/files.h"

namespace ts5::batch {
namespace {

struct PartResult {
  std::string path;
  Json json;
  std::uint64_t number = 1;  // 1..of
  std::uint64_t of = 0;      // 0: the run did not say that it was a part
};

bool IsResult(const Json& json) {
  const auto isArray = [&json](const char* key) { return json.contains(key) && json[key].is_array(); };
  if (!json.is_object() || !json.contains("filter") || !json["filter"].is_string()) return false;
  if (!json.contains("title") || !json["title"].is_string()) return false;
  if (!isArray("lines") || !isArray("remarks") || !isArray("items") || !isArray("hits")) return false;
  const auto all = [](const Json& rows, auto good) { return std::ranges::all_of(rows, good); };
  return all(json["lines"],
             [](const Json& line) {
               return line.is_object() && line.value("label", Json()).is_string() &&
                      line.value("count", Json()).is_number_unsigned();
             }) &&
         all(json["remarks"], [](const Json& remark) { return remark.is_string(); }) &&
         all(json["items"],
             [](const Json& item) {
               return item.is_object() && item.value("source", Json()).is_string() &&
                      item.value("code", Json()).is_number_integer();
             }) &&
         all(json["hits"],
             [](const Json& hit) { return hit.is_object() && hit.value("file", Json()).is_string(); });
}

// Nothing after saying that the file is no result.
std::optional<PartResult> ReadPart(const std::string& path, Console& console) {
  const auto bytes = ReadFile(path);
  Json json;
  if (bytes) json = Json::parse(AsText(*bytes), nullptr, false);
  if (!bytes || !IsResult(json)) {
    PrintError(console, Format(Text(texts::BatchMergeNoResult), path));
    return std::nullopt;
  }
  PartResult part{.path = path, .json = std::move(json)};
  if (part.json.contains("part") && part.json["part"].is_object()) {
    const Json& place = part.json["part"];
    const Json number = place.value("number", Json());
    const Json of = place.value("of", Json());
    if (number.is_number_unsigned() && of.is_number_unsigned()) {
      part.number = number.get<std::uint64_t>();
      part.of = of.get<std::uint64_t>();
    }
  }
  return part;
}

// Whether the parts are those of one run, all of them; says what is wrong. Sorts them by their numbers.
bool BelongTogether(std::vector<PartResult>& parts, Console& console) {
  const PartResult& first = parts.front();
  for (const PartResult& part : parts) {
    if (part.json["filter"] != first.json["filter"]) {
      PrintError(console, Format(Text(texts::BatchMergeOtherFilter), part.path, first.path));
      return false;
    }
    if (part.of != first.of) {
      PrintError(console,
                 Format(Text(texts::BatchMergeOtherParts), part.path, first.path, part.number, part.of));
      return false;
    }
  }
  if (first.of == 0) return true;
  std::ranges::stable_sort(parts, {}, &PartResult::number);
  for (std::size_t i = 0; i < parts.size(); ++i) {
    if (i > 0 && parts[i].number == parts[i - 1].number) {
      PrintError(console, Format(Text(texts::BatchMergePartTwice), parts[i - 1].path, parts[i].path));
      return false;
    }
    if (parts[i].number != i + 1) break;
  }
  for (std::size_t i = 0; i < parts.front().of; ++i) {
    if (i < parts.size() && parts[i].number == i + 1) continue;
    PrintError(console, Format(Text(texts::BatchMergePartMissing), i + 1, parts.front().of));
    return false;
  }
  return true;
}

// The items in the order of the undivided run: one of each part in turn; without parts one file behind the
// other.
Json MergedItems(const std::vector<PartResult>& parts) {
  Json items = Json::array();
  if (parts.front().of == 0) {
    for (const PartResult& part : parts) {
      for (const Json& item : part.json["items"]) items.push_back(item);
    }
    return items;
  }
  std::size_t longest = 0;
  for (const PartResult& part : parts) longest = std::max(longest, part.json["items"].size());
  for (std::size_t row = 0; row < longest; ++row) {
    for (const PartResult& part : parts) {
      if (row < part.json["items"].size()) items.push_back(part.json["items"][row]);
    }
  }
  return items;
}

// Counts of the same label are added, in the order in which the labels come first.
Json MergedLines(const std::vector<PartResult>& parts) {
  Json lines = Json::array();
  for (const PartResult& part : parts) {
    for (const Json& line : part.json["lines"]) {
      const auto same =
          std::ranges::find_if(lines, [&line](const Json& known) { return known["label"] == line["label"]; });
      if (same == lines.end()) {
        lines.push_back(line);
      } else {
        (*same)["count"] = (*same)["count"].get<std::uint64_t>() + line["count"].get<std::uint64_t>();
      }
    }
  }
  return lines;
}

Json MergedRemarks(const std::vector<PartResult>& parts) {
  Json remarks = Json::array();
  for (const PartResult& part : parts) {
    for (const Json& remark : part.json["remarks"]) {
      if (std::ranges::find(remarks, remark) == remarks.end()) remarks.push_back(remark);
    }
  }
  return remarks;
}

// The hits in the order of the items that they are in; those of one file keep theirs.
Json MergedHits(std::vector<PartResult>& parts, const Json& items) {
  std::unordered_map<std::string, std::size_t> places;
  for (std::size_t i = 0; i < items.size(); ++i) places.emplace(items[i]["source"].get<std::string>(), i);
  const auto placeOf = [&places](const Json& hit) {
    const auto place = places.find(hit["file"].get_ref<const std::string&>());
    return place == places.end() ? std::numeric_limits<std::size_t>::max() : place->second;
  };
  std::vector<std::pair<std::size_t, Json>> sorted;
  for (PartResult& part : parts) {
    for (Json& hit : part.json["hits"]) {
      const std::size_t place = placeOf(hit);
      sorted.emplace_back(place, std::move(hit));
    }
  }
  std::ranges::stable_sort(sorted, {}, &std::pair<std::size_t, Json>::first);
  Json hits = Json::array();
  for (auto& [place, hit] : sorted) hits.push_back(std::move(hit));
  return hits;
}

void PrintMerged(const Json& merged, Console& console) {
  console.out << merged["title"].get<std::string>() << '\n';
  std::size_t width = 0;
  for (const Json& line : merged["lines"])
    width = std::max(width, CharacterCount(line["label"].get_ref<const std::string&>()));
  for (const Json& line : merged["lines"])
    console.out << "  " << Padded(line["label"].get<std::string>(), width + 2) << line["count"] << '\n';
  console.out << Text(texts::BatchRemarks) << '\n';
  for (const Json& remark : merged["remarks"]) console.out << "  " << remark.get<std::string>() << '\n';
}

int MergeCommand(CommandLine line, Console& console) {
  bool json = false;
  std::vector<std::string> files;
  Arguments arguments("results merge", texts::BatchMergeSummary, texts::BatchResultsExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  arguments.Rest("DATEI.json", files, texts::BatchHelpMergeFiles, 1);
  if (const auto status = arguments.Read(line, console)) return *status;

  std::vector<PartResult> parts;
  for (const std::string& file : files) {
    if (console.Interrupted()) return kExitCancelled;
    auto part = ReadPart(file, console);
    if (!part) return kExitFailed;
    parts.push_back(*std::move(part));
  }
  if (!BelongTogether(parts, console)) return kExitFailed;

  Json merged;
  merged["filter"] = parts.front().json["filter"];
  merged["title"] = parts.front().json["title"];
  merged["lines"] = MergedLines(parts);
  merged["remarks"] = MergedRemarks(parts);
  merged["items"] = MergedItems(parts);
  merged["hits"] = MergedHits(parts, merged["items"]);
  const bool failed = std::ranges::any_of(
      merged["items"], [](const Json& item) { return item["code"].get<std::int64_t>() < 0; });
  if (json) {
    console.out << JsonText(merged);
  } else {
    PrintMerged(merged, console);
  }
  return failed ? kExitFailed : kExitSuccess;
}

constexpr std::array kCommands{
    Command{"merge", texts::BatchMergeSummary, MergeCommand},
};
constexpr CommandGroup kGroup{"results", kCommands, texts::BatchResultsSummary, texts::BatchResultsExamples};

}  // namespace

int ResultsCommand(CommandLine line, Console& console) {
  return Dispatch(kGroup, line, console);
}

}  // namespace ts5::batch
