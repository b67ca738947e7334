// The canvas of one object: draws it with its elements and turns the mouse and the keys into changes.
#pragma once

#include <QPixmap>
#include <QWidget>
#include <optional>
#include <vector>

#include "artworker/snapping.h"
#include "artworker/ui/scene.h"

namespace ts5::artworker {

class LayoutCanvas : public QWidget {
  Q_OBJECT

 public:
  static constexpr int kMargin = 20;  // pixels between the canvas's corner and the object's
  static constexpr double kLeastZoom = 0.7;
  static constexpr double kMostZoom = 8;
  static constexpr double kZoomStep = 0.1;

  // The scene outlives the canvas.
  LayoutCanvas(Scene& scene, ArtworkObjectId id, QWidget* parent = nullptr);

  [[nodiscard]] ArtworkObjectId Id() const { return id_; }
  [[nodiscard]] double Zoom() const { return zoom_; }
  void SetZoom(double zoom);
  // Pixels to a millimetre at the zoom.
  [[nodiscard]] double Scale() const;
  // What was changed elsewhere: the layout, the selection, the tool, the backgrounds.
  void Refresh();
  // Where on the object a point of the canvas is, in millimetres.
  [[nodiscard]] QPointF MillimetresAt(QPointF point) const;
  // An element in pixels of the canvas.
  [[nodiscard]] QRectF RectOf(std::size_t element) const;
  [[nodiscard]] const Scene& GetScene() const { return scene_; }
  // Selects as a click does it; extend: in and out of what is selected.
  void Choose(std::size_t element, bool extend);

  [[nodiscard]] QSize sizeHint() const override;

 signals:
  void Edited();  // the layout has changed
  void SelectionChanged();
  void ElementOpened(std::size_t element);
  void Drawn(const QRectF& place);  // with a tool for a new element; millimetres
  void ToolWanted(ts5::artworker::Tool tool);
  void Zoomed();
  void MenuWanted(const QPoint& global);
  void MouseAt(QPointF millimetres);

 protected:
  void paintEvent(QPaintEvent* event) override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseMoveEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void mouseDoubleClickEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;
  void wheelEvent(QWheelEvent* event) override;
  void changeEvent(QEvent* event) override;
  void focusInEvent(QFocusEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;

 private:
  // What the pressed button does until it is released.
  struct Drag {
    enum class Kind : std::uint8_t { Elements, Band, Draw };
    Kind kind = Kind::Elements;
    Hit hit = {};
    QPointF start;  // pixels on the object
    QPointF now;
    Qt::KeyboardModifiers modifiers;
    bool moved = false;
    std::vector<Guide> guides = {};
  };

  [[nodiscard]] QPointF OnObject(QPointF point) const { return point - QPointF(kMargin, kMargin); }
  [[nodiscard]] QRectF ObjectRect() const;  // in pixels of the canvas
  void ZoomAt(double zoom, QPointF point);
  void ClickZoom(QPointF point, bool in);
  void PressDesign(QMouseEvent& event);
  // What the mouse takes hold of at a point of the object. A tool for a new element draws on what is fixed:
  // a ground that fills the object leaves it no other spot.
  [[nodiscard]] std::optional<Hit> HeldAt(QPointF point) const;
  // What a click in the middle of what can be seen would do, for those who have no mouse.
  void UseToolInTheMiddle();
  void DragElements(Drag& drag);
  [[nodiscard]] SnapGround Ground() const;
  [[nodiscard]] QRectF DrawnRect(const Drag& drag) const;  // pixels on the object
  void EndDrag();
  void ShowCursor(QPointF point);
  void TellSelection();  // to screen readers
  bool MoveByKey(const QKeyEvent& event);
  void Change(const LayoutEditor::Change& change);
  void PaintObjectNow(QPainter& painter, const ArtworkLayout& layout, bool draft);
  void PaintEdges(QPainter& painter) const;
  void PaintDrag(QPainter& painter) const;

  Scene& scene_;
  ArtworkObjectId id_;
  double zoom_ = 1;
  std::optional<Drag> drag_;
  std::optional<ArtworkLayout> dragged_;  // the layout as it would be after the drag
  QPixmap picture_;                       // the object as it is, until something changes
};

}  // namespace ts5::artworker
