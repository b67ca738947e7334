#include "search/note_commands.h"

#include <algorithm>
#include <array>

#include "search/texts.h"

namespace ts5 {
namespace {

using C = NoteCommand;
using K = EditorKey;

constexpr std::array kRows = {
    NoteCommandRow{C::OctaveDown, 0, K::F2, texts::TipOctaveDown},
    NoteCommandRow{C::OctaveNormal, 0, K::F3, texts::TipOctaveNormal},
    NoteCommandRow{C::OctaveUp, 0, K::F4, texts::TipOctaveUp},
    NoteCommandRow{C::Flat, '-', K::None, texts::TipFlat},
    NoteCommandRow{C::Natural, '0', K::None, texts::TipNatural},
    NoteCommandRow{C::Sharp, '+', K::None, texts::TipSharp},
    NoteCommandRow{C::TrebleClef, 0, K::F7, texts::TipTrebleClef},
    NoteCommandRow{C::BassClef, 0, K::F8, texts::TipBassClef},
    NoteCommandRow{C::ToggleDot, '.', K::None, texts::TipDot},
    NoteCommandRow{C::Whole, '1', K::None, texts::TipWhole},
    NoteCommandRow{C::Half, '2', K::None, texts::TipHalf},
    NoteCommandRow{C::Quarter, '4', K::None, texts::TipQuarter},
    NoteCommandRow{C::Eighth, '8', K::None, texts::TipEighth},
    NoteCommandRow{C::Sixteenth, '6', K::None, texts::TipSixteenth},
    NoteCommandRow{C::ThirtySecond, '3', K::None, texts::TipThirtySecond},
    NoteCommandRow{C::Play, 0, K::F9, texts::TipPlay},
    NoteCommandRow{C::Undo, 0, K::CtrlZ, texts::TipUndoNote},
    NoteCommandRow{C::Redo, 0, K::CtrlShiftZ, texts::TipRedoNote},
    NoteCommandRow{C::DeleteAll, 0, K::CtrlDelete, texts::TipDeleteMelody},
    NoteCommandRow{C::Save, 0, K::None, texts::SaveMelodyTitle},
    NoteCommandRow{C::Manage, 0, K::None, texts::TipManageMelodies},
    NoteCommandRow{C::LowC, 'c', K::None, {}},
    NoteCommandRow{C::LowD, 'd', K::None, {}},
    NoteCommandRow{C::LowE, 'e', K::None, {}},
    NoteCommandRow{C::LowF, 'f', K::None, {}},
    NoteCommandRow{C::LowG, 'g', K::None, {}},
    NoteCommandRow{C::LowA, 'a', K::None, {}},
    NoteCommandRow{C::LowH, 'h', K::None, {}},
    NoteCommandRow{C::HighC, 'C', K::None, {}},
    NoteCommandRow{C::HighD, 'D', K::None, {}},
    NoteCommandRow{C::HighE, 'E', K::None, {}},
    NoteCommandRow{C::HighF, 'F', K::None, {}},
    NoteCommandRow{C::HighG, 'G', K::None, {}},
    NoteCommandRow{C::HighA, 'A', K::None, {}},
    NoteCommandRow{C::HighH, 'H', K::None, {}},
    NoteCommandRow{C::Rest, ' ', K::None, {}},
    NoteCommandRow{C::DeleteAtCursor, 0, K::Delete, {}},
    NoteCommandRow{C::DeleteBeforeCursor, 0, K::Backspace, {}},
    NoteCommandRow{C::Home, 0, K::Home, {}},
    NoteCommandRow{C::End, 0, K::End, {}},
    NoteCommandRow{C::Left, 0, K::Left, {}},
    NoteCommandRow{C::Right, 0, K::Right, {}},
};

template <typename Value>
std::optional<NoteCommand> FindRow(Value NoteCommandRow::*member, Value value) {
  const auto row = std::ranges::find(kRows, value, member);
  if (value == Value{} || row == kRows.end()) return std::nullopt;
  return row->command;
}

}  // namespace

std::span<const NoteCommandRow> NoteCommands() {
  return kRows;
}
std::optional<NoteCommand> CommandOfCharacter(char character) {
  return FindRow(&NoteCommandRow::character, character);
}
std::optional<NoteCommand> CommandOfKey(EditorKey key) {
  return FindRow(&NoteCommandRow::key, key);
}

}  // namespace ts5
