#include "search/ui/result_viewer_dialog.h"

#include <QFontDatabase>
#include <QPageSetupDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QTextDocument>
#include <utility>

#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "search/result_file.h"
#include "search/ui/print_abort_dialog.h"
#include "search/ui/results_printer.h"
#include "ui_RESULTVIEWER.h"

namespace ts5 {
namespace {

constexpr int kTextHeight = 12;  // pixels

// Kept while the program runs, so that a page setup holds for the next printing.
QPrinter& ResultPrinter() {
  static QPrinter printer(QPrinter::HighResolution);
  return printer;
}

// Page setup, then the preview, which shows and prints what draw makes.
template <typename Draw>
void PreviewAndPrint(QWidget* parent, Draw draw) {
  QPrinter& printer = ResultPrinter();
  QPageSetupDialog setup(&printer, parent);
  if (setup.exec() != QDialog::Accepted) return;
  QPrintPreviewDialog preview(&printer, parent);
  preview.setWindowTitle(QtText(TextId::PrintJobName));
  QObject::connect(&preview, &QPrintPreviewDialog::paintRequested, &preview, draw);
  preview.exec();
}

}  // namespace

ResultViewerDialog::ResultViewerDialog(const SearchResults* results, bool wholePaths, std::string lastFile,
                                       DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(TextId::ResultViewerPrompt), parent),
      results_(results),
      wholePaths_(wholePaths),
      lastFile_(std::move(lastFile)),
      ui_(std::make_unique<Ui::RESULTVIEWER>()) {
  ui_->setupUi(this);
  ConnectButtons();
  QFont font(QStringLiteral("Courier New"));
  font.setStyleHint(QFont::TypeWriter);
  font.setPixelSize(kTextHeight);
  ui_->textView->setFont(font);
  ui_->browseButton->setAccessibleDescription(QtText(TextId::PickResultFile));
  ui_->fileEdit->setText(ToQt(lastFile_));

  const bool any = results_ != nullptr && results_->Size() > 0;
  ui_->screenRadio->setEnabled(any);
  (any ? ui_->screenRadio : ui_->fileRadio)->setChecked(true);
  connect(ui_->screenRadio, &QRadioButton::toggled, this, &ResultViewerDialog::ShowMedium);
  connect(ui_->fileEdit, &QLineEdit::textChanged, this, [this](const QString& name) {
    ui_->fileRadio->setChecked(true);
    ui_->loadButton->setEnabled(!name.isEmpty());
  });
  connect(ui_->fileEdit, &QLineEdit::returnPressed, this, &ResultViewerDialog::Load);
  connect(ui_->browseButton, &QPushButton::clicked, this, &ResultViewerDialog::Browse);
  connect(ui_->loadButton, &QPushButton::clicked, this, &ResultViewerDialog::Load);
  connect(ui_->printButton, &QPushButton::clicked, this, &ResultViewerDialog::Print);
  connect(ui_->closeButton, &QPushButton::clicked, this, &QDialog::accept);
  ShowMedium();
}

ResultViewerDialog::~ResultViewerDialog() = default;

void ResultViewerDialog::ShowMedium() {
  const bool screen = ui_->screenRadio->isChecked();
  ui_->textView->setPlainText(screen && results_ != nullptr ? ToQt(results_->AsResultText()) : fileText_);
  ui_->loadButton->setEnabled(!screen && !ui_->fileEdit->text().isEmpty());
  ui_->printButton->setEnabled(!ui_->textView->document()->isEmpty());
}

void ResultViewerDialog::Browse() {
  Host().ShowPrompt(QtText(TextId::PickResultFilePrompt));
  const auto path =
      AskFileToOpen({QtText(TextId::PickResultFile), FromQt(ui_->fileEdit->text()), {}, {}}, Host(), this);
  Host().ShowPrompt(QtText(TextId::ResultViewerPrompt));
  if (!path) return;
  ui_->fileEdit->setText(ToQt(*path));
  Load();
}

void ResultViewerDialog::Load() {
  ui_->fileRadio->setChecked(true);
  const std::string path = FromQt(ui_->fileEdit->text());
  const auto text = LoadResultFile(path);
  if (!text) {
    ShowWarning(this, ToQt(ResultFileFailureText(text.error())));
    FocusText(ui_->fileEdit);
    return;
  }
  lastFile_ = path;
  fileText_ = ToQt(*text);
  ShowMedium();
}

void ResultViewerDialog::Print() {
  if (ui_->screenRadio->isChecked() && results_ != nullptr) {
    PrintResultsWithDialogs(*results_, wholePaths_, this);
    return;
  }
  QTextDocument document(ui_->textView->toPlainText());
  document.setDefaultFont(ui_->textView->font());
  PreviewAndPrint(this, [&document](QPrinter* printer) { document.print(printer); });
}

QString ResultViewerDialog::HelpTopic() const {
  return QStringLiteral("Befehle-Aktion-Suchergebnisse.htm");
}

void PrintResultsWithDialogs(const SearchResults& results, bool wholePaths, QWidget* parent) {
  PreviewAndPrint(parent, [&results, wholePaths, parent](QPrinter* printer) {
    PrintAbortDialog abort(parent);
    (void)PrintResults(results, wholePaths, *printer,
                       [&abort](int page, int pages) { return abort.Proceed(page, pages); });
  });
}

}  // namespace ts5
