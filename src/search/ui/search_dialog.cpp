#include "search/ui/search_dialog.h"

#include <QApplication>
#include <algorithm>
#include <array>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "search/texts.h"
#include "search/ui/manage_melodies_dialog.h"
#include "search/ui/save_melody_dialog.h"
#include "ui_MIDIFINDPARAMS.h"

namespace ts5 {
namespace {

constexpr std::array kToleranceTexts = {texts::ToleranceNone, texts::ToleranceLow, texts::ToleranceMedium,
                                        texts::ToleranceHigh};
constexpr int kPrograms = 128;

}  // namespace

SearchDialog::SearchDialog(FilterId filter, SearchParameters parameters, MelodyStore& store,
                           std::vector<std::string> devices, MidiOpener opener, DialogHost& host,
                           QWidget* parent)
    : HostedDialog(host, QtText(texts::SearchDialogPrompt), parent),
      filter_(filter),
      parameters_(std::move(parameters)),
      store_(store),
      sound_(std::move(devices), std::move(opener), nullptr),
      ui_(std::make_unique<Ui::MIDIFINDPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  FillOptions();
  ui_->notePanel->PutTabStopsBehind(ui_->tabs);
  ui_->notePanel->SetMelody(parameters_.melody);
  ui_->notePanel->SetCanPlay(sound_.Available());
  connect(ui_->notePanel, &NoteEditorPanel::PlayRequested, this, &SearchDialog::TogglePlaying);
  connect(ui_->notePanel, &NoteEditorPanel::SaveRequested, this, &SearchDialog::SaveMelody);
  connect(ui_->notePanel, &NoteEditorPanel::ManageRequested, this, &SearchDialog::ManageMelodies);
  connect(&sound_, &MelodySound::PlayingChanged, this, [this](bool playing) {
    ui_->notePanel->SetPlaying(playing);
    ShowOptions();
  });
  connect(&sound_, &MelodySound::DeviceGone, this, [this] {
    QWidget* const front = QApplication::activeModalWidget();
    ShowWarning(front != nullptr ? front : this, texts::MidiDeviceGone);
  });
  ui_->notePanel->setFocus();
}

SearchDialog::~SearchDialog() = default;

void SearchDialog::FillOptions() {
  if (filter_ == FilterId::ScoreSearch) {
    ui_->firstTrackCheck->setText(QtText(texts::FirstStaffOnly));
    ui_->drumTrackCheck->setText(QtText(texts::DrumStaffToo));
    ui_->toleranceLabel->hide();
    ui_->toleranceBox->hide();
  }
  for (const TextId text : kToleranceTexts) ui_->toleranceBox->addItem(QtText(text));
  if (sound_.Available()) ui_->deviceBox->addItem(QtText(texts::MidiMapper));
  for (const std::string& device : sound_.Devices()) ui_->deviceBox->addItem(ToQt(device));
  for (int program = 0; program < kPrograms; ++program)
    ui_->instrumentBox->addItem(ToQt(InstrumentName(program)));

  ui_->toleranceBox->setCurrentIndex(static_cast<int>(parameters_.options.tolerance));
  ui_->firstTrackCheck->setChecked(parameters_.options.firstTrackOnly);
  ui_->drumTrackCheck->setChecked(parameters_.options.drumTrack);
  // A device that is not there any more: the mapper.
  const int device = parameters_.device + 1;
  ui_->deviceBox->setCurrentIndex(device < ui_->deviceBox->count() ? device : 0);
  ui_->tempoSlider->setValue(parameters_.tempo);
  ui_->tempoBox->setValue(parameters_.tempo);
  ui_->instrumentBox->setCurrentIndex(parameters_.instrument);

  const std::array rhythms = {ui_->rhythmExactRadio, ui_->rhythmRelativeRadio, ui_->rhythmAnyRadio};
  for (std::size_t i = 0; i < rhythms.size(); ++i) {
    connect(rhythms[i], &QRadioButton::clicked, this, [this, i] {
      parameters_.options = WithRhythm(parameters_.options, static_cast<RhythmMode>(i));
      ShowOptions();
    });
  }
  const std::array pitches = {ui_->pitchAbsoluteRadio, ui_->pitchAnyOctaveRadio, ui_->pitchRelativeRadio,
                              ui_->pitchIgnoreRadio};
  for (std::size_t i = 0; i < pitches.size(); ++i) {
    connect(pitches[i], &QRadioButton::clicked, this, [this, i] {
      parameters_.options = WithPitch(parameters_.options, static_cast<PitchMode>(i));
      ShowOptions();
    });
  }
  connect(ui_->tempoSlider, &QSlider::valueChanged, ui_->tempoBox, &QSpinBox::setValue);
  connect(ui_->tempoBox, &QSpinBox::valueChanged, ui_->tempoSlider, &QSlider::setValue);
  ShowOptions();
}

void SearchDialog::ShowOptions() {
  const SearchOptions& options = parameters_.options;
  const std::array rhythms = {ui_->rhythmExactRadio, ui_->rhythmRelativeRadio, ui_->rhythmAnyRadio};
  rhythms[static_cast<std::size_t>(options.rhythm)]->setChecked(true);
  const std::array pitches = {ui_->pitchAbsoluteRadio, ui_->pitchAnyOctaveRadio, ui_->pitchRelativeRadio,
                              ui_->pitchIgnoreRadio};
  pitches[static_cast<std::size_t>(options.pitch)]->setChecked(true);

  ui_->pitchIgnoreRadio->setEnabled(options.rhythm != RhythmMode::Any);
  ui_->rhythmAnyRadio->setEnabled(options.pitch != PitchMode::Ignore);
  ui_->toleranceBox->setEnabled(options.rhythm != RhythmMode::Any);
  ui_->midiGroup->setEnabled(sound_.Available() && !sound_.Playing());
}

MelodyVoice SearchDialog::Voice() const {
  return {ui_->deviceBox->currentIndex() - 1, ui_->tempoBox->value(), ui_->instrumentBox->currentIndex()};
}

void SearchDialog::TogglePlaying() {
  if (sound_.Playing()) {
    sound_.Stop();
  } else if (!sound_.Start(ui_->notePanel->Melody().elements, Voice())) {
    ShowWarning(this, texts::MelodyNotPlayed);
  }
}

void SearchDialog::SaveMelody() {
  SaveMelodyDialog dialog(store_, ui_->notePanel->Melody(), Host(), this);
  dialog.exec();
}

void SearchDialog::ManageMelodies() {
  sound_.Stop();
  ManageMelodiesDialog dialog(store_, ui_->notePanel->Melody(), sound_, Voice(), Host(), this);
  dialog.exec();
  sound_.Stop();
  if (dialog.Loaded()) ui_->notePanel->SetMelody(dialog.Melody());
  ui_->notePanel->setFocus();
}

void SearchDialog::Commit() {
  const MelodyVoice voice = Voice();
  parameters_.melody = ui_->notePanel->Melody();
  TrimMelodyRests(parameters_.melody);
  parameters_.options.tolerance = static_cast<Tolerance>(std::max(ui_->toleranceBox->currentIndex(), 0));
  parameters_.options.firstTrackOnly = ui_->firstTrackCheck->isChecked();
  parameters_.options.drumTrack = ui_->drumTrackCheck->isChecked();
  parameters_.device = sound_.Available() ? voice.device : kNoMidiOutput;
  parameters_.tempo = voice.tempo;
  parameters_.instrument = voice.instrument;
  accept();
}

void SearchDialog::done(int result) {
  sound_.Stop();
  HostedDialog::done(result);
}

QString SearchDialog::HelpTopic() const {
  return ui_->tabs->currentIndex() == 0 ? QStringLiteral("parm_melodiesuche-melodie.htm")
                                        : QStringLiteral("parm_melodiesuche-optionen.htm");
}

}  // namespace ts5
