// The melody that the two melody searches look for: its elements, pitch codes and the form in which it is
// stored.
//
// An element is a note or a rest with a duration in 1/240 of a quarter note (960 whole, 240 quarter, 30
// thirty-second). A note's pitch code is its MIDI key and the way it is written:
//
//   0..127           the key, no accidental
//   1000 + key       written with a sharp
//   -(1000 + key)    written with a flat
//   2000             a rest
//
// The first element of a melody that was entered in the bass clef is marked by 10000 (away from zero).
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/store/registry_values.h"

namespace ts5 {

inline constexpr std::int16_t kRestCode = 2000;
inline constexpr std::size_t kMaxMelodyElements = 10'000;  // more are refused, wherever they come from
inline constexpr std::size_t kMaxMelodyNameCharacters = 80;

struct MelodyElement {
  std::int16_t pitch = 0;
  std::int16_t duration = 0;

  bool operator==(const MelodyElement&) const = default;
};

enum class Clef : std::int32_t { Treble = 0, Bass = 2 };
enum class Accidental : std::int32_t { Flat = -1, None = 0, Sharp = 1 };

[[nodiscard]] constexpr bool IsRest(const MelodyElement& element) {
  return element.pitch == kRestCode;
}
// The code of a sounding key, 0..127, written with the accidental.
[[nodiscard]] std::int16_t PitchCode(int key, Accidental accidental);
// The sounding key of a pitch code that is no rest. Codes that the editor never makes give keys outside
// 0..127.
[[nodiscard]] int KeyOf(std::int16_t pitch);
[[nodiscard]] Accidental AccidentalOf(std::int16_t pitch);
[[nodiscard]] bool HasBassMark(std::int16_t pitch);

// A melody with the state of its editor, as a job keeps them.
struct SearchMelody {
  std::vector<MelodyElement> elements;
  std::string name;  // of the stored melody it came from; empty until then
  std::size_t cursor = 0;
  std::int32_t octaveOffset = 0;  // -12, 0 or +12
  Accidental accidental = Accidental::None;
  Clef clef = Clef::Treble;
  bool dotted = false;
  std::int32_t noteValue = 240;

  bool operator==(const SearchMelody&) const = default;
};

// Inserts before the position (0..count). The clef mark is kept on the first element. False when the melody
// is full.
[[nodiscard]] bool InsertMelodyElement(SearchMelody& melody, MelodyElement element, std::size_t position);
// False when the range does not lie inside the melody; nothing is removed then.
[[nodiscard]] bool RemoveMelodyElements(SearchMelody& melody, std::size_t position, std::size_t count);
// Removes leading and trailing rests and keeps the cursor within the melody.
void TrimMelodyRests(SearchMelody& melody);

// The stored form: per element the pitch code and the duration, each little-endian signed 16-bit.
[[nodiscard]] Bytes StoredMelody(const std::vector<MelodyElement>& elements);
// A rest of less than four bytes is left out; nothing when there are too many elements.
[[nodiscard]] std::optional<std::vector<MelodyElement>> MelodyFromStored(ByteView data);
// Takes elements and name into the editor's melody: the clef follows the mark, the cursor stays within.
void ReplaceMelody(SearchMelody& melody, std::vector<MelodyElement> elements, std::string name);

}  // namespace ts5
