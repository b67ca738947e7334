#include "audio/synthesizer_config.h"

#include <vector>

#include "platform/base/text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

constexpr std::string_view kInstruments = "eawpats";
constexpr std::size_t kLargestConfig = std::size_t{1} << 20;

std::string_view Unquoted(std::string_view text) {
  if (text.size() >= 2 && text.front() == '"' && text.back() == '"') return text.substr(1, text.size() - 2);
  return text;
}

// What follows a keyword of a line; nothing when the line is of another kind.
std::string_view Argument(std::string_view line, std::string_view keyword) {
  const std::string_view text = Trim(line);
  if (!text.starts_with(keyword) || text.size() <= keyword.size()) return {};
  if (text[keyword.size()] != ' ' && text[keyword.size()] != '\t') return {};
  return Unquoted(Trim(text.substr(keyword.size())));
}

}  // namespace

std::string NewSynthesizerConfig(std::string_view folder) {
  const char separator = folder.find('\\') != std::string_view::npos ? '\\' : '/';
  const std::string name(folder);
  return "dir \"" + name + "\"\ndir \"" + name + separator + std::string(kInstruments) + "\"\n";
}

Outcome EnsureSynthesizerConfig(const std::string& folder) {
  if (folder.empty()) return Outcome::TargetFailed;
  const std::string path = JoinPath(folder, kSynthesizerConfigName);
  if (FileExists(path)) return Outcome::Success;
  if (const Outcome made = MakeDirectories(folder); Failed(made)) return made;
  return WriteFile(path, AsBytes(NewSynthesizerConfig(folder)));
}

std::string ConfiguredSoundFont(const std::string& folder) {
  if (folder.empty()) return {};
  const auto file = ReadFileStart(JoinPath(folder, kSynthesizerConfigName), kLargestConfig);
  if (!file) return {};
  std::vector<std::string> places = {folder};
  std::string found;
  for (const std::string_view line : Split(AsText(*file), '\n')) {
    if (const auto place = Argument(line, "dir"); !place.empty()) places.emplace_back(place);
    const std::string_view font = Argument(line, "soundfont");
    if (font.empty()) continue;
    if (FileExists(std::string(font))) found = font;
    for (const std::string& place : places) {
      if (const std::string path = JoinPath(place, font); FileExists(path)) found = path;
    }
  }
  return found;
}

}  // namespace ts5
