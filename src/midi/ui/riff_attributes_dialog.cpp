#include "midi/ui/riff_attributes_dialog.h"

#include "frame/ui/qt_text.h"
#include "ui_RIFFATTRIBUTES.h"

namespace ts5 {

RiffAttributesDialog::RiffAttributesDialog(const RiffAttributes& attributes, DialogHost& host,
                                           QWidget* parent)
    : HostedDialog(host, {}, parent), ui_(std::make_unique<Ui::RIFFATTRIBUTES>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->copyrightEdit->setText(ToQt(attributes.copyright));
  ui_->artistEdit->setText(ToQt(attributes.artist));
  ui_->titleEdit->setText(ToQt(attributes.title));
  ui_->descriptionEdit->setPlainText(ToQt(attributes.description));
  FocusText(ui_->copyrightEdit);
}

RiffAttributesDialog::~RiffAttributesDialog() = default;

RiffAttributes RiffAttributesDialog::Attributes() const {
  return {.title = FromQt(ui_->titleEdit->text()),
          .artist = FromQt(ui_->artistEdit->text()),
          .copyright = FromQt(ui_->copyrightEdit->text()),
          .description = FromQt(ui_->descriptionEdit->toPlainText())};
}

QString RiffAttributesDialog::HelpTopic() const {
  return QStringLiteral("midi-konverter-attribute.htm");
}

}  // namespace ts5
