#include "audio/interfaces/command_line.h"

#include <optional>

#include "audio/interfaces/encoder_interface.h"

namespace ts5::interfaces {
namespace {

struct Place {
  std::size_t word;
  std::size_t offset;
};

std::optional<Place> Find(const std::vector<std::string>& words, std::string_view placeholder) {
  for (std::size_t word = 0; word < words.size(); ++word) {
    const std::size_t offset = words[word].find(placeholder);
    if (offset != std::string::npos) return Place{word, offset};
  }
  return std::nullopt;
}

std::string WithDirectory(std::string_view name) {
  return name.starts_with('/') ? std::string(name) : "./" + std::string(name);
}

}  // namespace

std::vector<std::string> SplitCommandLine(std::string_view line) {
  std::vector<std::string> words;
  std::optional<std::string> word;
  bool quoted = false;
  for (const char c : line) {
    if (c == '"') {
      quoted = !quoted;
      if (!word) word.emplace();
    } else if (!quoted && (c == ' ' || c == '\t')) {
      if (word) words.push_back(*std::exchange(word, std::nullopt));
    } else {
      if (!word) word.emplace();
      word->push_back(c);
    }
  }
  if (word) words.push_back(*std::move(word));
  return words;
}

Result<std::vector<std::string>> EncoderArguments(std::string_view parameters, std::string_view source,
                                                  std::string_view target) {
  std::vector<std::string> words = SplitCommandLine(parameters);
  const auto sourcePlace = Find(words, kSourcePlaceholder);
  const auto targetPlace = Find(words, kTargetPlaceholder);
  if (!sourcePlace || !targetPlace) return Failure(Outcome::InvalidParameter);
  const auto fill = [&words](const Place& place, std::size_t length, std::string_view name) {
    words[place.word].replace(place.offset, length, WithDirectory(name));
  };
  // Both places are those of the template: where they share a word, the one behind is filled first.
  const bool sourceFirst =
      sourcePlace->word == targetPlace->word && sourcePlace->offset > targetPlace->offset;
  if (sourceFirst) fill(*sourcePlace, kSourcePlaceholder.size(), source);
  fill(*targetPlace, kTargetPlaceholder.size(), target);
  if (!sourceFirst) fill(*sourcePlace, kSourcePlaceholder.size(), source);
  return words;
}

}  // namespace ts5::interfaces
