#include "converters/transcribe/ui/midi_to_score_dialog.h"

#include <QSpinBox>
#include <utility>

#include "converters/transcribe/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "ui_MIDSTV.h"

namespace ts5::transcribe {

MidiToScoreDialog::MidiToScoreDialog(MidiToScoreParameters parameters, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::MidiToScorePrompt), parent),
      parameters_(std::move(parameters)),
      ui_(std::make_unique<Ui::MIDSTV>()) {
  ui_->setupUi(this);
  ConnectButtons();
  for (const NumberRange& number : MidiToScoreNumbers()) {
    if (QSpinBox* const box = BoxOf(number); box != nullptr) box->setValue(parameters_.*number.member);
  }
  ui_->beamsBox->setCurrentIndex(parameters_.beaming);
  ui_->justifyBox->setCurrentIndex(parameters_.justify);
  ui_->lyricsCheck->setChecked(parameters_.lyrics);
  ui_->numbersCheck->setChecked(parameters_.barNumbers);
  ui_->slashesCheck->setChecked(parameters_.slashes);
  (parameters_.landscape ? ui_->landscapeRadio : ui_->portraitRadio)->setChecked(true);
}

MidiToScoreDialog::~MidiToScoreDialog() = default;

QString MidiToScoreDialog::HelpTopic() const {
  return QStringLiteral("parm_midi-stavora-konverter.htm");
}

QSpinBox* MidiToScoreDialog::BoxOf(const NumberRange& number) const {
  using P = MidiToScoreParameters;
  const std::pair<std::int32_t P::*, QSpinBox*> boxes[] = {
      {&P::barsPerSystem, ui_->barsBox},
      {&P::narrowLines, ui_->narrowBox},
      {&P::normalLines, ui_->normalBox},
      {&P::above, ui_->aboveBox},
      {&P::below, ui_->belowBox},
      {&P::betweenSystems, ui_->betweenBox},
      {&P::beforeFirstSystem, ui_->firstBox},
  };
  for (const auto& [member, box] : boxes) {
    if (member == number.member) return box;
  }
  return nullptr;
}

void MidiToScoreDialog::Commit() {
  for (const NumberRange& number : MidiToScoreNumbers()) {
    QSpinBox* const box = BoxOf(number);
    if (box == nullptr || (box->value() >= number.least && box->value() <= number.most)) continue;
    ShowWarning(this, ToQt(Format(Text(texts::MidiToScoreRange), number.least, number.most)));
    box->setFocus();
    box->selectAll();
    return;
  }
  for (const NumberRange& number : MidiToScoreNumbers()) {
    if (const QSpinBox* const box = BoxOf(number); box != nullptr) parameters_.*number.member = box->value();
  }
  parameters_.beaming = ui_->beamsBox->currentIndex();
  parameters_.justify = ui_->justifyBox->currentIndex();
  parameters_.lyrics = ui_->lyricsCheck->isChecked();
  parameters_.barNumbers = ui_->numbersCheck->isChecked();
  parameters_.slashes = ui_->slashesCheck->isChecked();
  parameters_.landscape = ui_->landscapeRadio->isChecked();
  accept();
}

}  // namespace ts5::transcribe
