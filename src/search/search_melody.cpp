#include "search/search_melody.h"

#include <algorithm>
#include <utility>

namespace ts5 {
namespace {

constexpr int kAccidentalStep = 1000;
constexpr int kBassMark = 10000;

// The code without the clef mark; the sign stays.
int Unmarked(std::int16_t pitch) {
  return pitch % kBassMark;
}

bool IsSharp(int code) {
  return code >= kAccidentalStep && code <= kAccidentalStep + 127;
}
bool IsFlat(int code) {
  return IsSharp(-code);
}

// The mark belongs to the first element alone, and only to a note.
void MarkClef(SearchMelody& melody) {
  for (MelodyElement& element : melody.elements) {
    if (!IsRest(element) && HasBassMark(element.pitch))
      element.pitch = static_cast<std::int16_t>(Unmarked(element.pitch));
  }
  if (melody.clef != Clef::Bass || melody.elements.empty() || IsRest(melody.elements.front())) return;
  std::int16_t& first = melody.elements.front().pitch;
  first = static_cast<std::int16_t>(first >= 0 ? first + kBassMark : first - kBassMark);
}

}  // namespace

std::int16_t PitchCode(int key, Accidental accidental) {
  switch (accidental) {
    case Accidental::Sharp:
      return static_cast<std::int16_t>(kAccidentalStep + key);
    case Accidental::Flat:
      return static_cast<std::int16_t>(-(kAccidentalStep + key));
    case Accidental::None:
      break;
  }
  return static_cast<std::int16_t>(key);
}

int KeyOf(std::int16_t pitch) {
  const int code = Unmarked(pitch);
  if (IsFlat(code)) return -kAccidentalStep - code;
  if (IsSharp(code)) return code - kAccidentalStep;
  return code;
}

Accidental AccidentalOf(std::int16_t pitch) {
  const int code = Unmarked(pitch);
  if (pitch == kRestCode) return Accidental::None;
  return IsSharp(code) ? Accidental::Sharp : IsFlat(code) ? Accidental::Flat : Accidental::None;
}

bool HasBassMark(std::int16_t pitch) {
  return pitch >= kBassMark || pitch <= -kBassMark;
}

bool InsertMelodyElement(SearchMelody& melody, MelodyElement element, std::size_t position) {
  if (melody.elements.size() >= kMaxMelodyElements) return false;
  const auto at = static_cast<std::ptrdiff_t>(std::min(position, melody.elements.size()));
  melody.elements.insert(melody.elements.begin() + at, element);
  MarkClef(melody);
  return true;
}

bool RemoveMelodyElements(SearchMelody& melody, std::size_t position, std::size_t count) {
  if (position > melody.elements.size() || count > melody.elements.size() - position) return false;
  const auto first = melody.elements.begin() + static_cast<std::ptrdiff_t>(position);
  melody.elements.erase(first, first + static_cast<std::ptrdiff_t>(count));
  MarkClef(melody);
  return true;
}

void TrimMelodyRests(SearchMelody& melody) {
  auto& elements = melody.elements;
  const auto firstNote = std::ranges::find_if_not(elements, IsRest);
  melody.cursor -= std::min(melody.cursor, static_cast<std::size_t>(firstNote - elements.begin()));
  elements.erase(elements.begin(), firstNote);
  while (!elements.empty() && IsRest(elements.back())) elements.pop_back();
  melody.cursor = std::min(melody.cursor, elements.size());
  if (melody.clef == Clef::Bass) MarkClef(melody);  // a stored melody brings its mark along
}

Bytes StoredMelody(const std::vector<MelodyElement>& elements) {
  ByteWriter out;
  out.Reserve(elements.size() * 4);
  for (const MelodyElement& element : elements) {
    out.U16Le(static_cast<std::uint16_t>(element.pitch));
    out.U16Le(static_cast<std::uint16_t>(element.duration));
  }
  return out.Release();
}

std::optional<std::vector<MelodyElement>> MelodyFromStored(ByteView data) {
  if (data.size() / 4 > kMaxMelodyElements) return std::nullopt;
  std::vector<MelodyElement> elements(data.size() / 4);
  ByteReader in(data);
  for (MelodyElement& element : elements) {
    element.pitch = static_cast<std::int16_t>(in.U16Le());
    element.duration = static_cast<std::int16_t>(in.U16Le());
  }
  return elements;
}

void ReplaceMelody(SearchMelody& melody, std::vector<MelodyElement> elements, std::string name) {
  melody.elements = std::move(elements);
  melody.name = std::move(name);
  melody.cursor = std::min(melody.cursor, melody.elements.size());
  const bool bass = !melody.elements.empty() && HasBassMark(melody.elements.front().pitch);
  melody.clef = bass ? Clef::Bass : Clef::Treble;
}

}  // namespace ts5
