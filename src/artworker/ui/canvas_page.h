// A page of the editor: the canvas of an object in its scrolled area, with its rulers.
#pragma once

#include <QWidget>

#include "artworker/ui/scene.h"

class QScrollArea;

namespace ts5::artworker {

class LayoutCanvas;
class LayoutRuler;

class CanvasPage : public QWidget {
  Q_OBJECT

 public:
  // The scene outlives the page.
  CanvasPage(Scene& scene, ArtworkObjectId id, QWidget* parent = nullptr);

  [[nodiscard]] LayoutCanvas& Canvas() { return *canvas_; }
  // The top left corner of what can be seen of the object, in millimetres.
  [[nodiscard]] QPointF VisibleCorner() const;
  void ShowRulers(bool shown, bool originInMiddle, bool divide);
  void Refresh();

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void showEvent(QShowEvent* event) override;

 private:
  void PlaceRulers();

  LayoutCanvas* canvas_;
  QScrollArea* area_;
  LayoutRuler* across_;
  LayoutRuler* down_;
  bool originInMiddle_ = false;
  bool divide_ = true;
};

}  // namespace ts5::artworker
