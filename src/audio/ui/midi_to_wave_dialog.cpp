#include "audio/ui/midi_to_wave_dialog.h"

#include <algorithm>
#include <utility>

#include "audio/format_texts.h"
#include "audio/texts.h"
#include "audio/ui/mixer_help_dialog.h"
#include "audio/ui/normalise_box.h"
#include "audio/ui/synthesis_format_dialog.h"
#include "audio/ui/wave_format_dialog.h"
#include "frame/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_MIDWAVPARAMS.h"

namespace ts5 {
namespace {

void FillDevices(QListWidget& list, const std::vector<std::string>& names, std::int32_t chosen, TextId none) {
  for (const std::string& name : names) list.addItem(ToQt(name));
  list.setCurrentRow(std::cmp_less(chosen, names.size()) ? chosen : 0);
  if (!names.empty()) return;
  list.addItem(QtText(none));
  list.setEnabled(false);
}

}  // namespace

MidiToWaveDialog::MidiToWaveDialog(MidiToWaveParameters parameters, MidiToWaveDevices devices,
                                   DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::MidiWavePrompt), parent),
      parameters_(std::move(parameters)),
      devices_(std::move(devices)),
      normalise_(new NormaliseBox(NormaliseBox::Wording::MidiToWave)),
      ui_(std::make_unique<Ui::MIDWAVPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->normaliseLayout->insertWidget(0, normalise_);
  FillDevices(*ui_->midiList, devices_.midiOutputs, parameters_.midiDevice, texts::NoMidiDevices);
  FillDevices(*ui_->waveList, devices_.audioInputs, parameters_.waveDevice, texts::MidiWaveNoInput);
  ShowParameters();
  UpdateControls();
  connect(ui_->cardRadio, &QAbstractButton::toggled, this, [this] { UpdateControls(); });
  connect(ui_->waveList, &QListWidget::currentRowChanged, this, [this] { UpdateControls(); });
  connect(ui_->recordButton, &QAbstractButton::clicked, this, [this] { ChooseRecordingFormat(); });
  connect(ui_->synthesisButton, &QAbstractButton::clicked, this, [this] { ChooseSynthesisFormat(); });
  connect(ui_->mixerButton, &QAbstractButton::clicked, this, [this] { OpenMixerProgram(this); });
}

MidiToWaveDialog::~MidiToWaveDialog() = default;

QString MidiToWaveDialog::HelpTopic() const {
  return QStringLiteral("parm_midi-wave-konverter.htm");
}

void MidiToWaveDialog::ShowParameters() {
  const bool synthesis = parameters_.Method() == MidiWaveMethod::Synthesis;
  ui_->synthesisRadio->setChecked(synthesis);
  ui_->cardRadio->setChecked(!synthesis);
  ui_->mixerCheck->setChecked(parameters_.configureMixer);
  normalise_->SetMode(parameters_.Normalising());
}

std::int32_t MidiToWaveDialog::WaveDevice() const {
  return std::max(ui_->waveList->currentRow(), 0);
}

void MidiToWaveDialog::UpdateControls() {
  const bool card = ui_->cardRadio->isChecked();
  ui_->cardGroup->setEnabled(card);
  ui_->synthesisGroup->setEnabled(!card);
  ui_->recordButton->setEnabled(!devices_.audioInputs.empty());
  const auto recording = parameters_.recordingFormats.find(WaveDevice());
  ui_->recordLabel->setText(recording == parameters_.recordingFormats.end()
                                ? QtText(texts::MidiWaveNoRecordFormat)
                                : ToQt(FormatText(FormatOf(recording->second))));
  ui_->synthesisLabel->setText(ToQt(FormatText(FormatOf(parameters_.format))));
}

void MidiToWaveDialog::ChooseRecordingFormat() {
  const std::int32_t device = WaveDevice();
  const auto current = parameters_.recordingFormats.find(device);
  WaveFormatDialog dialog(
      devices_.formatsOf(devices_.audioInputs.at(static_cast<std::size_t>(device))),
      current == parameters_.recordingFormats.end() ? std::nullopt : std::optional(current->second), Host(),
      this);
  if (dialog.exec() != QDialog::Accepted) return;
  parameters_.recordingFormats[device] = dialog.Chosen();
  UpdateControls();
}

void MidiToWaveDialog::ChooseSynthesisFormat() {
  SynthesisFormatDialog dialog(parameters_.format, Host(), this);
  if (dialog.exec() != QDialog::Accepted) return;
  parameters_.format = dialog.Chosen();
  UpdateControls();
}

void MidiToWaveDialog::Commit() {
  const bool synthesis = ui_->synthesisRadio->isChecked();
  if (synthesis && !parameters_.HasSynthesisFormat()) {
    ShowNotice(this, texts::MidiWaveChooseRate);
    ui_->synthesisButton->setFocus();
    return;
  }
  parameters_.method =
      static_cast<std::int32_t>(synthesis ? MidiWaveMethod::Synthesis : MidiWaveMethod::SoundCard);
  // A list without devices says nothing about those that the job had.
  if (!devices_.midiOutputs.empty()) parameters_.midiDevice = ui_->midiList->currentRow();
  if (!devices_.audioInputs.empty()) parameters_.waveDevice = WaveDevice();
  parameters_.configureMixer = ui_->mixerCheck->isChecked();
  parameters_.normalise = static_cast<std::int32_t>(normalise_->Mode());
  accept();
}

}  // namespace ts5
