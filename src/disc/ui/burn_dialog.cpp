#include "disc/ui/burn_dialog.h"

#include <QButtonGroup>
#include <algorithm>
#include <array>
#include <utility>

#include "audio/ui/normalise_box.h"
#include "disc/texts.h"
#include "disc/ui/field_binding.h"
#include "frame/cd_tracks.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/disc/cd_drive.h"
#include "platform/files/files.h"
#include "ui_BURNPARAMS.h"
#include "ui_COPYPARAMS.h"

namespace ts5::disc {
namespace {

// Radio buttons of one parent exclude each other only among their own.
void Group(QWidget* parent, std::initializer_list<QAbstractButton*> buttons) {
  auto* const group = new QButtonGroup(parent);
  for (QAbstractButton* button : buttons) group->addButton(button);
}

// False after saying that the folder is not there.
bool FolderIsThere(QWidget* dialog, bool system, QLineEdit* field) {
  if (system || IsDirectory(field->text().toStdString())) return true;
  ShowWarning(dialog, texts::NoTemporaryFolder);
  FocusText(field);
  return false;
}

}  // namespace

RecorderFacts FactsOfRecorder(const std::string& drive) {
  RecorderFacts facts;
  const auto path = CdDirectoryOf(drive);
  auto opened = path ? CdDrive::Open(*path) : Failure(Outcome::SourceFailed);
  const auto capabilities = opened ? opened->ReadCapabilities() : Failure(Outcome::CdDriveFailed);
  if (!capabilities) return facts;
  if (capabilities->writeSpeed >= static_cast<std::uint32_t>(kLeastSpeed))
    facts.mostSpeed = capabilities->writeSpeed;
  facts.protectsFromUnderruns = capabilities->underrunProtection;
  return facts;
}

void ChooseFolder(QWidget* parent, QLineEdit* field) {
  std::string folder = FromQt(field->text());
  if (AskDirectory(QtText(texts::TemporaryFolderCaption), folder, parent)) field->setText(ToQt(folder));
}

BurnDialog::BurnDialog(BurnParameters parameters, std::size_t jobNumber, RecorderFacts facts,
                       MidiToWaveDevices devices, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::BurnPrompt), parent),
      parameters_(std::move(parameters)),
      facts_(facts),
      devices_(std::move(devices)),
      normalise_(new NormaliseBox(NormaliseBox::Wording::Burner)),
      ui_(std::make_unique<Ui::BURNPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  ui_->normaliseLayout->addWidget(normalise_);
  ui_->normaliseLayout->addStretch();
  ui_->BurnSpeed->setMaximum(static_cast<int>(facts_.mostSpeed));
  if (parameters_.prefix.empty()) parameters_.prefix = DefaultPrefix(jobNumber);
  if (!facts_.protectsFromUnderruns) parameters_.underrunProtection = false;
  ShowFields(*this, BurnFields(), parameters_);
  normalise_->SetMode(parameters_.Normalising());
  UpdateControls();
  connect(ui_->folderButton, &QAbstractButton::clicked, this, [this] {
    ui_->BurnSysTempPath_0->setChecked(true);
    ChooseFolder(this, ui_->BurnUserTempPath);
  });
  connect(ui_->midiButton, &QAbstractButton::clicked, this, [this] { EditMidi(); });
  for (QAbstractButton* button : std::initializer_list<QAbstractButton*>{
           ui_->BurnMode_0, ui_->BurnMode_1, ui_->BurnMode_2, ui_->BurnSysTempPath_0, ui_->BurnDisc_at_Once_1,
           ui_->BurnCdText})
    connect(button, &QAbstractButton::toggled, this, [this] { UpdateControls(); });
}

BurnDialog::~BurnDialog() = default;

QString BurnDialog::HelpTopic() const {
  static constexpr std::array kTopics{
      "parm_cd-brenner-Quelldateien.htm", "parm_cd-brenner-Brennparameter.htm",
      "parm_cd-brenner-Konvertierung.htm", "parm_cd-brenner-Normalisieren.htm"};
  const int page = std::clamp(ui_->pages->currentIndex(), 0, static_cast<int>(kTopics.size()) - 1);
  return QString::fromLatin1(kTopics.at(static_cast<std::size_t>(page)));
}

void BurnDialog::UpdateControls() {
  const bool simulate = ui_->BurnMode_0->isChecked();
  if (simulate) ui_->BurnCopies->setValue(1);
  ui_->BurnCopies->setEnabled(!simulate);
  const bool atOnce = ui_->BurnDisc_at_Once_1->isChecked();
  ui_->failedGroup->setEnabled(atOnce);
  ui_->textGroup->setEnabled(atOnce);
  ui_->BurnGapless->setEnabled(atOnce);
  ui_->BurnTitle->setEnabled(ui_->BurnCdText->isChecked());
  ui_->BurnPerformer->setEnabled(ui_->BurnCdText->isChecked());
  ui_->BurnBurnProof->setEnabled(facts_.protectsFromUnderruns);
  ui_->BurnUserTempPath->setEnabled(ui_->BurnSysTempPath_0->isChecked());
  normalise_->SetProjectAllowed(atOnce);
}

void BurnDialog::EditMidi() {
  MidiToWaveDialog dialog(parameters_.midi, devices_, Host(), this);
  if (dialog.exec() == QDialog::Accepted) parameters_.midi = dialog.Parameters();
}

void BurnDialog::Commit() {
  if (!FolderIsThere(this, ui_->BurnSysTempPath_1->isChecked(), ui_->BurnUserTempPath)) {
    ui_->pages->setCurrentIndex(0);
    return;
  }
  const MidiToWaveParameters midi = parameters_.midi;
  TakeFields(*this, BurnFields(), parameters_);
  parameters_.midi = midi;
  parameters_.normalise = static_cast<std::int32_t>(normalise_->Mode());
  accept();
}

CopyDialog::CopyDialog(CopyParameters parameters, RecorderFacts facts, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::CopyPrompt), parent),
      parameters_(std::move(parameters)),
      facts_(facts),
      ui_(std::make_unique<Ui::COPYPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  Group(this, {ui_->CopyDisc_at_Once_1, ui_->CopyDisc_at_Once_0});
  ui_->CopySpeed->setMaximum(static_cast<int>(facts_.mostSpeed));
  if (!facts_.protectsFromUnderruns) parameters_.underrunProtection = false;
  ShowFields(*this, CopyFields(), parameters_);
  UpdateControls();
  connect(ui_->folderButton, &QAbstractButton::clicked, this, [this] {
    ui_->CopySysTempPath_0->setChecked(true);
    ChooseFolder(this, ui_->CopyUserTempPath);
  });
  for (QAbstractButton* button : std::initializer_list<QAbstractButton*>{
           ui_->CopyMode_0, ui_->CopyMode_1, ui_->CopyMode_2, ui_->CopySysTempPath_0, ui_->CopyDisc_at_Once_1,
           ui_->CopyOnTheFly})
    connect(button, &QAbstractButton::toggled, this, [this] { UpdateControls(); });
}

CopyDialog::~CopyDialog() = default;

void CopyDialog::UpdateControls() {
  const bool simulate = ui_->CopyMode_0->isChecked();
  if (simulate) ui_->CopyCopies->setValue(1);
  ui_->CopyCopies->setEnabled(!simulate);
  const bool atOnce = ui_->CopyDisc_at_Once_1->isChecked();
  ui_->CopyOnTheFly->setEnabled(atOnce);
  const bool fly = atOnce && ui_->CopyOnTheFly->isChecked();
  ui_->CopyDeleteWaves->setEnabled(!fly);
  ui_->CopyUserTempPath->setEnabled(!fly && ui_->CopySysTempPath_0->isChecked());
  ui_->CopyBurnProof->setEnabled(facts_.protectsFromUnderruns);
}

void CopyDialog::Commit() {
  if (!FolderIsThere(this, ui_->CopySysTempPath_1->isChecked(), ui_->CopyUserTempPath)) return;
  TakeFields(*this, CopyFields(), parameters_);
  accept();
}

}  // namespace ts5::disc
