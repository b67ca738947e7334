#include "search/note_editor.h"

#include <algorithm>
#include <array>
#include <utility>

#include "search/note_layout.h"
#include "search/texts.h"

namespace ts5 {
namespace {

constexpr std::size_t kMostSteps = 500;  // that can be undone
constexpr int kHighestKey = 127;
constexpr std::array<int, 7> kNoteKeys = {60, 62, 64, 65, 67, 69, 71};

bool Within(NoteCommand command, NoteCommand first, NoteCommand last) {
  return command >= first && command <= last;
}
int Offset(NoteCommand command, NoteCommand first) {
  return static_cast<int>(command) - static_cast<int>(first);
}

using C = NoteCommand;
bool IsOctave(C c) {
  return Within(c, C::OctaveDown, C::OctaveUp);
}
bool IsAccidental(C c) {
  return Within(c, C::Flat, C::Sharp);
}
bool IsClef(C c) {
  return Within(c, C::TrebleClef, C::BassClef);
}
bool IsNoteValue(C c) {
  return Within(c, C::Whole, C::ThirtySecond);
}
bool IsNote(C c) {
  return Within(c, C::LowC, C::HighH);
}
bool IsDeletion(C c) {
  return Within(c, C::DeleteAtCursor, C::DeleteAll);
}

std::int32_t OctaveOf(C c) {
  return 12 * (Offset(c, C::OctaveDown) - 1);
}
Accidental AccidentalOf(C c) {
  return static_cast<Accidental>(Offset(c, C::Flat) - 1);
}
Clef ClefOf(C c) {
  return c == C::BassClef ? Clef::Bass : Clef::Treble;
}
std::int32_t NoteValueOf(C c) {
  return 960 >> Offset(c, C::Whole);
}

std::int16_t PitchOf(C command, const SearchMelody& melody) {
  const int note = Offset(command, C::LowC);
  const int key = kNoteKeys[static_cast<std::size_t>(note % 7)] + 12 * (note / 7) + melody.octaveOffset -
                  (melody.clef == Clef::Bass ? 24 : 0);
  return PitchCode(key + static_cast<int>(melody.accidental), melody.accidental);
}

template <typename T>
EditResult Choose(T& field, T value) {
  const bool changed = field != value;
  field = value;
  return {changed, {}};
}

}  // namespace

NoteEditor::NoteEditor(SearchMelody& melody) : melody_(melody) {
  if (melody_.elements.empty()) return;
  melody_.clef = HasBassMark(melody_.elements.front().pitch) ? Clef::Bass : Clef::Treble;
  melody_.cursor = std::min(melody_.cursor, melody_.elements.size());
}

bool NoteEditor::IsEnabled(NoteCommand command) const {
  const bool empty = melody_.elements.empty();
  if (IsClef(command)) return empty && !playing_;
  if (command == C::Play) return !empty;
  if (command == C::Save || command == C::DeleteAll) return !empty && !playing_;
  if (command == C::Undo) return !undo_.empty() && !playing_;
  if (command == C::Redo) return !redo_.empty() && !playing_;
  if (IsNote(command) || command == C::Rest || IsDeletion(command) || command == C::Manage) return !playing_;
  return true;
}

bool NoteEditor::IsChosen(NoteCommand command) const {
  if (IsOctave(command)) return melody_.octaveOffset == OctaveOf(command);
  if (IsAccidental(command)) return melody_.accidental == AccidentalOf(command);
  if (IsClef(command)) return melody_.clef == ClefOf(command);
  if (IsNoteValue(command)) return melody_.noteValue == NoteValueOf(command);
  return command == C::ToggleDot && melody_.dotted;
}

EditResult NoteEditor::Execute(NoteCommand command) {
  if (!IsEnabled(command)) return {};
  if (IsOctave(command)) return Choose(melody_.octaveOffset, OctaveOf(command));
  if (IsAccidental(command)) return Choose(melody_.accidental, AccidentalOf(command));
  if (IsClef(command)) return Choose(melody_.clef, ClefOf(command));
  if (IsNoteValue(command)) return Choose(melody_.noteValue, NoteValueOf(command));
  if (IsNote(command)) return Enter(PitchOf(command, melody_));
  const std::size_t count = melody_.elements.size();
  const std::size_t cursor = melody_.cursor;
  switch (command) {
    case C::ToggleDot:
      return Choose(melody_.dotted, !melody_.dotted);
    case C::Undo:
      return Restore(undo_, redo_);
    case C::Redo:
      return Restore(redo_, undo_);
    case C::Rest:
      return Enter(kRestCode);
    case C::DeleteAtCursor:
      return cursor < count ? Delete(cursor, 1, cursor) : EditResult{};
    case C::DeleteBeforeCursor:
      return cursor > 0 ? Delete(cursor - 1, 1, cursor - 1) : EditResult{};
    case C::DeleteAll:
      return Delete(0, count, 0);
    case C::Home:
      return MoveCursor(0);
    case C::End:
      return MoveCursor(count);
    case C::Left:
      return MoveCursor(cursor - std::min<std::size_t>(cursor, 1));
    case C::Right:
      return MoveCursor(std::min(cursor + 1, count));
    default:
      return {};
  }
}

EditResult NoteEditor::Enter(std::int16_t pitch) {
  if (pitch == kRestCode && melody_.cursor == 0) return {false, texts::RestAtStart};
  if (!HasRoomForNote(melody_.elements, width_)) return {false, texts::NoRoomForNote};
  const auto duration =
      static_cast<std::int16_t>(melody_.noteValue + (melody_.dotted ? melody_.noteValue / 2 : 0));
  Remember();
  if (!InsertMelodyElement(melody_, {pitch, duration}, melody_.cursor)) {
    undo_.pop_back();
    return {false, texts::NoRoomForNote};
  }
  ++melody_.cursor;
  return {true, {}, pitch == kRestCode ? std::nullopt : std::optional<int>(KeyOf(pitch))};
}

EditResult NoteEditor::EnterAt(int place, std::size_t position) {
  const int key = KeyAtPlace(place, melody_.clef) + static_cast<int>(melody_.accidental);
  if (playing_ || key < 0 || key > kHighestKey) return {};
  const std::size_t before = melody_.cursor;
  melody_.cursor = std::min(position, melody_.elements.size());
  const EditResult result = Enter(PitchCode(key, melody_.accidental));
  if (!result.changed) melody_.cursor = before;
  return result;
}

EditResult NoteEditor::EnterKey(int key) {
  if (playing_ || key < 0 || key > kHighestKey) return {};
  Accidental written = Accidental::None;
  if (IsBlackKey(key))
    written = melody_.accidental == Accidental::Flat ? Accidental::Flat : Accidental::Sharp;
  return Enter(PitchCode(key, written));
}

NoteEditor::Snapshot NoteEditor::Now() const {
  return {melody_.elements, melody_.name, melody_.cursor, melody_.clef};
}

void NoteEditor::Remember() {
  if (undo_.size() == kMostSteps) undo_.erase(undo_.begin());
  undo_.push_back(Now());
  redo_.clear();
}

EditResult NoteEditor::Restore(std::vector<Snapshot>& from, std::vector<Snapshot>& to) {
  to.push_back(Now());
  Snapshot& snapshot = from.back();
  melody_.elements = std::move(snapshot.elements);
  melody_.name = std::move(snapshot.name);
  melody_.cursor = snapshot.cursor;
  melody_.clef = snapshot.clef;
  from.pop_back();
  return {true, {}};
}

void NoteEditor::Replace(SearchMelody melody) {
  Remember();
  melody_ = std::move(melody);
}

EditResult NoteEditor::Delete(std::size_t position, std::size_t count, std::size_t cursor) {
  Remember();
  if (!RemoveMelodyElements(melody_, position, count)) {
    undo_.pop_back();
    return {false, texts::NoteNotDeleted};
  }
  melody_.cursor = cursor;
  return {true, {}};
}

EditResult NoteEditor::MoveCursor(std::size_t position) {
  return Choose(melody_.cursor, position);
}

}  // namespace ts5
