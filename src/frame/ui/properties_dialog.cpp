#include "frame/ui/properties_dialog.h"

#include "ui_FILEPROPS.h"

namespace ts5 {

PropertiesDialog::PropertiesDialog(const QString& title, const QString& prompt, std::unique_ptr<QWidget> page,
                                   DialogHost& host, QWidget* parent)
    : HostedDialog(host, prompt, parent), ui_(std::make_unique<Ui::FILEPROPS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(title);
  ui_->pageLayout->addWidget(page.release());
  ui_->okButton->setFocus();
}

PropertiesDialog::~PropertiesDialog() = default;

QString PropertiesDialog::HelpTopic() const {
  return QStringLiteral("Befehle-Datei-Eigenschaften.htm");
}

}  // namespace ts5
