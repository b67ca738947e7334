#include "audio/ui/mixer_help_dialog.h"

#include <QProcess>
#include <QStandardPaths>
#include <array>

#include "audio/midi_recording.h"
#include "audio/texts.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "ui_ASKDIALOG.h"

namespace ts5 {
namespace {

// The programs with which today's desktops set what is recorded.
constexpr std::array kMixers = {"pavucontrol", "pavucontrol-qt", "kmix", "gnome-control-center",
                                "alsamixergui"};

}  // namespace

void OpenMixerProgram(QWidget* owner) {
  for (const char* name : kMixers) {
    const QString program = QStandardPaths::findExecutable(QString::fromLatin1(name));
    if (!program.isEmpty() && QProcess::startDetached(program, {})) return;
  }
  ShowNotice(owner, texts::MidiWaveNoMixerProgram);
}

MixerHelpDialog::MixerHelpDialog(TextId problem, const std::string& sum, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::MidiWaveMixerPrompt), parent), ui_(std::make_unique<Ui::ASKDIALOG>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->problemLabel->setText(QtText(problem));
  ui_->sumEdit->setText(ToQt(sum));
  FocusText(ui_->sumEdit);
  connect(ui_->mixerButton, &QAbstractButton::clicked, this, [this] { OpenMixerProgram(this); });
}

MixerHelpDialog::~MixerHelpDialog() = default;

std::string MixerHelpDialog::Sum() const {
  return FromQt(ui_->sumEdit->text().trimmed());
}

bool MixerHelpDialog::NotAgain() const {
  return ui_->againCheck->isChecked();
}

QString MixerHelpDialog::HelpTopic() const {
  return QStringLiteral("parm_midi-wave-konverter.htm");
}

bool PrepareMixer(const MidiToWaveParameters& parameters, const std::vector<std::string>& inputs,
                  Settings& settings, DialogHost& host, QWidget* owner) {
  const auto problem = MixerProblem(parameters, inputs, settings);
  if (!problem) return true;
  MixerHelpDialog dialog(*problem, settings.recordMixerName, host, owner);
  if (dialog.exec() != QDialog::Accepted) return false;
  TakeRecordingSum(dialog.Sum(), inputs, settings);
  if (dialog.NotAgain()) ForgetMixerProblem(*problem, settings);
  return true;
}

}  // namespace ts5
