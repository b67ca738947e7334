#include "batch/melody_options.h"

#include <iterator>
#include <utility>
#include <vector>

#include "batch/texts.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "search/melody_store.h"
#include "search/melody_text.h"
#include "search/search_parameters.h"

namespace ts5::batch {
namespace {

Result<SearchMelody> StoredMelodyOf(const std::string& name, Registry& registry) {
  auto elements = MelodyStore(registry).LoadMelody(name);
  if (!elements) return Failure(elements.error());
  SearchMelody melody;
  ReplaceMelody(melody, std::move(*elements), name);
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

std::vector<std::string> MelodyOptions::Names() const {
  std::vector<std::string> names = numbers;
  names.insert(names.end(), keys.begin(), keys.end());
  names.insert(names.end(), stored.begin(), stored.end());
  return names;
}

void AddMelodyOptions(Arguments& arguments, MelodyOptions& options) {
  arguments.Repeated("--melody", "60:240,r:120,...", options.numbers, texts::BatchHelpMelody);
  arguments.Repeated("--melody-name", "NAME", options.stored, texts::BatchHelpMelodyName);
  arguments.Repeated("--keys", "TASTEN", options.keys, texts::BatchHelpKeys);
}

std::optional<std::string> TakeMelody(const MelodyOptions& options, Registry& registry, Job& job) {
  if (options.numbers.empty() && options.stored.empty() && options.keys.empty()) return std::nullopt;
  auto* const parameters = job.parameters.If<SearchParameters>();
  if (parameters == nullptr) return std::string(Text(texts::BatchMelodyForSearch));
  std::vector<SearchMelody> melodies;
  std::optional<std::string> fault;
  const auto take = [&](Result<SearchMelody> melody, const std::string& text, const auto& message) {
    if (!melody) {
      if (!fault) fault = message();
      return;
    }
    if (melody->name.empty()) melody->name = FirstCharacters(text, kMaxMelodyNameCharacters);
    melodies.push_back(*std::move(melody));
  };
  const auto wrong = [](const std::string& text) {
    return [&text] { return Format(Text(texts::BatchMelodyWrong), text); };
  };
  for (const std::string& text : options.numbers) take(MelodyFromNumbers(text), text, wrong(text));
  for (const std::string& text : options.keys) take(MelodyFromKeys(text), text, wrong(text));
  for (const std::string& name : options.stored) {
    take(StoredMelodyOf(name, registry), name,
         [&] { return Format(Text(texts::BatchMelodyUnknown), name, StoredNames(registry)); });
  }
  if (fault) return fault;
  parameters->melody = std::move(melodies.front());
  parameters->more.assign(std::make_move_iterator(melodies.begin() + 1),
                          std::make_move_iterator(melodies.end()));
  // The only one keeps to its own name, as results have always said it.
  if (parameters->more.empty() && options.stored.empty()) parameters->melody.name.clear();
  return std::nullopt;
}

}  // namespace ts5::batch
