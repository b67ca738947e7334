// What the program knows by itself: its filters and the types of files.
#include <algorithm>

#include "batch/arguments.h"
#include "batch/commands.h"
#include "batch/json_text.h"
#include "batch/texts.h"
#include "frame/file_types.h"
#include "frame/filter_catalogue.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"

namespace ts5::batch {
namespace {

// The extensions of all kinds of selection, each once.
std::vector<std::string_view> Extensions(const FilterDescriptor& filter) {
  std::vector<std::string_view> all;
  for (const auto list : {filter.single, filter.several, filter.wholeList}) {
    for (const std::string_view extension : list) {
      if (!extension.empty() && std::ranges::find(all, extension) == all.end()) all.push_back(extension);
    }
  }
  return all;
}

std::string Joined(const std::vector<std::string_view>& words) {
  std::string all;
  for (const std::string_view word : words) all += (all.empty() ? "" : " ") + std::string(word);
  return all;
}

}  // namespace

int FiltersCommand(CommandLine line, Console& console) {
  bool json = false;
  Arguments arguments("filters", texts::BatchFiltersSummary, texts::BatchFiltersExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  if (const auto status = arguments.Read(line, console)) return *status;

  if (json) {
    Json filters = Json::array();
    for (const FilterDescriptor& filter : FilterCatalogue()) {
      Json row;
      row["number"] = static_cast<int>(filter.id);
      row["filter"] = filter.identifier;
      row["name"] = filter.Name();
      row["description"] = filter.Description();
      row["extensions"] = Extensions(filter);
      row["available"] = true;  // every filter of the catalogue has its module
      filters.push_back(std::move(row));
    }
    console.out << JsonText({{"filters", filters}});
    return kExitSuccess;
  }
  std::size_t identifierWidth = 0;
  std::size_t nameWidth = 0;
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    identifierWidth = std::max(identifierWidth, CharacterCount(filter.identifier));
    nameWidth = std::max(nameWidth, CharacterCount(filter.Name()));
  }
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    console.out << Format("%2i ", static_cast<int>(filter.id)) << Padded(Text(texts::BatchFilterHere), 2)
                << Padded(filter.identifier, identifierWidth + 2) << Padded(filter.Name(), nameWidth + 2)
                << Joined(Extensions(filter)) << '\n';
  }
  console.out << '\n' << Text(texts::BatchFiltersEnd) << '\n';
  return kExitSuccess;
}

int TypeCommand(CommandLine line, Console& console) {
  bool json = false;
  std::vector<std::string> names;
  Arguments arguments("type", texts::BatchTypeSummary, texts::BatchTypeExamples);
  arguments.Flag("--json", json, texts::BatchHelpJson);
  arguments.Rest("NAME", names, texts::BatchHelpTypeNames, 1);
  if (const auto status = arguments.Read(line, console)) return *status;

  Json files = Json::array();
  for (const std::string& name : names) {
    const FileTypeId type = FileTypeOf(name);
    const std::string_view icon = FileIconName(type);
    if (json) {
      files.push_back({{"name", name}, {"type", static_cast<int>(type)}, {"icon", icon}});
    } else {
      console.out << Format("%2i  %-12s  ", static_cast<int>(type), icon) << name << '\n';
    }
  }
  if (json) console.out << JsonText({{"files", files}});
  return kExitSuccess;
}

}  // namespace ts5::batch
