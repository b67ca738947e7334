// What the keys and the toolbar of the note editor mean.
#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "platform/base/strings.h"

namespace ts5 {

enum class NoteCommand : std::uint8_t {
  OctaveDown,
  OctaveNormal,
  OctaveUp,
  Flat,
  Natural,
  Sharp,
  TrebleClef,
  BassClef,
  ToggleDot,
  Whole,
  Half,
  Quarter,
  Eighth,
  Sixteenth,
  ThirtySecond,
  LowC,
  LowD,
  LowE,
  LowF,
  LowG,
  LowA,
  LowH,
  HighC,
  HighD,
  HighE,
  HighF,
  HighG,
  HighA,
  HighH,
  Rest,
  DeleteAtCursor,
  DeleteBeforeCursor,
  DeleteAll,
  Home,
  End,
  Left,
  Right,
  Play,  // starts, or stops what is playing
  Save,
  Manage,
  Undo,
  Redo,
};

// Keys that carry no character.
enum class EditorKey : std::uint8_t {
  None,
  F2,
  F3,
  F4,
  F7,
  F8,
  F9,
  Home,
  End,
  Left,
  Right,
  Delete,
  CtrlDelete,
  Backspace,
  CtrlZ,
  CtrlShiftZ,
};

struct NoteCommandRow {
  NoteCommand command;
  char character;             // 0 when no character enters it
  EditorKey key;              // None when no key enters it
  std::optional<TextId> tip;  // tooltip of its toolbar button; none: it has no button
};

// In the order of the toolbar, then the commands without a button.
[[nodiscard]] std::span<const NoteCommandRow> NoteCommands();

// Nothing for a character or key that the editor leaves to the control.
[[nodiscard]] std::optional<NoteCommand> CommandOfCharacter(char character);
[[nodiscard]] std::optional<NoteCommand> CommandOfKey(EditorKey key);

}  // namespace ts5
