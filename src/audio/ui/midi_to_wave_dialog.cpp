#include "audio/ui/midi_to_wave_dialog.h"

#include <QProcess>
#include <QStandardPaths>
#include <array>
#include <utility>

#include "audio/format_texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_MIDWAVPARAMS.h"

namespace ts5 {
namespace {

constexpr std::array<std::int32_t, 5> kRecordingRates = {11025, 22050, 44100, 48000, 96000};
// The programs with which today's desktops set what is recorded.
constexpr std::array kMixers = {"pavucontrol", "pavucontrol-qt", "kmix", "gnome-control-center",
                                "alsamixergui"};

std::vector<std::array<std::int32_t, 3>> RecordingFormats() {
  std::vector<std::array<std::int32_t, 3>> formats;
  for (const std::int32_t rate : kRecordingRates) {
    for (const std::int32_t bits : {8, 16}) {
      for (const std::int32_t channels : {1, 2}) formats.push_back({rate, channels, bits});
    }
  }
  return formats;
}

void FillDevices(QListWidget& list, const std::vector<std::string>& names, std::int32_t chosen, TextId none) {
  for (const std::string& name : names) list.addItem(ToQt(name));
  list.setCurrentRow(std::cmp_less(chosen, names.size()) ? chosen : 0);
  if (!names.empty()) return;
  list.addItem(QtText(none));
  list.setEnabled(false);
}

}  // namespace

MidiToWaveDialog::MidiToWaveDialog(MidiToWaveParameters parameters,
                                   const std::vector<std::string>& midiOutputs,
                                   const std::vector<std::string>& audioInputs, DialogHost& host,
                                   QWidget* parent)
    : HostedDialog(host, QtText(TextId::MidiWavePrompt), parent),
      parameters_(std::move(parameters)),
      ui_(std::make_unique<Ui::MIDWAVPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  FillDevices(*ui_->midiList, midiOutputs, parameters_.midiDevice, TextId::NoMidiDevices);
  FillDevices(*ui_->waveList, audioInputs, parameters_.waveDevice, TextId::MidiWaveNoInput);
  for (const std::int32_t rate : kSynthesisRates) ui_->rateBox->addItem(QString::number(rate), rate);
  ui_->recordBox->addItem(QStringLiteral("-"));
  for (const auto& [rate, channels, bits] : RecordingFormats()) {
    ui_->recordBox->addItem(
        ToQt(FormatText(TargetFormat(static_cast<std::uint32_t>(rate), static_cast<std::uint16_t>(bits),
                                     static_cast<std::uint16_t>(channels)))));
  }
  ShowParameters();
  UpdateControls();
  connect(ui_->cardRadio, &QAbstractButton::toggled, this, [this] { UpdateControls(); });
  connect(ui_->mixerButton, &QAbstractButton::clicked, this, [this] { OpenMixer(); });
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
  ui_->rateBox->setCurrentIndex(ui_->rateBox->findData(parameters_.format[0]));
  (parameters_.format[1] == 1 ? ui_->monoRadio : ui_->stereoRadio)->setChecked(true);
  (parameters_.format[2] == 8 ? ui_->eightRadio : ui_->sixteenRadio)->setChecked(true);
  const auto formats = RecordingFormats();
  for (std::size_t i = 0; i < formats.size(); ++i) {
    if (formats[i] == parameters_.recordingFormat) ui_->recordBox->setCurrentIndex(static_cast<int>(i) + 1);
  }
  const std::array buttons{ui_->noneRadio, ui_->eachRadio, ui_->projectRadio};
  buttons.at(static_cast<std::size_t>(parameters_.normalise))->setChecked(true);
}

void MidiToWaveDialog::UpdateControls() {
  ui_->cardGroup->setEnabled(ui_->cardRadio->isChecked());
  ui_->synthesisGroup->setEnabled(!ui_->cardRadio->isChecked());
}

void MidiToWaveDialog::OpenMixer() {
  for (const char* name : kMixers) {
    const QString program = QStandardPaths::findExecutable(QString::fromLatin1(name));
    if (!program.isEmpty() && QProcess::startDetached(program, {})) return;
  }
  ShowNotice(this, TextId::MidiWaveNoMixerProgram);
}

void MidiToWaveDialog::Commit() {
  const bool synthesis = ui_->synthesisRadio->isChecked();
  if (synthesis && ui_->rateBox->currentIndex() < 0) {
    ShowNotice(this, TextId::MidiWaveChooseRate);
    ui_->rateBox->setFocus();
    return;
  }
  parameters_.method =
      static_cast<std::int32_t>(synthesis ? MidiWaveMethod::Synthesis : MidiWaveMethod::SoundCard);
  if (ui_->midiList->isEnabled() || !synthesis)
    parameters_.midiDevice = std::max(ui_->midiList->currentRow(), 0);
  parameters_.waveDevice = std::max(ui_->waveList->currentRow(), 0);
  parameters_.configureMixer = ui_->mixerCheck->isChecked();
  if (ui_->rateBox->currentIndex() >= 0) parameters_.format[0] = ui_->rateBox->currentData().toInt();
  parameters_.format[1] = ui_->monoRadio->isChecked() ? 1 : 2;
  parameters_.format[2] = ui_->eightRadio->isChecked() ? 8 : 16;
  const int recording = ui_->recordBox->currentIndex();
  parameters_.recordingFormat = {0, 0, 0};
  if (recording > 0)
    parameters_.recordingFormat = RecordingFormats().at(static_cast<std::size_t>(recording) - 1);
  parameters_.normalise = ui_->eachRadio->isChecked() ? 1 : ui_->projectRadio->isChecked() ? 2 : 0;
  accept();
}

}  // namespace ts5
