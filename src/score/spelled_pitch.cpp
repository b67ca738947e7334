// Pitches and the places of their notes: a note stands on a step of the scale of its key, counted from its
// clef.
#include <algorithm>
#include <array>

#include "score/score_document.h"

namespace ts5 {
namespace {

constexpr int kSteps = 7;
constexpr int kSemitones = 12;
constexpr std::array<int, kSteps> kScale = {0, 2, 4, 5, 7, 9, 11};
constexpr std::array<int, kSteps> kOrderOfSharps = {1, 3, 5, 0, 2, 4, 6};  // of C, D, E ...
constexpr int kLowest = -64;
constexpr int kHighest = 63;

int FloorDivide(int value, int divisor) {
  const int quotient = value / divisor;
  return value % divisor < 0 ? quotient - 1 : quotient;
}

int KeyOf(int absoluteStep, int alter) {
  const int octave = FloorDivide(absoluteStep, kSteps);
  return kScale[static_cast<std::size_t>(absoluteStep - octave * kSteps)] + alter + kSemitones * (octave + 1);
}

// The tonic that is the scale's step 0, as steps from C of octave 0.
int Tonic(int key) {
  const int step = ((4 * key) % kSteps + kSteps) % kSteps;
  const int pitch = (7 * key + 60) % kSemitones;  // NoteKey's
  const int rest = pitch - kScale[static_cast<std::size_t>(step)] - KeyAlter(step, key);
  return step + kSteps * (FloorDivide(rest, kSemitones) - 1);
}

// Steps above the tonic of a note at position 0.
int StepsOf(ScoreClef clef) {
  constexpr std::array<int, 5> kForms = {42, 35, 28, 42, 42};
  const int steps = kForms[std::min<std::size_t>(clef.form, kForms.size() - 1)];
  if (clef.octave == 0) return steps + kSteps;
  return clef.octave == 2 ? steps - kSteps : steps;
}

}  // namespace

int KeyAlter(int step, int key) {
  const int order = kOrderOfSharps[static_cast<std::size_t>(step)];
  if (key > order) return 1;
  return -key > kSteps - 1 - order ? -1 : 0;
}

int SpelledPitch::Key() const {
  return KeyOf(step + kSteps * octave, alter);
}

SpelledPitch PitchOf(const ScoreNote& note, ScoreClef clef, int key) {
  const int absolute = Tonic(key) + StepsOf(clef) + note.position;
  const int octave = FloorDivide(absolute, kSteps);
  const int step = absolute - octave * kSteps;
  return {static_cast<std::int8_t>(step), static_cast<std::int8_t>(KeyAlter(step, key) + note.accidental),
          static_cast<std::int8_t>(octave)};
}

PlacedNote NoteOf(SpelledPitch pitch, ScoreClef clef, int key) {
  constexpr std::array<int, 7> kTries = {0, 1, -1, 2, -2, 3, -3};
  const int wanted = pitch.Key();
  PlacedNote placed;
  for (const int away : kTries) {
    const int absolute = pitch.step + kSteps * pitch.octave + away;
    const int step = absolute - FloorDivide(absolute, kSteps) * kSteps;
    const int accidental = wanted - KeyOf(absolute, KeyAlter(step, key));
    if (accidental < -2 || accidental > 2) continue;
    int position = absolute - Tonic(key) - StepsOf(clef);
    placed.exact = away == 0 && position >= kLowest && position <= kHighest;
    while (position < kLowest) position += kSteps;
    while (position > kHighest) position -= kSteps;
    placed.note.position = static_cast<std::int8_t>(position);
    placed.note.accidental = static_cast<std::int8_t>(accidental);
    return placed;
  }
  placed.exact = false;
  return placed;
}

}  // namespace ts5
