#include "artworker/ui/layout_canvas.h"

#include <QAccessible>
#include <QApplication>
#include <QKeyEvent>
#include <QPainter>
#include <algorithm>
#include <cmath>

#include "artworker/object_painter.h"
#include "artworker/texts.h"
#include "artworker/ui/canvas_marks.h"

namespace ts5::artworker {
namespace {

constexpr double kInch = 25.4;
constexpr double kSnapReach = 6;     // pixels
constexpr int kLeastDrawn = 6;       // pixels; what is smaller both ways is no element
constexpr double kKeyStep = 10;      // pixels
constexpr double kTextHeight = 10;   // millimetres of a text field that is made with the keys
constexpr double kZoomSlack = 1e-6;  // tenths added up are not exact
constexpr int kMostPicture = 6000;   // pixels; a larger object is drawn each time

bool DrawsNew(Tool tool) {
  return tool == Tool::Text || tool == Tool::Ellipse || tool == Tool::Image;
}

Qt::CursorShape CursorOf(const Zone& zone) {
  const bool across = zone.left || zone.right;
  const bool down = zone.top || zone.bottom;
  if (across && down) return zone.left == zone.top ? Qt::SizeFDiagCursor : Qt::SizeBDiagCursor;
  return across ? Qt::SizeHorCursor : down ? Qt::SizeVerCursor : Qt::SizeAllCursor;
}

std::optional<QPointF> DirectionOf(int key) {
  switch (key) {
    case Qt::Key_Left:
      return QPointF(-1, 0);
    case Qt::Key_Right:
      return QPointF(1, 0);
    case Qt::Key_Up:
      return QPointF(0, -1);
    case Qt::Key_Down:
      return QPointF(0, 1);
    default:
      return std::nullopt;
  }
}

}  // namespace

LayoutCanvas::LayoutCanvas(Scene& scene, ArtworkObjectId id, QWidget* parent)
    : QWidget(parent), scene_(scene), id_(id) {
  setFocusPolicy(Qt::StrongFocus);
  setMouseTracking(true);
  setSizePolicy(QSizePolicy::Fixed, QSizePolicy::Fixed);
  Refresh();
}

double LayoutCanvas::Scale() const {
  return zoom_ * logicalDpiX() / kInch;
}

void LayoutCanvas::SetZoom(double zoom) {
  // To the tenth, so that steps up and down meet again.
  zoom_ = std::clamp(std::round(zoom * 10) / 10, kLeastZoom, kMostZoom);
  Refresh();
  emit Zoomed();
}

void LayoutCanvas::Refresh() {
  picture_ = {};
  resize(sizeHint());
  setFixedSize(sizeHint());
  ShowCursor(mapFromGlobal(QCursor::pos()));
  update();
}

QSize LayoutCanvas::sizeHint() const {
  const QSizeF object = ExtentOf(scene_.editor.Layout().Object(id_), id_) * Scale();
  return object.toSize() + QSize(2 * kMargin, 2 * kMargin);
}

QRectF LayoutCanvas::ObjectRect() const {
  return {QPointF(kMargin, kMargin), ExtentOf(scene_.editor.Layout().Object(id_), id_) * Scale()};
}

QPointF LayoutCanvas::MillimetresAt(QPointF point) const {
  return OnObject(point) / Scale();
}

QRectF LayoutCanvas::RectOf(std::size_t element) const {
  const ArtworkLayout& layout = scene_.editor.Layout();
  return PixelsOf(layout.elements[element], layout.Object(id_), Scale()).translated(kMargin, kMargin);
}

void LayoutCanvas::Change(const LayoutEditor::Change& change) {
  if (!scene_.editor.Apply(change)) return;
  Refresh();
  emit Edited();
}

// --- drawing

void LayoutCanvas::PaintObjectNow(QPainter& painter, const ArtworkLayout& layout, bool draft) {
  const ArtworkLayout filled = FilledLayout(layout, scene_.facts);
  painter.save();
  painter.scale(Scale(), Scale());
  const bool boundary = (scene_.boundaries >> IndexOf(id_) & 1) != 0;
  RenderObject(painter,
               {.layout = filled,
                .backgrounds = scene_.backgrounds.All(),
                .pictures = scene_.pictures,
                .boundary = boundary,
                .draft = draft},
               id_);
  painter.restore();
}

void LayoutCanvas::paintEvent(QPaintEvent* /*event*/) {
  QPainter painter(this);
  painter.fillRect(rect(), palette().color(QPalette::Mid));
  const QRectF object = ObjectRect();
  const ArtworkLayout& layout = dragged_ ? *dragged_ : scene_.editor.Layout();
  const double dots = devicePixelRatioF();
  const bool large = std::max(object.width(), object.height()) * dots > kMostPicture;
  painter.save();
  painter.translate(object.topLeft());
  if (dragged_ || large) {
    painter.setClipRect(QRectF({0, 0}, object.size()));
    PaintObjectNow(painter, layout, dragged_.has_value());
  } else if (const QSize size = (object.size() * dots).toSize(); !size.isEmpty()) {
    if (picture_.isNull()) {
      picture_ = QPixmap(size);
      picture_.setDevicePixelRatio(dots);
      picture_.fill(Qt::white);
      QPainter inner(&picture_);
      PaintObjectNow(inner, layout, false);
    }
    painter.drawPixmap(QPointF(0, 0), picture_);
  }
  painter.restore();
  painter.setRenderHint(QPainter::Antialiasing);
  PaintEdges(painter);
  for (const std::size_t index : scene_.editor.Selected()) {
    const ArtworkElement& element = layout.elements[index];
    const QRectF rect = PixelsOf(element, layout.Object(id_), Scale()).translated(kMargin, kMargin);
    PaintSelected(painter, rect, element.fixed, palette());
  }
  if (drag_) PaintDrag(painter);
  if (hasFocus()) {
    painter.setPen(QPen(palette().color(QPalette::Highlight), 2));
    painter.setBrush(Qt::NoBrush);
    painter.drawRect(QRectF(rect()).adjusted(1, 1, -1, -1));
  }
}

// Whether they are printed with lines or not.
void LayoutCanvas::PaintEdges(QPainter& painter) const {
  const QRectF object = ObjectRect();
  if (id_ == ArtworkObjectId::Label) {
    const double hole = scene_.editor.Layout().Object(id_).size.height / 2.0 * Scale();
    return PaintDiscEdges(painter, object, hole, palette());
  }
  std::vector<double> folds = Ground().folds;
  for (double& fold : folds) fold *= Scale();
  PaintPaperEdges(painter, object, folds, palette());
}

void LayoutCanvas::PaintDrag(QPainter& painter) const {
  const QPointF corner(kMargin, kMargin);
  if (drag_->kind == Drag::Kind::Elements) return PaintGuides(painter, drag_->guides, corner);
  const bool ellipse = drag_->kind == Drag::Kind::Draw && scene_.tool == Tool::Ellipse;
  PaintOutline(painter, DrawnRect(*drag_).translated(corner), ellipse);
}

// --- the mouse

void LayoutCanvas::ZoomAt(double zoom, QPointF point) {
  const QPointF millimetres = MillimetresAt(point);
  SetZoom(zoom);
  // What was under the mouse stays there, as far as the canvas can be scrolled.
  const QPointF moved = millimetres * Scale() + QPointF(kMargin, kMargin) - point;
  emit MouseAt(millimetres);
  if (parentWidget() != nullptr) move(pos() - moved.toPoint());
}

void LayoutCanvas::ClickZoom(QPointF point, bool in) {
  if (in) return ZoomAt(zoom_ + kZoomStep, point);
  if (zoom_ > kLeastZoom + kZoomSlack) ZoomAt(zoom_ - kZoomStep, point);
  if (zoom_ <= kLeastZoom + kZoomSlack) emit ToolWanted(Tool::Design);
}

void LayoutCanvas::mousePressEvent(QMouseEvent* event) {
  setFocus(Qt::MouseFocusReason);
  if (event->button() != Qt::LeftButton || drag_) return;
  if (scene_.tool == Tool::ZoomIn || scene_.tool == Tool::ZoomOut)
    return ClickZoom(event->position(), scene_.tool == Tool::ZoomIn);
  PressDesign(*event);
  update();
}

void LayoutCanvas::PressDesign(QMouseEvent& event) {
  const QPointF point = OnObject(event.position());
  Drag drag{.start = point, .now = point, .modifiers = event.modifiers()};
  if (const auto hit = HeldAt(point)) {
    const bool extend = (event.modifiers() & (Qt::ShiftModifier | Qt::ControlModifier)) != 0;
    // A click on one of several selected ones takes them all along.
    if (extend || !scene_.editor.IsSelected(hit->element)) scene_.editor.Click(hit->element, extend);
    emit SelectionChanged();
    if (!scene_.editor.IsSelected(hit->element)) return;
    drag.hit = *hit;
  } else if (scene_.tool == Tool::Move) {
    drag.kind = Drag::Kind::Band;
  } else if (DrawsNew(scene_.tool)) {
    drag.kind = Drag::Kind::Draw;
  } else {
    scene_.editor.Select({});
    emit SelectionChanged();
    return;
  }
  drag_ = drag;
}

std::optional<Hit> LayoutCanvas::HeldAt(QPointF point) const {
  const ArtworkLayout& layout = scene_.editor.Layout();
  const auto hit = HitAt(layout, id_, scene_.editor.Selected(), point, Scale());
  const bool ground =
      hit && hit->zone.Moves() && layout.elements[hit->element].fixed && DrawsNew(scene_.tool);
  return ground ? std::nullopt : hit;
}

void LayoutCanvas::mouseMoveEvent(QMouseEvent* event) {
  emit MouseAt(MillimetresAt(event->position()));
  if (!drag_) return ShowCursor(event->position());
  drag_->now = OnObject(event->position());
  drag_->modifiers = event->modifiers();
  if ((drag_->now - drag_->start).manhattanLength() >= 2) drag_->moved = true;
  if (drag_->kind == Drag::Kind::Elements && drag_->moved) DragElements(*drag_);
  update();
}

SnapGround LayoutCanvas::Ground() const {
  const ArtworkObject& object = scene_.editor.Layout().Object(id_);
  return {.object = QRectF({0, 0}, ExtentOf(object, id_)), .folds = FoldsOf(object, id_)};
}

void LayoutCanvas::DragElements(Drag& drag) {
  const ArtworkLayout& layout = scene_.editor.Layout();
  const Selection& selection = scene_.editor.Selected();
  const bool moves = drag.hit.zone.Moves();
  QPointF offset = (drag.now - drag.start) / Scale();
  // Shift keeps to one direction, Alt lets go of the guides.
  if (moves && (drag.modifiers & Qt::ShiftModifier) != 0)
    (std::abs(offset.x()) < std::abs(offset.y()) ? offset.rx() : offset.ry()) = 0;
  const QRectF before =
      moves ? PlaceOfAll(layout, selection) : PlaceOf(layout.elements[drag.hit.element], layout.Object(id_));
  drag.guides.clear();
  if (scene_.guides && (drag.modifiers & Qt::AltModifier) == 0) {
    SnapGround ground = Ground();
    ground.reach = kSnapReach / Scale();
    for (const std::size_t index : ElementsOf(layout, id_)) {
      if (moves ? !scene_.editor.IsSelected(index) : index != drag.hit.element)
        ground.others.push_back(PlaceOf(layout.elements[index], layout.Object(id_)));
    }
    const QRectF now = moves ? before.translated(offset) : Resized(before, drag.hit.zone, offset);
    const Snap snap = SnapOf(now, drag.hit.zone, ground);
    offset += snap.offset;
    for (const Guide& guide : snap.guides) drag.guides.push_back({guide.from * Scale(), guide.to * Scale()});
  }
  dragged_ = layout;
  if (moves) {
    MoveBy(*dragged_, selection, offset);
  } else {
    SetPlace(*dragged_, drag.hit.element, Resized(before, drag.hit.zone, offset));
  }
}

QRectF LayoutCanvas::DrawnRect(const Drag& drag) const {
  if (drag.kind == Drag::Kind::Band) return QRectF(drag.start, drag.now).normalized();
  const bool even = (drag.modifiers & Qt::ControlModifier) != 0;
  return DrawnBox(drag.start, drag.now, scene_.tool == Tool::Ellipse, even);
}

void LayoutCanvas::mouseReleaseEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton || !drag_) return;
  drag_->now = OnObject(event->position());
  EndDrag();
}

void LayoutCanvas::EndDrag() {
  const Drag drag = *std::exchange(drag_, std::nullopt);
  const auto layout = std::exchange(dragged_, std::nullopt);
  update();
  switch (drag.kind) {
    case Drag::Kind::Elements:
      if (layout) {
        Change([&layout](ArtworkLayout& changed, Selection&) { changed = *layout; });
      } else if ((drag.modifiers & (Qt::ShiftModifier | Qt::ControlModifier)) == 0) {
        // One of several was held to take them all along, and it was a click.
        scene_.editor.Click(drag.hit.element, false);
        emit SelectionChanged();
      }
      break;
    case Drag::Kind::Band:
      if (Selection inside = InsideBand(scene_.editor.Layout(), id_, DrawnRect(drag), Scale());
          !inside.empty()) {
        scene_.editor.Select(std::move(inside));
        emit SelectionChanged();
      }
      break;
    case Drag::Kind::Draw: {
      const QRectF rect = DrawnRect(drag);
      const auto ground = HitAt(scene_.editor.Layout(), id_, {}, drag.start, Scale());
      if (rect.width() >= kLeastDrawn || rect.height() >= kLeastDrawn) {
        emit Drawn(QRectF(rect.topLeft() / Scale(), rect.size() / Scale()));
      } else if (ground) {
        Choose(ground->element, false);
      }
      break;
    }
  }
}

void LayoutCanvas::mouseDoubleClickEvent(QMouseEvent* event) {
  if (event->button() != Qt::LeftButton) return;
  const auto hit = HitAt(scene_.editor.Layout(), id_, {}, OnObject(event->position()), Scale());
  const bool zooms = scene_.tool == Tool::ZoomIn || scene_.tool == Tool::ZoomOut;
  if (zooms || !hit) return mousePressEvent(event);
  drag_.reset();
  scene_.editor.Click(hit->element, false);
  emit SelectionChanged();
  emit ElementOpened(hit->element);
}

void LayoutCanvas::contextMenuEvent(QContextMenuEvent* event) {
  drag_.reset();
  if (event->reason() == QContextMenuEvent::Mouse) {
    const auto hit = HitAt(scene_.editor.Layout(), id_, {}, OnObject(event->pos()), Scale());
    if (hit && !scene_.editor.IsSelected(hit->element)) {
      scene_.editor.Click(hit->element, false);
      emit SelectionChanged();
    }
    return emit MenuWanted(event->globalPos());
  }
  // By its key: at what is selected.
  const Selection& selection = scene_.editor.Selected();
  emit MenuWanted(
      mapToGlobal(selection.empty() ? rect().center() : RectOf(selection.back()).center().toPoint()));
}

void LayoutCanvas::ShowCursor(QPointF point) {
  if (scene_.tool == Tool::ZoomIn || scene_.tool == Tool::ZoomOut) return setCursor(Qt::PointingHandCursor);
  if (const auto hit = HeldAt(OnObject(point))) return setCursor(CursorOf(hit->zone));
  setCursor(DrawsNew(scene_.tool) ? Qt::CrossCursor : Qt::ArrowCursor);
}

void LayoutCanvas::wheelEvent(QWheelEvent* event) {
  if ((event->modifiers() & Qt::ControlModifier) == 0) return QWidget::wheelEvent(event);
  ZoomAt(zoom_ + (event->angleDelta().y() > 0 ? kZoomStep : -kZoomStep), event->position());
  event->accept();
}

// --- the keys

bool LayoutCanvas::MoveByKey(const QKeyEvent& event) {
  const auto direction = DirectionOf(event.key());
  if (!direction) return false;
  const Selection selection = scene_.editor.Selected();
  const bool shift = (event.modifiers() & Qt::ShiftModifier) != 0;
  const bool control = (event.modifiers() & Qt::ControlModifier) != 0;
  const double pixel = 1 / Scale();
  if (shift) {
    const QSizeF growth(direction->x() * pixel, direction->y() * pixel);
    Change([&](ArtworkLayout& layout, Selection&) { GrowBy(layout, selection, growth, pixel); });
    return !selection.empty();
  }
  if (scene_.tool != Tool::Move) return false;
  const QPointF offset = *direction * (control ? pixel : pixel * kKeyStep);
  Change([&](ArtworkLayout& layout, Selection&) { MoveBy(layout, selection, offset); });
  return true;
}

void LayoutCanvas::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_Escape && drag_) {
    drag_.reset();
    dragged_.reset();
    return update();
  }
  if (event->key() == Qt::Key_Escape && !scene_.editor.Selected().empty()) {
    scene_.editor.Select({});
    update();
    return emit SelectionChanged();
  }
  if (event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown) {
    const auto next =
        NeighbourOf(scene_.editor.Layout(), id_, scene_.editor.Selected(), event->key() == Qt::Key_PageUp);
    if (next) Choose(*next, (event->modifiers() & Qt::ShiftModifier) != 0);
    return;
  }
  if (event->key() == Qt::Key_Space) return UseToolInTheMiddle();
  if (!MoveByKey(*event)) QWidget::keyPressEvent(event);
}

void LayoutCanvas::UseToolInTheMiddle() {
  const QRectF seen = ObjectRect().intersected(visibleRegion().boundingRect());
  if (scene_.tool == Tool::ZoomIn || scene_.tool == Tool::ZoomOut)
    return ClickZoom(seen.center(), scene_.tool == Tool::ZoomIn);
  if (!DrawsNew(scene_.tool) || seen.isEmpty()) return;
  QRectF place(QPointF(), seen.size() / (2 * Scale()));
  if (scene_.tool == Tool::Text) place.setHeight(std::min(place.height(), kTextHeight));
  place.moveCenter(MillimetresAt(seen.center()));
  emit Drawn(place);
}

void LayoutCanvas::Choose(std::size_t element, bool extend) {
  scene_.editor.Click(element, extend);
  update();
  TellSelection();
  emit SelectionChanged();
}

void LayoutCanvas::TellSelection() {
  const Selection all = ElementsOf(scene_.editor.Layout(), id_);
  const auto at = std::ranges::find(all, scene_.editor.Selected().back());
  if (at == all.end() || !QAccessible::isActive()) return;
  QAccessibleEvent focus(this, QAccessible::Focus);
  focus.setChild(static_cast<int>(at - all.begin()));
  QAccessible::updateAccessibility(&focus);
}

void LayoutCanvas::changeEvent(QEvent* event) {
  if (event->type() == QEvent::PaletteChange) update();
  QWidget::changeEvent(event);
}

void LayoutCanvas::focusInEvent(QFocusEvent* event) {
  update();
  QWidget::focusInEvent(event);
}

void LayoutCanvas::focusOutEvent(QFocusEvent* event) {
  update();
  QWidget::focusOutEvent(event);
}

}  // namespace ts5::artworker
