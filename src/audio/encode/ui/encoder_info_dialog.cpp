#include "audio/encode/ui/encoder_info_dialog.h"

#include "audio/encode/engine_info.h"
#include "audio/encode/texts.h"
#include "frame/ui/qt_text.h"
#include "ui_ENCODERINFO.h"

namespace ts5::encode {

EncoderInfoDialog::EncoderInfoDialog(Mp3Engine engine, QWidget* parent)
    : QDialog(parent), ui_(std::make_unique<Ui::ENCODERINFO>()) {
  ui_->setupUi(this);
  connect(ui_->okButton, &QAbstractButton::clicked, this, &QDialog::accept);
  ui_->versionLabel->setText(ToQt(EngineVersionText(engine)));
  ui_->noteLabel->setText(QtText(texts::EngineLicenceNote));
  ui_->licenceText->setPlainText(ToQt(EngineLicence()));
  setMinimumSize(480, 360);  // the note is whole
  resize(640, 480);
}

EncoderInfoDialog::~EncoderInfoDialog() = default;

}  // namespace ts5::encode
