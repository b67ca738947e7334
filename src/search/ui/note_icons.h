// The toolbar icons of the note editor, drawn from the signs of the staff.
#pragma once

#include <QIcon>

#include "search/note_commands.h"

class QPalette;

namespace ts5 {

// In the ink of the palette's buttons; an empty icon for a command without a button.
[[nodiscard]] QIcon NoteIcon(NoteCommand command, const QPalette& palette);

}  // namespace ts5
