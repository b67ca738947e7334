#include "search/ui/staff_view.h"

#include <QAccessible>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>
#include <algorithm>
#include <array>
#include <cmath>
#include <optional>
#include <utility>

#include "frame/ui/qt_text.h"
#include "search/note_layout.h"
#include "search/note_names.h"
#include "search/texts.h"
#include "search/ui/melody_painter.h"

namespace ts5 {
namespace {

constexpr int kMiddlePlace = 4;
constexpr int kHeight = 150;
constexpr int kMinimumWidth = 240;
constexpr double kRoomToWrite = 90.0;    // behind the melody, before the notes grow
constexpr double kLeastContent = 480.0;  // of an empty staff
constexpr double kLargestScale = 3.0;
constexpr double kGhostOpacity = 0.4;
constexpr double kGhostBetween = 6.0;  // from the cursor's place to the left, between two elements
// Clicks farther away mean these places: three ledger lines.
constexpr int kLowestClick = -6;
constexpr int kHighestClick = 14;

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
  if (event.matches(QKeySequence::Undo)) return CommandOfKey(EditorKey::CtrlZ);
  const bool again = control && (event.key() == Qt::Key_Y || event.key() == Qt::Key_Z);
  if (event.matches(QKeySequence::Redo) || again) return CommandOfKey(EditorKey::CtrlShiftZ);
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
  setMouseTracking(true);
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

void StaffView::SetEditable(bool editable) {
  editable_ = editable;
  if (!editable) ShowGhost(std::nullopt);
}

void StaffView::MelodyChanged() {
  const std::string spoken = SpokenMelody(melody_.elements);
  setAccessibleDescription(spoken.empty() ? QtText(texts::StaffEmpty) : ToQt(spoken));
  update();
}

double StaffView::Scale() const {
  const double content = CursorX(melody_.elements, melody_.elements.size()) + kRoomToWrite;
  const double fits = std::min(height() / double{kHeight}, width() / std::max(content, kLeastContent));
  return std::clamp(std::floor(fits * 4) / 4, 1.0, kLargestScale);
}

double StaffView::MiddleY() const {
  // Lines of one pixel fill whole pixels.
  return std::floor(height() / Scale() / 2) + 0.5;
}

StaffView::Spot StaffView::SpotAt(QPointF position) const {
  const double scale = Scale();
  const double places = (MiddleY() - position.y() / scale) / (kStaffSpace / 2);
  const int place =
      std::clamp(kMiddlePlace + static_cast<int>(std::lround(places)), kLowestClick, kHighestClick);
  return {place, PositionAt(melody_.elements, position.x() / scale)};
}

std::optional<std::size_t> StaffView::ElementUnder(QPointF position) const {
  return ElementAt(melody_.elements, melody_.clef, position.x() / Scale(), SpotAt(position).place);
}

void StaffView::ShowGhost(std::optional<Spot> spot) {
  if (std::exchange(ghost_, spot) != spot) update();
}

// The note that a click enters, laid out as if it stood alone.
void StaffView::DrawGhost(QPainter& painter) const {
  const int key = KeyAtPlace(ghost_->place, melody_.clef) + static_cast<int>(melody_.accidental);
  if (key < 0 || key > 127) return;
  const auto duration =
      static_cast<std::int16_t>(melody_.noteValue + (melody_.dotted ? melody_.noteValue / 2 : 0));
  const MelodyElement element{PitchCode(key, melody_.accidental), duration};
  NotePlace note = LayOutNotes({&element, 1}, melody_.clef).front();
  const double shift = CursorX(melody_.elements, ghost_->position) - CursorX({}, 0);
  const bool between = ghost_->position < melody_.elements.size();
  note.x += shift - (between ? kGhostBetween : 0.0);
  note.accidentalX += shift - (between ? kGhostBetween : 0.0);
  painter.setOpacity(kGhostOpacity);
  PaintNote(painter, note, MiddleY());
  painter.setOpacity(1.0);
}

void StaffView::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().base());
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.save();
  const double scale = Scale();
  painter.scale(scale, scale);

  const QColor ink = palette().color(isEnabled() ? QPalette::Active : QPalette::Disabled, QPalette::Text);
  QColor lines = ink;
  lines.setAlphaF(0.55F);
  PaintStaff(painter, melody_.clef, width() / scale, MiddleY(), ink);
  for (const NotePlace& note : LayOutNotes(melody_.elements, melody_.clef))
    PaintNote(painter, note, MiddleY());
  if (ghost_) DrawGhost(painter);

  const double cursor = CursorX(melody_.elements, melody_.cursor);
  const QColor mark = hasFocus() ? palette().color(QPalette::Highlight) : lines;
  painter.fillRect(
      QRectF(cursor - 1.0, StaffPlaceY(8, MiddleY()) - 2.5 * kStaffSpace, 2.0, 9.0 * kStaffSpace), mark);
  painter.restore();
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
  if (event->button() != Qt::LeftButton) return;
  if (const auto element = ElementUnder(event->position())) {
    emit PositionPicked(*element);
  } else if (editable_) {
    const Spot spot = SpotAt(event->position());
    ShowGhost(std::nullopt);
    emit NotePicked(spot.place, spot.position);
  }
}

void StaffView::mouseMoveEvent(QMouseEvent* event) {
  const bool ghost = editable_ && !ElementUnder(event->position());
  ShowGhost(ghost ? std::optional(SpotAt(event->position())) : std::nullopt);
}

void StaffView::leaveEvent(QEvent* event) {
  QWidget::leaveEvent(event);
  ShowGhost(std::nullopt);
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
