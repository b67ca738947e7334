#include "search/melody_text.h"

#include <array>
#include <limits>
#include <optional>
#include <utility>

#include "platform/base/text.h"
#include "search/note_editor.h"

namespace ts5 {
namespace {

constexpr std::array<std::pair<std::string_view, EditorKey>, 11> kKeyNames = {{
    {"F2", EditorKey::F2},
    {"F3", EditorKey::F3},
    {"F4", EditorKey::F4},
    {"F7", EditorKey::F7},
    {"F8", EditorKey::F8},
    {"Pos1", EditorKey::Home},
    {"Ende", EditorKey::End},
    {"Links", EditorKey::Left},
    {"Rechts", EditorKey::Right},
    {"Entf", EditorKey::Delete},
    {"Rück", EditorKey::Backspace},
}};

std::optional<NoteCommand> CommandOfName(std::string_view name) {
  for (const auto& [known, key] : kKeyNames) {
    if (EqualsIgnoringCase(known, name)) return CommandOfKey(key);
  }
  return std::nullopt;
}

std::optional<MelodyElement> ElementFromNumbers(std::string_view text) {
  const auto parts = Split(text, ':');
  if (parts.size() != 2) return std::nullopt;
  const std::string_view pitch = Trim(parts[0]);
  const bool rest = pitch == "r" || pitch == "R";
  const auto key = rest ? std::optional<std::int64_t>(kRestCode) : ParseInteger(pitch);
  const auto duration = ParseInteger(Trim(parts[1]));
  if (!key || !duration || (!rest && (*key < 0 || *key > 127))) return std::nullopt;
  if (*duration < 1 || *duration > std::numeric_limits<std::int16_t>::max()) return std::nullopt;
  return MelodyElement{static_cast<std::int16_t>(*key), static_cast<std::int16_t>(*duration)};
}

Result<SearchMelody> Finished(SearchMelody melody) {
  TrimMelodyRests(melody);
  if (melody.elements.empty()) return Failure(Outcome::WrongFormat);
  return melody;
}

}  // namespace

Result<SearchMelody> MelodyFromNumbers(std::string_view text) {
  SearchMelody melody;
  for (const std::string_view part : Split(text, ',')) {
    const auto element = ElementFromNumbers(part);
    if (!element || melody.elements.size() == kMaxMelodyElements) return Failure(Outcome::WrongFormat);
    melody.elements.push_back(*element);
  }
  melody.cursor = melody.elements.size();
  return Finished(std::move(melody));
}

Result<SearchMelody> MelodyFromKeys(std::string_view text) {
  SearchMelody melody;
  NoteEditor editor(melody);
  while (!text.empty()) {
    std::optional<NoteCommand> command;
    if (text.front() == '<') {
      const std::size_t end = text.find('>');
      if (end == std::string_view::npos) return Failure(Outcome::WrongFormat);
      command = CommandOfName(text.substr(1, end - 1));
      text.remove_prefix(end + 1);
    } else {
      command = CommandOfCharacter(text.front());
      text.remove_prefix(1);
    }
    if (!command || editor.Execute(*command).message) return Failure(Outcome::WrongFormat);
  }
  return Finished(std::move(melody));
}

}  // namespace ts5
