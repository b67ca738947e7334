#include "frame/ui/print_device.h"

#include <QPdfWriter>
#include <QPrinter>

#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/files/files.h"
#include "platform/files/staged_device.h"

namespace ts5 {
namespace {

constexpr QMarginsF kMargins{20, 15, 15, 15};  // millimetres

Printed PrintPdf(const PrintSetup& setup, const QString& title, const std::string& path,
                 const PrintDrawing& drawing, const PrintJob& job) {
  auto file = StagedFile::Create(path);
  if (!file) return Printed::Failed;
  StagedDevice device(*file);
  Printed printed = Printed::Failed;
  {
    QPdfWriter writer(&device);
    writer.setPageLayout(setup.layout);
    writer.setTitle(title);
    writer.setCreator(QtText(texts::ApplicationTitle));
    printed = drawing(writer, job);
  }
  if (printed != Printed::Done) return printed;
  return !device.Broken() && Succeeded(file->Commit()) ? Printed::Done : Printed::Failed;
}

Printed PrintOnPaper(const PrintSetup& setup, const QString& title, const PrintDrawing& drawing,
                     const PrintJob& job) {
  QPrinter printer(QPrinter::HighResolution);
  printer.setPrinterName(setup.printer);
  if (!printer.isValid() || printer.printerName() != setup.printer) return Printed::Failed;
  printer.setPageLayout(setup.layout);
  printer.setDocName(title);
  const Printed printed = drawing(printer, job);
  if (printed == Printed::Aborted) printer.abort();
  return printed;
}

}  // namespace

PrintSetup DefaultPrintSetup(const QString& printer) {
  return {printer,
          QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, kMargins, QPageLayout::Millimeter)};
}

Printed PrintWith(const PrintSetup& setup, const QString& title, const std::string& pdf,
                  const PrintDrawing& drawing, const PrintJob& job) {
  return setup.printer == QtText(texts::PdfPrinter) ? PrintPdf(setup, title, pdf, drawing, job)
                                                    : PrintOnPaper(setup, title, drawing, job);
}

}  // namespace ts5
