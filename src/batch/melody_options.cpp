#include "batch/melody_options.h"

#include <vector>

#include "batch/texts.h"
#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "platform/text.h"
#include "search/melody_store.h"
#include "search/melody_text.h"
#include "search/search_parameters.h"

namespace ts5::batch {
namespace {

Result<SearchMelody> ReadMelody(const MelodyOptions& options, Registry& registry) {
  if (options.numbers) return MelodyFromNumbers(*options.numbers);
  if (options.keys) return MelodyFromKeys(*options.keys);
  auto elements = MelodyStore(registry).LoadMelody(*options.stored);
  if (!elements) return Failure(elements.error());
  SearchMelody melody;
  ReplaceMelody(melody, std::move(*elements), *options.stored);
  return melody;
}

std::string StoredNames(Registry& registry) {
  std::string names;
  const auto stored = MelodyStore(registry).ListStoredMelodies();
  for (const StoredMelodyInfo& melody : stored.value_or(std::vector<StoredMelodyInfo>())) {
    names += (names.empty() ? "\"" : ", \"") + melody.name + "\"";
  }
  return names.empty() ? std::string(Text(texts::NoRemarks)) : names;
}

}  // namespace

void AddMelodyOptions(Arguments& arguments, MelodyOptions& options) {
  arguments.Option("--melody", "60:240,r:120,...", options.numbers, texts::BatchHelpMelody);
  arguments.Option("--melody-name", "NAME", options.stored, texts::BatchHelpMelodyName);
  arguments.Option("--keys", "TASTEN", options.keys, texts::BatchHelpKeys);
}

std::optional<std::string> TakeMelody(const MelodyOptions& options, Registry& registry, Job& job) {
  if (options.Count() == 0) return std::nullopt;
  if (!IsSearch(job.filter)) return std::string(Text(texts::BatchMelodyForSearch));
  if (options.Count() > 1) return std::string(Text(texts::BatchMelodyTwice));
  auto melody = ReadMelody(options, registry);
  if (!melody) {
    if (options.stored)
      return Format(Text(texts::BatchMelodyUnknown), *options.stored, StoredNames(registry));
    return Format(Text(texts::BatchMelodyWrong), options.numbers ? *options.numbers : *options.keys);
  }
  static_cast<SearchParameters&>(*job.parameters).melody = std::move(*melody);
  return std::nullopt;
}

}  // namespace ts5::batch
