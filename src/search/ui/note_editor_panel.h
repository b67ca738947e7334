// The note editor: the staff with its toolbar. It edits a melody of its own; playing, saving and managing are
// left to whoever listens to its signals.
#pragma once

#include <QWidget>
#include <memory>
#include <vector>

#include "search/note_editor.h"
#include "search/search_melody.h"

class QToolButton;

namespace ts5 {

class StaffView;

class NoteEditorPanel : public QWidget {
  Q_OBJECT

 public:
  explicit NoteEditorPanel(QWidget* parent = nullptr);
  ~NoteEditorPanel() override;

  // A melody to begin with.
  void SetMelody(SearchMelody melody);
  // Another one in place of what is edited, which Undo brings back.
  void ReplaceMelody(SearchMelody melody);
  [[nodiscard]] const SearchMelody& Melody() const { return melody_; }
  // While it plays, nothing can be entered or deleted.
  void SetPlaying(bool playing);
  // Without a MIDI device there is nothing to play on.
  void SetCanPlay(bool can);
  void Execute(NoteCommand command);
  // What a MIDI keyboard enters, while the panel is to be seen: a key of 0..127.
  void EnterKey(int key);
  // Tab goes from the widget through the buttons into the staff, as they stand.
  void PutTabStopsBehind(QWidget* widget);

 signals:
  void PlayRequested();  // or stop, while it plays
  void SaveRequested();
  void ManageRequested();
  void NoteEntered(int key);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  struct Button {
    NoteCommand command;
    QToolButton* button;
  };
  void MakeToolbar();
  void PaintIcons();
  void Take(const EditResult& result);
  void ShowState();

  SearchMelody melody_;
  std::unique_ptr<NoteEditor> editor_;
  bool canPlay_ = true;
  StaffView* staff_;
  QWidget* toolbar_;
  std::vector<Button> buttons_;
};

}  // namespace ts5
