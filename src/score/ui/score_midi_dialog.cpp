#include "score/ui/score_midi_dialog.h"

#include <QShowEvent>
#include <QTimer>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "score/parameter_set.h"
#include "score/texts.h"
#include "score/ui/score_pages.h"
#include "ui_SCOREMIDI.h"

namespace ts5 {

ScoreMidiDialog::ScoreMidiDialog(ScoreToMidiParameters parameters, const std::string& source,
                                 std::string setDirectory, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::ScoreMidiPrompt), parent),
      parameters_(std::move(parameters)),
      ui_(std::make_unique<Ui::SCOREMIDI>()) {
  ui_->setupUi(this);
  ConnectButtons();
  pages_ = new ScorePages(ScorePages::Purpose::Write, setDirectory, host, *ui_->pages);
  std::shared_ptr<const ScoreAtHand> score;
  if (auto read = ReadScoreAtHand(source)) score = std::make_shared<ScoreAtHand>(*std::move(read));
  ScoreParameters shown = parameters_.For(source);
  if (score != nullptr && shown.parameterSet.empty())
    if (Failed(LoadAutomaticSet(setDirectory, source, score->Voices(), shown)))
      setFailed_ = SetFailure(AutomaticParameterSet(setDirectory, source));
  pages_->Show(std::move(score), shown);

  (parameters_.UsesEngine() ? ui_->engineRadio : ui_->libraryRadio)->setChecked(true);
  ui_->lyricsCheck->setChecked(parameters_.lyrics);
  ui_->libraryRepeatsCheck->setChecked(parameters_.repeats);
  ui_->invisibleCheck->setChecked(parameters_.invisible);
  ui_->noteValueBox->setValue(parameters_.noteValue);
  connect(ui_->engineRadio, &QAbstractButton::toggled, this, [this] { UpdateControls(); });
  UpdateControls();
}

ScoreMidiDialog::~ScoreMidiDialog() = default;

QString ScoreMidiDialog::HelpTopic() const {
  return QStringLiteral("parm_partitur-midi-konverter.htm");
}

void ScoreMidiDialog::UpdateControls() {
  ui_->libraryGroup->setEnabled(ui_->libraryRadio->isChecked());
}

void ScoreMidiDialog::showEvent(QShowEvent* event) {
  HostedDialog::showEvent(event);
  if (const std::string failed = std::exchange(setFailed_, {}); !failed.empty())
    QTimer::singleShot(0, this, [this, failed] { ShowWarning(this, ToQt(failed)); });
}

void ScoreMidiDialog::Commit() {
  static_cast<ScoreParameters&>(parameters_) = pages_->Parameters();
  // The number of another method, which stands for the library as well, is kept.
  if (ui_->engineRadio->isChecked()) {
    parameters_.method = 1;
  } else if (parameters_.UsesEngine()) {
    parameters_.method = 0;
  }
  parameters_.lyrics = ui_->lyricsCheck->isChecked();
  parameters_.repeats = ui_->libraryRepeatsCheck->isChecked();
  parameters_.invisible = ui_->invisibleCheck->isChecked();
  parameters_.noteValue = ui_->noteValueBox->value();
  accept();
}

}  // namespace ts5
