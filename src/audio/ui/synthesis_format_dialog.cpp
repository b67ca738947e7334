#include "audio/ui/synthesis_format_dialog.h"

#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_TIMIDITYFORMAT.h"

namespace ts5 {

SynthesisFormatDialog::SynthesisFormatDialog(const WaveNumbers& current, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::MidiWaveFormatPrompt), parent),
      ui_(std::make_unique<Ui::TIMIDITYFORMAT>()) {
  ui_->setupUi(this);
  ConnectButtons();
  for (const std::int32_t rate : kSynthesisRates) ui_->rateBox->addItem(QString::number(rate), rate);
  ui_->rateBox->setCurrentIndex(ui_->rateBox->findData(current[0]));
  (current[1] == 1 ? ui_->monoRadio : ui_->stereoRadio)->setChecked(true);
  (current[2] == 8 ? ui_->eightRadio : ui_->sixteenRadio)->setChecked(true);
}

SynthesisFormatDialog::~SynthesisFormatDialog() = default;

QString SynthesisFormatDialog::HelpTopic() const {
  return QStringLiteral("parm_midi-wave-konverter.htm");
}

WaveNumbers SynthesisFormatDialog::Chosen() const {
  return {ui_->rateBox->currentData().toInt(), ui_->monoRadio->isChecked() ? 1 : 2,
          ui_->eightRadio->isChecked() ? 8 : 16};
}

void SynthesisFormatDialog::Commit() {
  if (ui_->rateBox->currentIndex() < 0) {
    ShowNotice(this, texts::MidiWaveChooseRate);
    ui_->rateBox->setFocus();
    return;
  }
  accept();
}

}  // namespace ts5
