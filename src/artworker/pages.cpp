#include "artworker/pages.h"

#include <QPageSize>
#include <QPainter>
#include <QPdfWriter>
#include <algorithm>
#include <cmath>

#include "frame/texts.h"
#include "platform/base/strings.h"
#include "platform/files/staged_device.h"

namespace ts5::artworker {
namespace {

constexpr int kPdfDpi = 1200;  // of the coordinates; what is drawn stays vectors
constexpr double kInch = 25.4;
constexpr double kMaxPictureDots = 300'000'000;  // in all

}  // namespace

QPageLayout PageOf(Size sides) {
  const QSizeF sheet(sides.width, sides.height);
  QPageSize size(sheet, QPageSize::Millimeter, {}, QPageSize::FuzzyOrientationMatch);
  const bool across = sheet.width() > sheet.height();
  if (size.id() == QPageSize::Custom && across)
    size = QPageSize(sheet.transposed(), QPageSize::Millimeter, {}, QPageSize::ExactMatch);
  return {size, across ? QPageLayout::Landscape : QPageLayout::Portrait, QMarginsF(),
          QPageLayout::Millimeter};
}

struct PdfDocument::Parts {
  explicit Parts(StagedFile& file) : device(file), writer(&device) {}
  StagedDevice device;
  QPdfWriter writer;
  QPainter painter;
};

PdfDocument::PdfDocument(StagedFile& file, const QString& title) : parts_(std::make_unique<Parts>(file)) {
  parts_->writer.setTitle(title);
  parts_->writer.setCreator(QString::fromUtf8(Text(texts::ApplicationTitle)));
  parts_->writer.setResolution(kPdfDpi);
}

PdfDocument::~PdfDocument() = default;

bool PdfDocument::BeginPage(Size sheet, const PrinterFit& fit) {
  constexpr double kTenths = 10;
  QPainter& painter = parts_->painter;
  parts_->writer.setPageLayout(PageOf(sheet));
  if (painter.isActive() ? !parts_->writer.newPage() : !painter.begin(&parts_->writer)) return false;
  if (Broken()) return false;
  painter.resetTransform();
  painter.scale(kPdfDpi / kInch, kPdfDpi / kInch);
  painter.translate(fit.right / kTenths, fit.down / kTenths);
  painter.scale(double{1} * fit.across / kFullFitScale, double{1} * fit.along / kFullFitScale);
  return true;
}

QPainter& PdfDocument::Page() {
  return parts_->painter;
}

bool PdfDocument::Broken() const {
  return parts_->device.Broken();
}

Outcome PdfDocument::Finish() {
  const bool ended = parts_->painter.isActive() && parts_->painter.end();
  return ended && !Broken() ? Outcome::Success : Outcome::WriteFailed;
}

QImage PictureOf(const ObjectPainting& painting, ArtworkObjectId id, double dpi) {
  const QSizeF dots = ExtentOf(painting.layout.Object(id), id) * (dpi / kInch);
  if (!(std::max(dots.width(), dots.height()) <= kMaxPictureSide &&
        dots.width() * dots.height() <= kMaxPictureDots))
    return {};
  QImage picture(dots.toSize().expandedTo({1, 1}), QImage::Format_RGB32);
  if (picture.isNull()) return {};
  picture.fill(Qt::white);
  const int perMetre = static_cast<int>(std::lround(dpi / kInch * 1000));
  picture.setDotsPerMeterX(perMetre);
  picture.setDotsPerMeterY(perMetre);
  QPainter painter(&picture);
  painter.scale(dpi / kInch, dpi / kInch);
  RenderObject(painter, painting, id);
  return picture;
}

}  // namespace ts5::artworker
