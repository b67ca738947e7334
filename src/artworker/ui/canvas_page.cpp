#include "artworker/ui/canvas_page.h"

#include <QGridLayout>
#include <QScrollArea>
#include <QScrollBar>
#include <algorithm>

#include "artworker/ui/layout_canvas.h"
#include "artworker/ui/layout_ruler.h"

namespace ts5::artworker {

CanvasPage::CanvasPage(Scene& scene, ArtworkObjectId id, QWidget* parent)
    : QWidget(parent),
      canvas_(new LayoutCanvas(scene, id)),
      area_(new QScrollArea(this)),
      across_(new LayoutRuler(Qt::Horizontal, this)),
      down_(new LayoutRuler(Qt::Vertical, this)) {
  area_->setWidget(canvas_);
  area_->setBackgroundRole(QPalette::Mid);
  area_->setFocusPolicy(Qt::NoFocus);
  auto* const grid = new QGridLayout(this);
  grid->setContentsMargins(0, 0, 0, 0);
  grid->setSpacing(0);
  grid->addWidget(across_, 0, 1);
  grid->addWidget(down_, 1, 0);
  grid->addWidget(area_, 1, 1);
  connect(canvas_, &LayoutCanvas::Zoomed, this, [this] { PlaceRulers(); });
  connect(canvas_, &LayoutCanvas::MouseAt, this, [this](QPointF at) {
    across_->ShowMouse(at.x());
    down_->ShowMouse(at.y());
  });
  for (QScrollBar* bar : {area_->horizontalScrollBar(), area_->verticalScrollBar()})
    connect(bar, &QScrollBar::valueChanged, this, [this] { PlaceRulers(); });
}

QPointF CanvasPage::VisibleCorner() const {
  const QPointF corner = canvas_->MillimetresAt(-QPointF(canvas_->pos()));
  return {std::max(0.0, corner.x()), std::max(0.0, corner.y())};
}

void CanvasPage::ShowRulers(bool shown, bool originInMiddle, bool divide) {
  originInMiddle_ = originInMiddle;
  divide_ = divide;
  across_->setVisible(shown);
  down_->setVisible(shown);
  PlaceRulers();
}

void CanvasPage::Refresh() {
  canvas_->Refresh();
  PlaceRulers();
}

void CanvasPage::PlaceRulers() {
  const ArtworkObjectId id = canvas_->Id();
  const QSizeF extent = ExtentOf(canvas_->GetScene().editor.Layout().Object(id), id);
  const QPoint start = canvas_->pos() + QPoint(LayoutCanvas::kMargin, LayoutCanvas::kMargin) +
                       QPoint(area_->frameWidth(), area_->frameWidth());
  const double scale = canvas_->Scale();
  across_->Show({static_cast<double>(start.x()), scale, extent.width(), originInMiddle_, divide_});
  down_->Show({static_cast<double>(start.y()), scale, extent.height(), originInMiddle_, divide_});
}

void CanvasPage::resizeEvent(QResizeEvent* event) {
  QWidget::resizeEvent(event);
  PlaceRulers();
}

void CanvasPage::showEvent(QShowEvent* event) {
  QWidget::showEvent(event);
  Refresh();
}

}  // namespace ts5::artworker
