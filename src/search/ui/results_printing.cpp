#include "search/ui/results_printing.h"

#include <QIODevice>
#include <QPdfWriter>
#include <QPrinter>
#include <QPrinterInfo>
#include <utility>

#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/files.h"
#include "platform/paths.h"
#include "search/texts.h"
#include "search/ui/print_abort_dialog.h"
#include "search/ui/print_preview_dialog.h"
#include "search/ui/print_setup_dialog.h"

namespace ts5 {
namespace {

constexpr QMarginsF kMargins{20, 15, 15, 15};  // millimetres

// What is written to it goes into a staged file.
class StagedDevice : public QIODevice {
 public:
  explicit StagedDevice(StagedFile& file) : file_(file) { open(QIODevice::WriteOnly); }
  [[nodiscard]] bool isSequential() const override { return true; }
  [[nodiscard]] bool Failed() const { return failed_; }

 protected:
  qint64 readData(char* /*data*/, qint64 /*size*/) override { return -1; }
  qint64 writeData(const char* data, qint64 size) override {
    const ByteView bytes(reinterpret_cast<const std::uint8_t*>(data), static_cast<std::size_t>(size));
    if (failed_ || ts5::Failed(file_.Write(bytes))) {
      failed_ = true;
      return -1;
    }
    return size;
  }

 private:
  StagedFile& file_;
  bool failed_ = false;
};

Printed PrintPdf(const PrintSetup& setup, const std::string& path, const PrintDrawing& drawing,
                 const PrintJob& job) {
  auto file = StagedFile::Create(path);
  if (!file) return Printed::Failed;
  StagedDevice device(*file);
  Printed printed = Printed::Failed;
  {
    QPdfWriter writer(&device);
    writer.setPageLayout(setup.layout);
    writer.setTitle(QtText(texts::PrintJobName));
    writer.setCreator(QtText(texts::ApplicationTitle));
    printed = drawing(writer, job);
  }
  if (printed != Printed::Done) return printed;
  return !device.Failed() && Succeeded(file->Commit()) ? Printed::Done : Printed::Failed;
}

Printed PrintOnPaper(const PrintSetup& setup, const PrintDrawing& drawing, const PrintJob& job) {
  QPrinter printer(QPrinter::HighResolution);
  printer.setPrinterName(setup.printer);
  if (!printer.isValid() || printer.printerName() != setup.printer) return Printed::Failed;
  printer.setPageLayout(setup.layout);
  printer.setDocName(QtText(texts::PrintJobName));
  const Printed printed = drawing(printer, job);
  if (printed == Printed::Aborted) printer.abort();
  return printed;
}

}  // namespace

PrintSetup DefaultPrintSetup(const QString& printer) {
  return {printer,
          QPageLayout(QPageSize(QPageSize::A4), QPageLayout::Portrait, kMargins, QPageLayout::Millimeter)};
}

Printed PrintWith(const PrintSetup& setup, const std::string& pdf, const PrintDrawing& drawing,
                  const PrintJob& job) {
  return setup.printer == QtText(texts::PdfPrinter) ? PrintPdf(setup, pdf, drawing, job)
                                                    : PrintOnPaper(setup, drawing, job);
}

ResultsPrinting::ResultsPrinting(const std::vector<std::string>& printers, DialogHost& host) : host_(host) {
  const QString pdf = QtText(texts::PdfPrinter);
  for (const std::string& printer : printers) printers_.append(ToQt(printer));
  if (!printers_.contains(pdf)) printers_.append(pdf);
  const QString standard = QPrinterInfo::defaultPrinterName();
  setup_ = DefaultPrintSetup(printers_.contains(standard) ? standard : printers_.front());
}

void ResultsPrinting::PrintHits(const SearchResults& results, bool wholePaths, QWidget* parent) {
  Print(
      [&results, wholePaths](QPagedPaintDevice& device, const PrintJob& job) {
        return PrintResults(results, wholePaths, device, job);
      },
      parent);
}

void ResultsPrinting::PrintFile(const std::string& path, const ResultLines& lines, QWidget* parent) {
  Print(
      [title = ToQt(FileNameOf(path)), &lines](QPagedPaintDevice& device, const PrintJob& job) {
        return PrintResultLines(title, lines, device, job);
      },
      parent);
}

void ResultsPrinting::Print(const PrintDrawing& drawing, QWidget* parent) {
  PrintSetupDialog dialog(printers_, setup_, host_, parent);
  QObject::connect(&dialog, &PrintSetupDialog::PreviewWanted, &dialog, [&] {
    PrintPreviewDialog preview(dialog.Setup().layout, drawing, host_, &dialog);
    if (preview.exec() == QDialog::Accepted) dialog.accept();
  });
  if (dialog.exec() != QDialog::Accepted) return;
  setup_ = dialog.Setup();

  std::string pdf;
  if (setup_.printer == QtText(texts::PdfPrinter)) {
    if (pdf_.empty()) pdf_ = Text(texts::PdfProposal);
    const auto chosen = AskFileToSave({QtText(texts::SavePdfTitle), pdf_, Text(texts::PdfFilter),
                                       QStringLiteral("Befehle-Aktion-Suchergebnisse.htm")},
                                      host_, parent);
    if (!chosen) return;
    pdf = pdf_ = *chosen;
  }
  PrintAbortDialog abort(parent);
  PrintJob job;
  job.proceed = [&abort](int page, int pages) { return abort.Proceed(page, pages); };
  const Printed printed = PrintWith(setup_, pdf, drawing, job);
  abort.hide();
  if (printed == Printed::Failed) ShowWarning(parent, texts::PrintFailed);
}

}  // namespace ts5
