// The note editor without its window: what each command does to the melody, what it refuses, and which
// commands can be given.
#pragma once

#include <limits>
#include <optional>
#include <string>
#include <vector>

#include "platform/base/strings.h"
#include "search/note_commands.h"
#include "search/search_melody.h"

namespace ts5 {

struct EditResult {
  bool changed = false;            // the melody, its cursor or what the next note will be
  std::optional<TextId> message;   // why the command was refused
  std::optional<int> sounds = {};  // the key of the note that was entered
};

class NoteEditor {
 public:
  // The melody is edited in place. One that is not empty decides the clef by its first element.
  explicit NoteEditor(SearchMelody& melody);

  void SetPlaying(bool playing) { playing_ = playing; }
  [[nodiscard]] bool Playing() const { return playing_; }
  // Of the staff control, in pixels at 96 dpi; without limit until it is set.
  void SetWidth(double width) { width_ = width; }

  // Play, Save and Manage change nothing here: the window carries them out.
  EditResult Execute(NoteCommand command);
  // A note of the current value at a staff place, with the chosen accidental, before the element at position
  // (0..count): what a click enters. Places whose key is none are ignored.
  EditResult EnterAt(int place, std::size_t position);
  // The note of a MIDI key, 0..127, at the cursor; black keys as sharps unless the flat is chosen.
  EditResult EnterKey(int key);
  // Takes another melody in its place; Undo brings this one back.
  void Replace(SearchMelody melody);
  [[nodiscard]] bool IsEnabled(NoteCommand command) const;
  // Whether the command is the chosen one of its group (octave, accidental, clef, dot, note value).
  [[nodiscard]] bool IsChosen(NoteCommand command) const;

 private:
  // What Undo brings back.
  struct Snapshot {
    std::vector<MelodyElement> elements;
    std::string name;
    std::size_t cursor;
    Clef clef;
  };
  [[nodiscard]] Snapshot Now() const;
  void Remember();
  EditResult Restore(std::vector<Snapshot>& from, std::vector<Snapshot>& to);
  EditResult Enter(std::int16_t pitch);
  EditResult Delete(std::size_t position, std::size_t count, std::size_t cursor);
  EditResult MoveCursor(std::size_t position);

  SearchMelody& melody_;
  std::vector<Snapshot> undo_;  // the latest last
  std::vector<Snapshot> redo_;
  bool playing_ = false;
  double width_ = std::numeric_limits<double>::infinity();
};

}  // namespace ts5
