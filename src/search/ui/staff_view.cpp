#include "search/ui/staff_view.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <array>
#include <optional>

#include "frame/ui/qt_text.h"
#include "search/note_layout.h"
#include "search/note_names.h"
#include "search/texts.h"
#include "search/ui/music_shapes.h"

namespace ts5 {
namespace {

constexpr int kMiddlePlace = 4;
constexpr int kHeight = 150;
constexpr int kMinimumWidth = 240;
constexpr double kClefLeft = 14.0;
constexpr double kLedgerOverhang = 3.0;

struct KeyRow {
  int key;
  EditorKey editorKey;
};
constexpr std::array kKeys = {
    KeyRow{Qt::Key_F2, EditorKey::F2},         KeyRow{Qt::Key_F3, EditorKey::F3},
    KeyRow{Qt::Key_F4, EditorKey::F4},         KeyRow{Qt::Key_F7, EditorKey::F7},
    KeyRow{Qt::Key_F8, EditorKey::F8},         KeyRow{Qt::Key_F9, EditorKey::F9},
    KeyRow{Qt::Key_Home, EditorKey::Home},     KeyRow{Qt::Key_End, EditorKey::End},
    KeyRow{Qt::Key_Left, EditorKey::Left},     KeyRow{Qt::Key_Right, EditorKey::Right},
    KeyRow{Qt::Key_Delete, EditorKey::Delete}, KeyRow{Qt::Key_Backspace, EditorKey::Backspace},
};

std::optional<NoteCommand> CommandOf(const QKeyEvent& event) {
  const bool control = event.modifiers().testFlag(Qt::ControlModifier);
  if (control && event.key() == Qt::Key_Delete) return CommandOfKey(EditorKey::CtrlDelete);
  if (event.modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier)) return std::nullopt;
  const auto row = std::ranges::find(kKeys, event.key(), &KeyRow::key);
  if (row != kKeys.end()) return CommandOfKey(row->editorKey);
  const QString text = event.text();
  if (text.size() != 1 || text[0].unicode() > 0x7E) return std::nullopt;
  return CommandOfCharacter(text[0].toLatin1());
}

}  // namespace

StaffView::StaffView(const SearchMelody& melody, QWidget* parent) : QWidget(parent), melody_(melody) {
  setFocusPolicy(Qt::StrongFocus);
  setAttribute(Qt::WA_OpaquePaintEvent);
  setSizePolicy(QSizePolicy::Expanding, QSizePolicy::MinimumExpanding);
  setAccessibleName(QtText(texts::StaffName));
  MelodyChanged();
}

QSize StaffView::sizeHint() const {
  return {560, kHeight};
}
QSize StaffView::minimumSizeHint() const {
  return {kMinimumWidth, kHeight};
}

void StaffView::MelodyChanged() {
  const std::string spoken = SpokenMelody(melody_.elements);
  setAccessibleDescription(spoken.empty() ? QtText(texts::StaffEmpty) : ToQt(spoken));
  update();
}

double StaffView::PlaceY(int place) const {
  // Lines of one pixel fill whole pixels.
  return height() / 2 + 0.5 - (place - kMiddlePlace) * kStaffSpace / 2.0;
}

void StaffView::DrawNote(QPainter& painter, const NotePlace& note) const {
  const auto fill = [&](const QPainterPath& shape, double x, double y) {
    painter.save();
    painter.translate(x, y);
    painter.scale(kStaffSpace, kStaffSpace);
    painter.drawPath(shape);
    painter.restore();
  };
  const double y = PlaceY(note.rest ? kMiddlePlace : note.place);
  const double width = HeadWidth(note.head) * kStaffSpace;
  if (note.rest) {
    fill(RestShape(note.head, note.flags), note.x, y);
  } else {
    for (const int line : note.ledgerLines) {
      painter.drawRect(
          QRectF(note.x - kLedgerOverhang, PlaceY(line) - 0.5, width + 2 * kLedgerOverhang, 1.0));
    }
    fill(AccidentalShape(note.accidental), note.accidentalX, y);
    fill(HeadShape(note.head), note.x, y);
    if (note.stem) fill(StemShape(note.head, note.stemUp, note.flags, note.stemLength), note.x, y);
  }
  // A dot beside a head on a line stands in the space above it.
  const bool onLine = !note.rest && note.place % 2 == 0;
  if (note.dotted) fill(DotShape(), note.x + width + 5.0, y - (onLine || note.rest ? kStaffSpace / 2 : 0.0));
}

void StaffView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().base());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);

  const QColor ink = palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Text);
  QColor lines = ink;
  lines.setAlphaF(0.55F);
  for (int line = 0; line <= 8; line += 2) {
    painter.fillRect(QRectF(kStaffLeft, PlaceY(line) - 0.5, width() - 2 * kStaffLeft, 1.0), lines);
  }
  painter.setBrush(ink);
  painter.save();
  painter.translate(kClefLeft, PlaceY(melody_.clef == Clef::Treble ? 2 : 6));
  painter.scale(kStaffSpace, kStaffSpace);
  painter.drawPath(ClefShape(melody_.clef));
  painter.restore();

  for (const NotePlace& note : LayOutNotes(melody_.elements, melody_.clef)) DrawNote(painter, note);

  const double cursor = CursorX(melody_.elements, melody_.cursor);
  const QColor mark = hasFocus() ? palette().color(QPalette::Highlight) : lines;
  painter.fillRect(QRectF(cursor - 1.0, PlaceY(8) - 2.5 * kStaffSpace, 2.0, 9.0 * kStaffSpace), mark);
  if (hasFocus()) {
    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2.0));
    painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
  }
}

void StaffView::keyPressEvent(QKeyEvent* event) {
  if (const auto command = CommandOf(*event)) {
    emit CommandGiven(*command);
  } else {
    QWidget::keyPressEvent(event);
  }
}

void StaffView::mousePressEvent(QMouseEvent* event) {
  setFocus(Qt::MouseFocusReason);
  if (event->button() == Qt::LeftButton)
    emit PositionPicked(PositionAt(melody_.elements, event->position().x()));
}

void StaffView::focusInEvent(QFocusEvent* event) {
  QWidget::focusInEvent(event);
  update();
}
void StaffView::focusOutEvent(QFocusEvent* event) {
  QWidget::focusOutEvent(event);
  update();
}

}  // namespace ts5
