// The one-line staff of the note editor: shows the melody and its cursor and turns keys and clicks into note
// commands. Under the mouse stands, faintly, the note that a click enters. The notes grow with the window as
// long as all of them have room. It changes nothing itself.
#pragma once

#include <QWidget>
#include <cstddef>
#include <optional>

#include "search/note_commands.h"
#include "search/note_layout.h"
#include "search/search_melody.h"

namespace ts5 {

class StaffView : public QWidget {
  Q_OBJECT

 public:
  // The melody must outlive the view.
  explicit StaffView(const SearchMelody& melody, QWidget* parent = nullptr);

  // Whether clicks enter notes.
  void SetEditable(bool editable);
  // After every change of the melody: repaints, and tells screen readers what it holds now.
  void MelodyChanged();

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 signals:
  void CommandGiven(ts5::NoteCommand command);
  void PositionPicked(std::size_t position);         // a click on an element
  void NotePicked(int place, std::size_t position);  // a click where no element stands

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void leaveEvent(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  // Where a click enters a note.
  struct Spot {
    int place;
    std::size_t position;
    bool operator==(const Spot&) const = default;
  };
  // How much larger than at 96 dpi everything is drawn; the melody has its room.
  [[nodiscard]] double Scale() const;
  // The y of the middle line, in pixels before scaling.
  [[nodiscard]] double MiddleY() const;
  [[nodiscard]] Spot SpotAt(QPointF position) const;
  [[nodiscard]] std::optional<std::size_t> ElementUnder(QPointF position) const;
  void ShowGhost(std::optional<Spot> spot);
  void DrawGhost(QPainter& painter) const;

  const SearchMelody& melody_;
  bool editable_ = true;
  std::optional<Spot> ghost_;
};

}  // namespace ts5
