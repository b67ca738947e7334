#include "converters/transcribe/spelling.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdlib>

namespace ts5::transcribe {
namespace {

using Profile = std::array<double, 12>;
constexpr Profile kMajor = {5.0, 2.0, 3.5, 2.0, 4.5, 4.0, 2.0, 4.5, 2.0, 3.5, 1.5, 4.0};
constexpr Profile kMinor = {5.0, 2.0, 3.5, 4.5, 2.0, 4.0, 2.0, 4.5, 3.5, 2.0, 1.5, 4.0};

double Agreement(const Profile& heard, const Profile& expected, int tonic) {
  double meanHeard = 0;
  double meanExpected = 0;
  for (int i = 0; i < 12; ++i) {
    meanHeard += heard[static_cast<std::size_t>(i)] / 12;
    meanExpected += expected[static_cast<std::size_t>(i)] / 12;
  }
  double both = 0;
  double first = 0;
  double second = 0;
  for (int i = 0; i < 12; ++i) {
    const double a = heard[static_cast<std::size_t>((i + tonic) % 12)] - meanHeard;
    const double b = expected[static_cast<std::size_t>(i)] - meanExpected;
    both += a * b;
    first += a * a;
    second += b * b;
  }
  return both / std::max(std::sqrt(first * second), 1e-9);
}

// Of a major key's tonic (0 C .. 11 B), within -5..6.
int SharpsOf(int tonic) {
  const int sharps = tonic * 7 % 12;
  return sharps > 6 ? sharps - 12 : sharps;
}

// The letter, counted from the tonic's, of a note so many semitones above a tonic.
constexpr std::array<int, 12> kLetterAbove = {0, 1, 1, 2, 2, 3, 3, 4, 5, 5, 6, 6};
constexpr std::array<int, 7> kScale = {0, 2, 4, 5, 7, 9, 11};
constexpr std::size_t kBefore = 10;  // notes that count, before and from the note on
constexpr std::size_t kBehind = 42;

struct Tonic {
  int pitchClass = 0;
  int letter = 0;  // 0 C .. 6 B
};
// Of the major key.
Tonic TonicOf(int sharps) {
  return {((sharps * 7) % 12 + 12) % 12, ((sharps * 4) % 7 + 7) % 7};
}

// What a note counts: struck again and again it says no more than once.
int Weight(std::span<const NoteToSpell> notes, std::size_t i) {
  return i > 0 && notes[i - 1].key == notes[i].key ? 0 : 1;
}

SpelledPitch WithLetter(int key, int letter) {
  // The octave in which the alteration is least.
  SpelledPitch best;
  int least = INT32_MAX;
  for (int octave = key / 12 - 2; octave <= key / 12; ++octave) {
    const int alter = key - (12 * (octave + 1) + kScale[static_cast<std::size_t>(letter)]);
    if (std::abs(alter) < least) {
      least = std::abs(alter);
      best = {static_cast<std::int8_t>(letter), static_cast<std::int8_t>(alter),
              static_cast<std::int8_t>(octave)};
    }
  }
  return best;
}

}  // namespace

int FindKey(std::span<const WeightedKey> notes) {
  Profile heard{};
  for (const WeightedKey& note : notes) heard[note.key % 12U] += note.weight;
  int sharps = 0;
  double best = -2;
  for (int tonic = 0; tonic < 12; ++tonic) {
    const double major = Agreement(heard, kMajor, tonic);
    // A minor key has the signature of the major key three semitones above it.
    const double minor = Agreement(heard, kMinor, (tonic + 9) % 12);
    if (std::max(major, minor) > best) {
      best = std::max(major, minor);
      sharps = SharpsOf(tonic);
    }
  }
  return sharps;
}

std::vector<SpelledPitch> Spell(std::span<const NoteToSpell> notes) {
  std::vector<SpelledPitch> spelled;
  spelled.reserve(notes.size());
  std::array<int, 12> around{};
  std::size_t end = 0;
  for (std::size_t i = 0; i < notes.size(); ++i) {
    for (; end < std::min(i + kBehind, notes.size()); ++end)
      around[notes[end].key % 12U] += Weight(notes, end);
    if (i > kBefore) around[notes[i - kBefore - 1].key % 12U] -= Weight(notes, i - kBefore - 1);
    const Tonic reference = TonicOf(notes[i].sharps);
    std::array<double, 7> strength{};
    for (int tonic = 0; tonic < 12; ++tonic) {
      const auto count = static_cast<double>(around[static_cast<std::size_t>(tonic)]);
      if (count == 0) continue;
      const int tonicLetter =
          kLetterAbove[static_cast<std::size_t>((tonic - reference.pitchClass + 12) % 12)];
      const int above = kLetterAbove[static_cast<std::size_t>((notes[i].key - tonic + 120) % 12)];
      strength[static_cast<std::size_t>((reference.letter + tonicLetter + above) % 7)] += count;
    }
    // The notes of the key keep their letters unless much speaks against it.
    for (int letter = 0; letter < 7; ++letter) {
      const int degree = (letter - reference.letter + 7) % 7;
      if ((reference.pitchClass + kScale[static_cast<std::size_t>(degree)]) % 12 == notes[i].key % 12)
        strength[static_cast<std::size_t>(letter)] += 12;
    }
    // Double sharps and flats are rare.
    for (int letter = 0; letter < 7; ++letter) {
      if (std::abs(WithLetter(notes[i].key, letter).alter) > 1)
        strength[static_cast<std::size_t>(letter)] /= 2;
    }
    const auto letter = static_cast<int>(std::ranges::max_element(strength) - strength.begin());
    SpelledPitch pitch = WithLetter(notes[i].key, letter);
    if (std::abs(pitch.alter) > 2)
      pitch = WithLetter(
          notes[i].key,
          (reference.letter +
           kLetterAbove[static_cast<std::size_t>((notes[i].key - reference.pitchClass + 120) % 12)]) %
              7);
    spelled.push_back(pitch);
  }
  return spelled;
}

}  // namespace ts5::transcribe
