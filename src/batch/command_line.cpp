#include "batch/command_line.h"

#include <algorithm>
#include <array>
#include <charconv>

#include "batch/console.h"
#include "batch/texts.h"
#include "platform/base/strings.h"
#include "platform/base/text.h"

namespace ts5::batch {

std::optional<Setting> ParseSetting(std::string_view text) {
  const std::size_t equals = text.find('=');
  if (equals == std::string_view::npos) return std::nullopt;
  const std::string_view name = Trim(text.substr(0, equals));
  if (name.empty()) return std::nullopt;
  return Setting{name, text.substr(equals + 1)};
}

std::optional<RunShare> ParseShare(std::string_view text) {
  constexpr std::int64_t kMostParts = 1'000'000;
  const auto words = Split(text, '/');
  if (words.size() != 2) return std::nullopt;
  const auto part = ParseInteger(words[0]);
  const auto parts = ParseInteger(words[1]);
  if (!part || !parts || *part < 1 || *part > *parts || *parts > kMostParts) return std::nullopt;
  return RunShare{static_cast<std::uint32_t>(*part), static_cast<std::uint32_t>(*parts)};
}

std::optional<OverwritePolicy> ParseOverwrite(std::string_view text) {
  struct Row {
    std::string_view word;
    OverwritePolicy policy;
  };
  constexpr std::array rows{Row{"yes", OverwritePolicy::Replace}, Row{"number", OverwritePolicy::Number},
                            Row{"ask", OverwritePolicy::Ask}};
  for (const Row& row : rows) {
    if (EqualsIgnoringCase(text, row.word)) return row.policy;
  }
  return std::nullopt;
}

std::optional<std::string> ApplySettings(std::span<const ParameterField> fields, FilterParameters& parameters,
                                         std::span<const std::string> settings) {
  for (const std::string& text : settings) {
    const auto setting = ParseSetting(text);
    if (!setting) return Format(Text(texts::BatchSettingShape), Shortened(text));
    const auto field = std::ranges::find_if(
        fields, [&](const ParameterField& row) { return EqualsIgnoringCase(row.name, setting->name); });
    if (field == fields.end()) {
      std::string names;
      for (const ParameterField& row : fields) names += (names.empty() ? "" : ", ") + row.name;
      if (names.empty()) return std::string(Text(texts::BatchNoParameters));
      return Format(Text(texts::BatchParameterUnknown), Shortened(setting->name), names);
    }
    if (!field->set(parameters, setting->value)) {
      return Format(Text(texts::BatchValueWrong), Shortened(setting->value), field->name, field->description);
    }
  }
  return std::nullopt;
}

std::optional<std::string> ParseHexBytes(std::string_view text) {
  std::string bytes;
  for (std::size_t i = 0; i < text.size();) {
    if (text[i] == ' ' || text[i] == ',') {
      ++i;
      continue;
    }
    if (i + 2 > text.size()) return std::nullopt;
    unsigned value = 0;
    const char* const end = text.data() + i + 2;
    const auto [stop, fault] = std::from_chars(text.data() + i, end, value, 16);
    if (fault != std::errc() || stop != end) return std::nullopt;
    bytes.push_back(static_cast<char>(value));
    i += 2;
  }
  return bytes;
}

bool MeansYes(std::string_view reply) {
  constexpr std::array words{"j", "ja", "y", "yes"};
  const std::string_view word = Trim(reply);
  return std::ranges::any_of(words, [&](std::string_view yes) { return EqualsIgnoringCase(word, yes); });
}

}  // namespace ts5::batch
