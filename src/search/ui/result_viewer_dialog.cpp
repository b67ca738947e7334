#include "search/ui/result_viewer_dialog.h"

#include <memory>
#include <stop_token>
#include <utility>

#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "search/texts.h"
#include "search/ui/result_line_view.h"
#include "ui_RESULTVIEWER.h"

namespace ts5 {
ResultViewerDialog::ResultViewerDialog(const SearchResults& results, bool wholePaths, std::string lastFile,
                                       ResultsPrinting& printing, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ResultViewerPrompt), parent),
      results_(results),
      wholePaths_(wholePaths),
      lastFile_(std::move(lastFile)),
      printing_(printing),
      ui_(std::make_unique<Ui::RESULTVIEWER>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->browseButton->setAccessibleDescription(QtText(texts::PickResultFile));
  ui_->fileEdit->setText(ToQt(lastFile_));

  const bool any = results_.Size() > 0;
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
  ui_->textView->Show(screen ? LinesOf(results_) : fileLines_);
  ui_->loadButton->setEnabled(!screen && !ui_->fileEdit->text().isEmpty());
  ui_->printButton->setEnabled(ui_->textView->Lines().count > 0);
}

void ResultViewerDialog::Browse() {
  Host().ShowPrompt(QtText(texts::PickResultFilePrompt));
  const auto path =
      AskFileToOpen({QtText(texts::PickResultFile), FromQt(ui_->fileEdit->text()), {}, {}}, Host(), this);
  Host().ShowPrompt(QtText(texts::ResultViewerPrompt));
  if (!path) return;
  ui_->fileEdit->setText(ToQt(*path));
  Load();
}

void ResultViewerDialog::Load() {
  ui_->fileRadio->setChecked(true);
  const std::string path = FromQt(ui_->fileEdit->text());
  ui_->loadButton->setEnabled(false);
  setCursor(Qt::BusyCursor);
  loading_ = std::jthread([this, path](const std::stop_token& stop) {
    auto lines = std::make_shared<Result<ResultLines>>(
        LoadResultFile(path, [&stop] { return stop.stop_requested(); }));
    QMetaObject::invokeMethod(
        this, [this, path, lines] { Loaded(path, std::move(*lines)); }, Qt::QueuedConnection);
  });
}

void ResultViewerDialog::Loaded(const std::string& path, Result<ResultLines> lines) {
  // What was read before another file was asked for is left aside.
  if (!lines && lines.error() == Outcome::Cancelled) return;
  unsetCursor();
  if (lines) {
    lastFile_ = path;
    fileLines_ = std::move(*lines);
  }
  ShowMedium();
  if (lines) return;
  ShowWarning(this, ToQt(ResultFileFailureText(lines.error())));
  FocusText(ui_->fileEdit);
}

void ResultViewerDialog::Print() {
  if (ui_->screenRadio->isChecked()) {
    printing_.PrintHits(results_, wholePaths_, this);
  } else {
    printing_.PrintFile(lastFile_, fileLines_, this);
  }
}

QString ResultViewerDialog::HelpTopic() const {
  return QStringLiteral("Befehle-Aktion-Suchergebnisse.htm");
}

}  // namespace ts5
