#include "midi/ui/midi_convert_dialog.h"

#include <QShowEvent>
#include <QTimer>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "midi/converter_form.h"
#include "midi/texts.h"
#include "midi/ui/riff_attributes_dialog.h"
#include "midi/ui/time_base_box.h"
#include "platform/base/text.h"
#include "platform/files/files.h"
#include "ui_MIDICONVERT.h"

namespace ts5 {

MidiConvertDialog::MidiConvertDialog(ConverterParameters parameters, std::string source, DialogHost& host,
                                     QWidget* parent)
    : HostedDialog(host, QtText(texts::ConverterPrompt), parent),
      parameters_(std::move(parameters)),
      source_(std::move(source)),
      ui_(std::make_unique<Ui::MIDICONVERT>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->containerCheck->setChecked(parameters_.changeContainer);
  ui_->riffRadio->setChecked(parameters_.toRiff);
  ui_->sequencerRadio->setChecked(!parameters_.toRiff);
  ui_->formatCheck->setChecked(parameters_.changeFormat);
  ui_->timeBaseCheck->setChecked(parameters_.changeTimeBase);
  ui_->timeBaseBox->setValue(parameters_.timeBaseIndex);
  ReadSource();
  UpdateControls();

  for (QAbstractButton* button :
       {static_cast<QAbstractButton*>(ui_->containerCheck), static_cast<QAbstractButton*>(ui_->riffRadio),
        static_cast<QAbstractButton*>(ui_->sequencerRadio),
        static_cast<QAbstractButton*>(ui_->timeBaseCheck)}) {
    connect(button, &QAbstractButton::toggled, this, [this] { UpdateControls(); });
  }
  connect(ui_->attributesButton, &QAbstractButton::clicked, this, [this] { EditAttributes(); });
}

MidiConvertDialog::~MidiConvertDialog() = default;

QString MidiConvertDialog::HelpTopic() const {
  return QStringLiteral("midi-konverter.htm");
}

void MidiConvertDialog::ReadSource() {
  ui_->currentTimeBaseLabel->hide();
  if (source_.empty()) return;
  const Result<MidiFileInfo> info = ReadMidiFileHeader(source_);
  const Result<Bytes> beginning = ReadFileStart(source_, kMidiDetectionSize);
  if (!info || !beginning) {
    sourceFailed_ = true;
    return;
  }
  container_ = ContainerOf(*beginning);
  ui_->currentTimeBaseLabel->setText(ToQt(Format(Text(texts::ConverterTimeBase), info->header.division)));
  ui_->currentTimeBaseLabel->show();
}

// A source that cannot be looked at is told of when the dialog is there to be seen behind the message.
void MidiConvertDialog::showEvent(QShowEvent* event) {
  HostedDialog::showEvent(event);
  if (std::exchange(sourceFailed_, false)) {
    QTimer::singleShot(0, this, [this] { ShowWarning(this, texts::ConverterSourceFailed); });
  }
}

void MidiConvertDialog::TakeControls() {
  parameters_.changeContainer = ui_->containerCheck->isChecked();
  parameters_.toRiff = ui_->riffRadio->isChecked();
  parameters_.changeFormat = ui_->formatCheck->isChecked();
  parameters_.changeTimeBase = ui_->timeBaseCheck->isChecked();
  parameters_.timeBaseIndex = ui_->timeBaseBox->value();
}

void MidiConvertDialog::UpdateControls() {
  TakeControls();
  const ConverterForm form = ConverterFormOf(parameters_, container_);
  ui_->riffRadio->setEnabled(form.containerEnabled);
  ui_->sequencerRadio->setEnabled(form.containerEnabled);
  ui_->riffRadio->setText(QtText(form.riffLabel));
  ui_->sequencerRadio->setText(QtText(form.sequencerLabel));
  ui_->attributesButton->setEnabled(form.attributesEnabled);
  ui_->attributesButton->setVisible(form.attributesShown);
  for (QWidget* widget : {static_cast<QWidget*>(ui_->timeBaseLabel), static_cast<QWidget*>(ui_->timeBaseBox),
                          static_cast<QWidget*>(ui_->timeBaseUnitLabel)}) {
    widget->setEnabled(form.timeBaseEnabled);
  }
}

void MidiConvertDialog::EditAttributes() {
  RiffAttributesDialog dialog(parameters_.Attributes(), Host(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  const RiffAttributes attributes = dialog.Attributes();
  parameters_.title = attributes.title;
  parameters_.artist = attributes.artist;
  parameters_.copyright = attributes.copyright;
  parameters_.description = attributes.description;
}

void MidiConvertDialog::Commit() {
  ui_->timeBaseBox->interpretText();
  TakeControls();
  if (!HasStep(parameters_)) {
    ShowNotice(this, texts::ConverterNothingChosen);
    return;
  }
  accept();
}

}  // namespace ts5
