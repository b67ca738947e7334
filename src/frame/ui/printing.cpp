#include "frame/ui/printing.h"

#include <QPrinterInfo>
#include <utility>

#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/print_abort_dialog.h"
#include "frame/ui/print_preview_dialog.h"
#include "frame/ui/print_setup_dialog.h"
#include "frame/ui/qt_text.h"

namespace ts5 {

Printing::Printing(const std::vector<std::string>& printers, PrintNames names, DialogHost& host)
    : names_(std::move(names)), host_(host) {
  const QString pdf = QtText(texts::PdfPrinter);
  for (const std::string& printer : printers) printers_.append(ToQt(printer));
  if (!printers_.contains(pdf)) printers_.append(pdf);
  const QString standard = QPrinterInfo::defaultPrinterName();
  setup_ = DefaultPrintSetup(printers_.contains(standard) ? standard : printers_.front());
}

void Printing::Print(const PrintDrawing& drawing, QWidget* parent) {
  PrintSetupDialog dialog(printers_, setup_, names_.helpTopic, host_, parent);
  QObject::connect(&dialog, &PrintSetupDialog::PreviewWanted, &dialog, [&] {
    PrintPreviewDialog preview(dialog.Setup().layout, drawing, names_.helpTopic, host_, &dialog);
    if (preview.exec() == QDialog::Accepted) dialog.accept();
  });
  if (dialog.exec() != QDialog::Accepted) return;
  setup_ = dialog.Setup();

  std::string pdf;
  if (setup_.printer == QtText(texts::PdfPrinter)) {
    if (pdf_.empty()) pdf_ = Text(names_.pdfProposal);
    const auto chosen = AskFileToSave(
        {QtText(texts::SavePdfTitle), pdf_, Text(texts::PdfFilter), names_.helpTopic}, host_, parent);
    if (!chosen) return;
    pdf = pdf_ = *chosen;
  }
  PrintAbortDialog abort(QtText(names_.progressTitle), QtText(names_.progressText), parent);
  PrintJob job;
  job.proceed = [&abort](int page, int pages) { return abort.Proceed(page, pages); };
  const Printed printed = PrintWith(setup_, QtText(names_.job), pdf, drawing, job);
  abort.hide();
  if (printed == Printed::Failed) ShowWarning(parent, names_.failed);
}

}  // namespace ts5
