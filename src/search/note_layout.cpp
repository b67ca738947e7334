#include "search/note_layout.h"

#include <algorithm>
#include <array>
#include <cstdlib>

namespace ts5 {
namespace {

constexpr double kFirstNote = 48.0;  // behind the clef
constexpr double kAccidentalWidth = 12.0;
constexpr int kMiddlePlace = 4;
constexpr double kStemLength = 3.5;
constexpr double kDotWidth = 6.0;
constexpr double kHeadWidth = 10.0;
constexpr double kCursorGap = 4.0;                                    // before the head or its accidental
constexpr std::array<double, 6> kAdvance = {34, 30, 26, 24, 22, 20};  // whole .. thirty-second

// Diatonic step of each semitone of the octave; black keys belong to the white key below.
constexpr std::array kSteps = {0, 0, 1, 1, 2, 3, 3, 4, 4, 5, 5, 6};
constexpr int kLowestTrebleStep = 37;  // E of the one-line octave, key 64
constexpr int kLowestBassStep = 25;    // G of the great octave, key 43

int FloorDivide(int value, int divisor) {
  return (value - (((value % divisor) + divisor) % divisor)) / divisor;
}

struct NoteShape {
  int level = 2;  // 0 whole, 1 half, 2 quarter .. 5 thirty-second
  bool dotted = false;
};

// The note value that is drawn: the longest one, with or without its dot, that the duration holds.
NoteShape ShapeOf(int duration) {
  for (int level = 0; level < 6; ++level) {
    const int plain = 960 >> level;
    if (duration >= plain + plain / 2) return {level, true};
    if (duration >= plain) return {level, false};
  }
  return {5, false};
}

// Black keys without an accidental in their code (entered as numbers) are drawn with a sharp.
Accidental DrawnAccidental(std::int16_t pitch) {
  const Accidental accidental = AccidentalOf(pitch);
  return accidental == Accidental::None && IsBlackKey(KeyOf(pitch)) ? Accidental::Sharp : accidental;
}

struct Extent {
  double head;  // left edge of the head
  double next;  // where the next element begins
};

Extent ExtentOf(const MelodyElement& element, double begin) {
  const NoteShape shape = ShapeOf(element.duration);
  const bool accidental = !IsRest(element) && DrawnAccidental(element.pitch) != Accidental::None;
  const double head = begin + (accidental ? kAccidentalWidth : 0.0);
  return {head, head + kAdvance[static_cast<std::size_t>(shape.level)] + (shape.dotted ? kDotWidth : 0.0)};
}

}  // namespace

bool IsBlackKey(int key) {
  const int semitone = ((key % 12) + 12) % 12;
  return semitone == 1 || semitone == 3 || semitone == 6 || semitone == 8 || semitone == 10;
}

int KeyAtPlace(int place, Clef clef) {
  constexpr std::array kSemitones = {0, 2, 4, 5, 7, 9, 11};
  const int step = place + (clef == Clef::Bass ? kLowestBassStep : kLowestTrebleStep);
  const int octave = FloorDivide(step, 7);
  return octave * 12 + kSemitones[static_cast<std::size_t>(step - octave * 7)];
}

int StaffPlace(std::int16_t pitch, Clef clef) {
  const int written = KeyOf(pitch) - static_cast<int>(AccidentalOf(pitch));
  const int octave = FloorDivide(written, 12);
  const int step = octave * 7 + kSteps[static_cast<std::size_t>(written - octave * 12)];
  return step - (clef == Clef::Bass ? kLowestBassStep : kLowestTrebleStep);
}

std::vector<int> LedgerLines(int place) {
  std::vector<int> lines;
  for (int line = -2; line >= std::max(place, -80); line -= 2) lines.push_back(line);
  for (int line = 10; line <= std::min(place, 80); line += 2) lines.push_back(line);
  return lines;
}

std::vector<NotePlace> LayOutNotes(std::span<const MelodyElement> elements, Clef clef) {
  std::vector<NotePlace> places;
  places.reserve(elements.size());
  double x = kFirstNote;
  for (const MelodyElement& element : elements) {
    const NoteShape shape = ShapeOf(element.duration);
    const Extent extent = ExtentOf(element, x);
    NotePlace note;
    note.rest = IsRest(element);
    note.x = extent.head;
    note.accidentalX = x;
    note.head = shape.level == 0 ? NoteHead::Whole : shape.level == 1 ? NoteHead::Half : NoteHead::Filled;
    note.flags = std::max(0, shape.level - 2);
    note.dotted = shape.dotted;
    note.stem = !note.rest && shape.level > 0;
    if (!note.rest) {
      note.place = StaffPlace(element.pitch, clef);
      note.accidental = DrawnAccidental(element.pitch);
      note.stemUp = note.place < kMiddlePlace;
      // Room for the second and third flag.
      const double plain = kStemLength + (note.flags > 2 ? 0.75 : 0.0);
      note.stemLength = std::max(plain, std::abs(note.place - kMiddlePlace) / 2.0);
      note.ledgerLines = LedgerLines(note.place);
    }
    places.push_back(std::move(note));
    x = extent.next;
  }
  return places;
}

double CursorX(std::span<const MelodyElement> elements, std::size_t position) {
  double x = kFirstNote;
  for (const MelodyElement& element : elements.first(std::min(position, elements.size())))
    x = ExtentOf(element, x).next;
  return x - kCursorGap;
}

std::size_t PositionAt(std::span<const MelodyElement> elements, double x) {
  double begin = kFirstNote;
  for (std::size_t i = 0; i < elements.size(); ++i) {
    const Extent extent = ExtentOf(elements[i], begin);
    if (x < extent.head + kHeadWidth / 2) return i;
    begin = extent.next;
  }
  return elements.size();
}

std::optional<std::size_t> ElementAt(std::span<const MelodyElement> elements, Clef clef, double x,
                                     int place) {
  constexpr double kMargin = 2.0;
  const std::vector<NotePlace> places = LayOutNotes(elements, clef);
  for (std::size_t i = 0; i < places.size(); ++i) {
    const bool near = std::abs(place - places[i].place) <= (places[i].rest ? 2 : 1);
    if (near && x >= places[i].x - kMargin && x <= places[i].x + kHeadWidth + kMargin) return i;
  }
  return std::nullopt;
}

bool HasRoomForNote(std::span<const MelodyElement> elements, double width) {
  if (elements.empty()) return true;
  const double last = CursorX(elements, elements.size() - 1) + kCursorGap;
  return ExtentOf(elements.back(), last).head + kRoomForAnotherNote < width;
}

}  // namespace ts5
