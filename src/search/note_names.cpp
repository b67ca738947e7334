#include "search/note_names.h"

#include <array>
#include <string_view>

#include "platform/base/strings.h"
#include "platform/base/text.h"
#include "search/texts.h"

namespace ts5 {
namespace {

constexpr std::array<TextId, 6> kValues = {texts::ValueWhole,     texts::ValueHalf,
                                           texts::ValueQuarter,   texts::ValueEighth,
                                           texts::ValueSixteenth, texts::ValueThirtySecond};
// White keys by semitone; the black ones are written from a neighbour.
constexpr std::array<std::string_view, 12> kLetters = {"c", "c", "d", "d", "e", "f",
                                                       "f", "g", "g", "a", "a", "h"};
constexpr std::array kBlack = {false, true, false, true, false, false, true, false, true, false, true, false};

std::string Letter(int semitone, Accidental accidental) {
  const std::string letter(kLetters[static_cast<std::size_t>(semitone)]);
  if (accidental == Accidental::Sharp) return letter + "is";
  if (accidental == Accidental::None) return letter;
  if (letter == "h") return "b";
  return letter == "a" || letter == "e" ? letter + "s" : letter + "es";
}

}  // namespace

std::string PitchName(std::int16_t pitch) {
  const int key = KeyOf(pitch);
  if (key < 0 || key > 127) return std::to_string(key);
  Accidental accidental = AccidentalOf(pitch);
  if (accidental == Accidental::None && kBlack[static_cast<std::size_t>(key % 12)])
    accidental = Accidental::Sharp;
  // The octave is that of the written note: a sharp h is a c in sound, but stays in the octave of its letter.
  const int written = key - static_cast<int>(accidental) + 12;
  const std::string letter = Letter(written % 12, accidental);
  const int octave = written / 12 - 5;  // 0 for the small octave, c = key 48
  if (octave > 0) return letter + std::to_string(octave);
  if (octave == 0) return letter;
  const std::string capital = ToUpper(letter.substr(0, 1)) + letter.substr(1);
  return octave == -1 ? capital : capital + std::to_string(-1 - octave);
}

std::string DurationName(int duration) {
  for (std::size_t level = 0; level < kValues.size(); ++level) {
    const int plain = 960 >> level;
    const std::string name(Text(kValues[level]));
    if (duration == plain) return name;
    if (duration == plain + plain / 2) return Format(Text(texts::ValueDotted), name);
  }
  return std::to_string(duration) + "/240";
}

std::string SpokenMelody(std::span<const MelodyElement> elements) {
  std::string spoken;
  for (const MelodyElement& element : elements) {
    if (!spoken.empty()) spoken += ", ";
    const std::string value = DurationName(element.duration);
    spoken +=
        IsRest(element) ? Format(Text(texts::SpokenRest), value) : PitchName(element.pitch) + " " + value;
  }
  return spoken;
}

}  // namespace ts5
