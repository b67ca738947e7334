#include "app/shell/about_dialog.h"

#include <QFile>

#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "resources/icons.h"
#include "ui_ABOUT.h"

namespace ts5 {

QString VersionText() {
  return ToQt(Format(Text(texts::VersionLine), TS5_VERSION));
}

AboutDialog::AboutDialog(QWidget* parent) : QDialog(parent), ui_(std::make_unique<Ui::ABOUT>()) {
  ui_->setupUi(this);
  setWindowTitle(QtText(texts::AboutCaption));
  ui_->nameLabel->setText(QtText(texts::ApplicationTitle));
  ui_->versionLabel->setText(VersionText());
  ui_->logo->setPixmap(Icon("stavora-ts5").pixmap(ui_->logo->minimumSize(), devicePixelRatioF()));
  InitializeResources();
  QFile text(QStringLiteral(":/help/über.htm"));
  if (text.open(QIODevice::ReadOnly)) ui_->aboutText->setHtml(QString::fromUtf8(text.readAll()));
  connect(ui_->okButton, &QAbstractButton::clicked, this, &QDialog::accept);
  ui_->okButton->setFocus();
}

AboutDialog::~AboutDialog() = default;

}  // namespace ts5
