// Sheets as pages of a PDF document, and objects as pictures.
#pragma once

#include <QImage>
#include <QPageLayout>
#include <QString>
#include <memory>

#include "artworker/object_painter.h"
#include "artworker/printer_fit.h"
#include "platform/base/outcome.h"
#include "platform/files/files.h"

namespace ts5::artworker {

inline constexpr double kPicturesDpi = 300;  // more dots than that nobody sees on paper

// A sheet without margins; its wider side tells which way up it is.
[[nodiscard]] QPageLayout PageOf(Size sheet);

// A document in a staged file, which appears whole when it is finished.
class PdfDocument {
 public:
  PdfDocument(StagedFile& file, const QString& title);
  ~PdfDocument();
  PdfDocument(const PdfDocument&) = delete;
  PdfDocument& operator=(const PdfDocument&) = delete;

  // Begins a page. What is painted on it is measured in millimetres from the corner of the sheet, and moved
  // and stretched as the printer needs it. False when it cannot be begun, or the one before not be ended.
  [[nodiscard]] bool BeginPage(Size sheet, const PrinterFit& fit);
  [[nodiscard]] QPainter& Page();
  // What was painted could not be written.
  [[nodiscard]] bool Broken() const;
  // All is written; the file still has to be committed. WriteFailed.
  [[nodiscard]] Outcome Finish();

 private:
  struct Parts;
  std::unique_ptr<Parts> parts_;
};

// The object cut to its rectangle; null when that many dots are too many.
[[nodiscard]] QImage PictureOf(const ObjectPainting& painting, ArtworkObjectId id, double dpi);

}  // namespace ts5::artworker
