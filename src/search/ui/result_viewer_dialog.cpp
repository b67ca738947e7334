#include "search/ui/result_viewer_dialog.h"

#include <QFontDatabase>
#include <utility>

#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "search/result_file.h"
#include "ui_RESULTVIEWER.h"

namespace ts5 {
namespace {

constexpr int kTextHeight = 12;  // pixels

}  // namespace

ResultViewerDialog::ResultViewerDialog(const SearchResults& results, bool wholePaths, std::string lastFile,
                                       ResultsPrinting& printing, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(TextId::ResultViewerPrompt), parent),
      results_(results),
      wholePaths_(wholePaths),
      lastFile_(std::move(lastFile)),
      printing_(printing),
      ui_(std::make_unique<Ui::RESULTVIEWER>()) {
  ui_->setupUi(this);
  ConnectButtons();
  QFont font(QStringLiteral("Courier New"));
  font.setStyleHint(QFont::TypeWriter);
  font.setPixelSize(kTextHeight);
  ui_->textView->setFont(font);
  ui_->browseButton->setAccessibleDescription(QtText(TextId::PickResultFile));
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
  ui_->textView->setPlainText(screen ? ToQt(results_.AsResultText()) : fileText_);
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
  if (ui_->screenRadio->isChecked()) {
    printing_.PrintHits(results_, wholePaths_, this);
  } else {
    printing_.PrintFile(lastFile_, fileText_, this);
  }
}

QString ResultViewerDialog::HelpTopic() const {
  return QStringLiteral("Befehle-Aktion-Suchergebnisse.htm");
}

}  // namespace ts5
