#include "artworker/object_picture.h"

#include <QPainter>
#include <QPainterPath>

namespace ts5::artworker {

void PaintInto(QPainter& painter, const ObjectPainting& painting, ArtworkObjectId id, const QRectF& rect) {
  const QSizeF extent = ExtentOf(painting.layout.Object(id), id);
  const QSizeF size = extent.scaled(rect.size(), Qt::KeepAspectRatio);
  painter.save();
  painter.translate(rect.center() - QPointF(size.width() / 2, size.height() / 2));
  painter.scale(size.width() / extent.width(), size.height() / extent.height());
  QPainterPath clip;
  if (id == ArtworkObjectId::Label) {
    const double hole = painting.layout.Object(id).size.height / 2.0;
    clip.addEllipse(QRectF({0, 0}, extent));
    clip.addEllipse(QRectF({0, 0}, extent).center(), hole, hole);
  } else {
    clip.addRect(QRectF({0, 0}, extent));
  }
  painter.setClipPath(clip);
  RenderObject(painter, painting, id);
  painter.restore();
}

}  // namespace ts5::artworker
