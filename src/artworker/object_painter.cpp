#include "artworker/object_painter.h"

#include <QFontInfo>
#include <QPaintEngine>
#include <QPainter>
#include <QPainterPath>
#include <QSvgRenderer>
#include <algorithm>
#include <array>
#include <cmath>

#include "artworker/ink.h"
#include "artworker/text_layout.h"
#include "artworker/texts.h"
#include "platform/base/strings.h"

namespace ts5::artworker {
namespace {

constexpr double kBoundaryPen = 0.1;        // millimetres
constexpr double kCornerPart = 0.1;         // of the longer side
constexpr double kNoticeMillimetres = 3.5;  // height of the letters
constexpr double kInch = 25.4;

// Faces whose letters are as wide as those of others: a layout looks the same with either.
struct SameMeasures {
  const char* face;
  const char* standIn;
};
constexpr std::array kSameMeasures = {SameMeasures{"Arial", "Liberation Sans"},
                                      SameMeasures{"Helvetica", "Liberation Sans"},
                                      SameMeasures{"Times New Roman", "Liberation Serif"},
                                      SameMeasures{"Times", "Liberation Serif"},
                                      SameMeasures{"Courier New", "Liberation Mono"},
                                      SameMeasures{"Courier", "Liberation Mono"}};

QPainterPath ShapeOf(const ArtworkObject& object, ArtworkObjectId id) {
  const QRectF rect({0, 0}, ExtentOf(object, id));
  QPainterPath path;
  if (id != ArtworkObjectId::Label) {
    path.addRect(rect);
    return path;
  }
  path.addEllipse(rect);
  const double hole = object.size.height / 2.0;
  QPainterPath inner;
  inner.addEllipse(rect.center(), hole, hole);
  return path.subtracted(inner);
}

void PaintBoundary(QPainter& painter, const ArtworkObject& object, ArtworkObjectId id) {
  const QRectF rect({0, 0}, ExtentOf(object, id));
  painter.setPen(QPen(Qt::black, kBoundaryPen));
  painter.setBrush(Qt::NoBrush);
  if (id == ArtworkObjectId::Label) {
    painter.drawEllipse(rect);
    painter.drawEllipse(rect.center(), object.size.height / 2.0, object.size.height / 2.0);
    return;
  }
  painter.drawRect(rect);
  for (const double fold : FoldsOf(object, id))
    painter.drawLine(QPointF(fold, rect.top()), QPointF(fold, rect.bottom()));
}

// How many dots of the device a millimetre has.
double DotsPerMillimetre(const QPainter& painter) {
  const QTransform& t = painter.deviceTransform();
  return std::hypot(t.m11(), t.m12());
}

// The drawing of one element.
class ElementPainter {
 public:
  ElementPainter(QPainter& painter, const ObjectPainting& painting, const ArtworkElement& element,
                 const QRectF& rect, const QPainterPath& object)
      : painter_(painter), painting_(painting), element_(element), rect_(rect) {
    const double dot = 1 / std::max(DotsPerMillimetre(painter), 1e-9);
    const auto measure = [dot](std::int32_t tenths) {
      return tenths == 0 ? 0.0 : std::max(tenths * 0.1, dot);
    };
    border_ = measure(element.borderWidth);
    inset_ = border_ + measure(element.borderGap);
    corner_ = element.roundCorners ? std::max(rect.width(), rect.height()) * kCornerPart : 0;
    shape_ = Outline(border_ / 2).intersected(object);
    object_ = object;
  }

  void operator()(const TextField& field) const {
    Ground(field.fill);
    const TextPlan plan =
        PlanText(field, QRectF(rect_.topLeft() * kUnitsPerMillimetre, rect_.size() * kUnitsPerMillimetre),
                 inset_ * kUnitsPerMillimetre);
    painter_.save();
    painter_.setClipPath(field.fixedFont ? object_ : shape_, Qt::IntersectClip);
    painter_.setPen(ColourOf(static_cast<std::uint32_t>(field.colour)));
    painter_.scale(1 / kUnitsPerMillimetre, 1 / kUnitsPerMillimetre);
    painter_.setTransform(plan.transform, true);
    painter_.setFont(plan.font);
    for (const TextRun& run : plan.runs) painter_.drawText(run.baseline, run.text);
    painter_.restore();
    Border();
  }
  void operator()(const Ellipse& ellipse) const {
    Ground(ellipse.fill);
    Border();
  }
  void operator()(const Image& image) const {
    if (image.fill.background != kNoGround) Ground(image.fill);
    Picture(image);
    Border();
  }
  void operator()(const UnknownContent& /*content*/) const { Border(); }

 private:
  [[nodiscard]] QPainterPath Outline(double inset) const {
    const QRectF rect = rect_.adjusted(inset, inset, -inset, -inset);
    QPainterPath path;
    if (std::holds_alternative<Ellipse>(element_.content)) {
      path.addEllipse(rect);
    } else if (corner_ > 0) {
      path.addRoundedRect(rect, corner_, corner_);
    } else {
      path.addRect(rect);
    }
    return path;
  }

  // The background, up to the inset.
  void Ground(const Fill& fill) const {
    const double opacity = Opacity(fill.transparency);
    if (opacity == 0) return;
    painter_.save();
    painter_.setClipPath(shape_, Qt::IntersectClip);
    painter_.setOpacity(opacity);
    painter_.fillPath(Outline(inset_), BrushOf(painting_.backgrounds, fill.background, rect_));
    painter_.restore();
  }

  void Picture(const Image& image) const {
    const QRectF target = rect_.adjusted(inset_, inset_, -inset_, -inset_);
    if (target.width() <= 0 || target.height() <= 0) return;
    painter_.save();
    painter_.setClipPath(shape_, Qt::IntersectClip);
    if (!DrawLines(image, target)) DrawDots(image, target);
    painter_.restore();
  }

  // Around the middle of the target.
  void Mirror(const Image& image, const QRectF& target) const {
    painter_.translate(target.center());
    painter_.scale((image.mirror & kMirrorHorizontal) != 0 ? -1 : 1,
                   (image.mirror & kMirrorVertical) != 0 ? -1 : 1);
  }
  static QRectF Around(const QRectF& target) {
    return {-target.width() / 2, -target.height() / 2, target.width(), target.height()};
  }

  // A drawing in a document stays one, unless something is to shine through: its parts would do so one by
  // one. False when it was not drawn.
  [[nodiscard]] bool DrawLines(const Image& image, const QRectF& target) const {
    if (image.fill.transparency != 0 || painter_.paintEngine()->type() != QPaintEngine::Pdf) return false;
    const QByteArray bytes = Pictures::Drawing(image.file);
    if (bytes.isEmpty()) return false;
    QSvgRenderer drawing(bytes);
    if (!drawing.isValid()) return false;
    Mirror(image, target);
    drawing.render(&painter_, Around(target));
    return true;
  }

  void DrawDots(const Image& image, const QRectF& target) const {
    double dots = DotsPerMillimetre(painter_);
    if (painting_.picturesDpi > 0) dots = std::min(dots, painting_.picturesDpi / kInch);
    const QSize most = (target.size() * dots).toSize().expandedTo({1, 1});
    const QImage& picture = painting_.draft ? painting_.pictures.Draft(image.file, most)
                                            : painting_.pictures.Scaled(image.file, most);
    if (picture.isNull()) return Notice(target);
    painter_.setOpacity(Opacity(image.fill.transparency));
    Mirror(image, target);
    painter_.drawImage(Around(target), picture);
  }

  void Notice(const QRectF& target) const {
    QFont font(QStringLiteral("Arial"));
    font.setPixelSize(kBaseFontPixels);
    font.setHintingPreference(QFont::PreferNoHinting);
    const double scale = std::min(kNoticeMillimetres, target.height() / 3) / kBaseFontPixels;
    painter_.fillRect(target, Qt::white);  // so that it can be read on every ground
    painter_.setPen(Qt::black);
    painter_.setFont(font);
    painter_.translate(target.topLeft());
    painter_.scale(scale, scale);
    painter_.drawText(QRectF({0, 0}, target.size() / scale), Qt::AlignCenter | Qt::TextWordWrap,
                      QString::fromUtf8(Text(texts::PictureMissing)));
  }

  void Border() const {
    if (border_ == 0) return;
    painter_.save();
    painter_.setClipPath(object_, Qt::IntersectClip);
    QPen pen(ColourOf(static_cast<std::uint32_t>(element_.borderColour)), border_);
    pen.setJoinStyle(Qt::MiterJoin);
    painter_.strokePath(Outline(border_ / 2), pen);
    painter_.restore();
  }

  QPainter& painter_;
  const ObjectPainting& painting_;
  const ArtworkElement& element_;
  QRectF rect_;
  double border_ = 0;
  double inset_ = 0;
  double corner_ = 0;
  QPainterPath shape_;  // of the element, as far as it lies on the object
  QPainterPath object_;
};

}  // namespace

void RenderObject(QPainter& painter, const ObjectPainting& painting, ArtworkObjectId id) {
  const ArtworkObject& object = painting.layout.Object(id);
  const QPainterPath shape = ShapeOf(object, id);
  painter.save();
  painter.setRenderHints(QPainter::Antialiasing | QPainter::TextAntialiasing |
                         QPainter::SmoothPixmapTransform);
  painter.fillRect(QRectF({0, 0}, ExtentOf(object, id)), Qt::white);
  if (painting.boundary) PaintBoundary(painter, object, id);
  for (const ArtworkElement& element : painting.layout.elements) {
    if (element.object != id) continue;
    const ElementPainter paint(painter, painting, element, PlaceOf(element, object), shape);
    std::visit(paint, element.content);
  }
  painter.restore();
}

bool FontMissing(const std::string& face) {
  const QString name = QString::fromStdString(face);
  const QString shown = QFontInfo(QFont(name)).family();
  if (shown.startsWith(name, Qt::CaseInsensitive)) return false;
  return std::ranges::none_of(kSameMeasures, [&](const SameMeasures& pair) {
    return name.compare(QLatin1String(pair.face), Qt::CaseInsensitive) == 0 &&
           shown == QLatin1String(pair.standIn);
  });
}

}  // namespace ts5::artworker
