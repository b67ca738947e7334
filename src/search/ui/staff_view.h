// The one-line staff of the note editor: shows the melody and its cursor and turns keys into note commands.
// It changes nothing itself.
#pragma once

#include <QWidget>
#include <functional>

#include "search/note_commands.h"
#include "search/note_layout.h"
#include "search/search_melody.h"

namespace ts5 {

class StaffView : public QWidget {
  Q_OBJECT

 public:
  // The melody must outlive the view.
  explicit StaffView(const SearchMelody& melody, QWidget* parent = nullptr);

  // After every change of the melody: repaints, and tells screen readers what it holds now.
  void MelodyChanged();

  [[nodiscard]] QSize sizeHint() const override;
  [[nodiscard]] QSize minimumSizeHint() const override;

 signals:
  void CommandGiven(ts5::NoteCommand command);
  void PositionPicked(std::size_t position);  // a click between two elements

 protected:
  void paintEvent(QPaintEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  // The y of a staff place.
  [[nodiscard]] double PlaceY(int place) const;
  void DrawNote(QPainter& painter, const NotePlace& note) const;

  const SearchMelody& melody_;
};

}  // namespace ts5
