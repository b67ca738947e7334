#include "search/ui/search_dialog.h"

#include <QApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <algorithm>
#include <array>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "midi/instruments.h"
#include "platform/base/text.h"
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

SearchDialog::SearchDialog(SearchKind kind, SearchParameters parameters, MelodyStore& store,
                           std::vector<std::string> devices, MidiOpener opener, DialogHost& host,
                           QWidget* parent, KeyboardPorts keyboards)
    : HostedDialog(host, QtText(texts::SearchDialogPrompt), parent),
      kind_(kind),
      parameters_(std::move(parameters)),
      store_(store),
      sound_(std::move(devices), opener, nullptr),
      preview_(std::move(opener)),
      ui_(std::make_unique<Ui::MIDIFINDPARAMS>()) {
  ui_->setupUi(this);
  ConnectButtons();
  // "Abbrechen" is a decision; it is not asked about.
  disconnect(ui_->cancelButton, &QAbstractButton::clicked, this, nullptr);
  connect(ui_->cancelButton, &QAbstractButton::clicked, this, [this] { HostedDialog::reject(); });
  AddMelodyRow(std::move(keyboards));
  FillOptions();
  ui_->notePanel->PutTabStopsBehind(ui_->tabs);
  // New notes come behind those that are there.
  SearchMelody edited = parameters_.melody;
  edited.cursor = edited.elements.size();
  ui_->notePanel->SetMelody(std::move(edited));
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
  opened_ = Shown();
}

SearchDialog::~SearchDialog() = default;

void SearchDialog::AddMelodyRow(KeyboardPorts keyboards) {
  auto* const row = new QHBoxLayout;
  auto* const widely = new QPushButton(QtText(texts::NoteSearchWidely), this);
  widely->setObjectName(QStringLiteral("searchWidelyButton"));
  widely->setToolTip(QtText(texts::NoteSearchWidelyTip));
  widely->setAutoDefault(false);
  connect(widely, &QPushButton::clicked, this, &SearchDialog::SearchWidely);
  row->addWidget(widely);
  searchedFor_ = new QLabel(this);
  searchedFor_->setObjectName(QStringLiteral("searchedForLabel"));
  row->addWidget(searchedFor_, 1);
  auto* const box = new KeyboardBox(std::move(keyboards), this);
  box->setObjectName(QStringLiteral("keyboardBox"));
  auto* const label = new QLabel(QtText(texts::NoteKeyboard), this);
  label->setBuddy(box);
  row->addWidget(label);
  row->addWidget(box);
  ui_->melodyLayout->addLayout(row);
  connect(box, &KeyboardBox::KeyPressed, ui_->notePanel, &NoteEditorPanel::EnterKey);
  connect(ui_->notePanel, &NoteEditorPanel::NoteEntered, this, [this](int key) {
    if (sound_.Available() && !sound_.Playing()) preview_.Play(DeviceName(), Voice().instrument, key);
  });
}

// What finds most: any rhythm, the intervals alone, and as much tolerance as there is.
void SearchDialog::SearchWidely() {
  parameters_.options = WithPitch(WithRhythm(parameters_.options, RhythmMode::Any), PitchMode::Relative);
  ui_->toleranceBox->setCurrentIndex(static_cast<int>(Tolerance::High));
  ui_->firstTrackCheck->setChecked(false);
  ShowOptions();
  ui_->notePanel->setFocus();
}

void SearchDialog::FillOptions() {
  if (kind_ == SearchKind::Score) {
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

  searchedFor_->setText(ToQt(Format(Text(texts::NoteSearchedFor),
                                    FromQt(rhythms[static_cast<std::size_t>(options.rhythm)]->text()),
                                    FromQt(pitches[static_cast<std::size_t>(options.pitch)]->text()))));
  ui_->pitchIgnoreRadio->setEnabled(options.rhythm != RhythmMode::Any);
  ui_->rhythmAnyRadio->setEnabled(options.pitch != PitchMode::Ignore);
  ui_->toleranceBox->setEnabled(options.rhythm != RhythmMode::Any);
  ui_->midiGroup->setEnabled(sound_.Available() && !sound_.Playing());
}

MelodyVoice SearchDialog::Voice() const {
  return {ui_->deviceBox->currentIndex() - 1, ui_->tempoBox->value(), ui_->instrumentBox->currentIndex()};
}

std::string SearchDialog::DeviceName() const {
  const int index = ui_->deviceBox->currentIndex() - 1;
  const auto& devices = sound_.Devices();
  return index >= 0 && static_cast<std::size_t>(index) < devices.size()
             ? devices[static_cast<std::size_t>(index)]
             : std::string{};
}

void SearchDialog::TogglePlaying() {
  preview_.Release();
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
  preview_.Release();
  ManageMelodiesDialog dialog(store_, ui_->notePanel->Melody(), sound_, Voice(), Host(), this);
  dialog.exec();
  sound_.Stop();
  if (dialog.Loaded()) ui_->notePanel->ReplaceMelody(dialog.Melody());
  ui_->notePanel->setFocus();
}

SearchParameters SearchDialog::Shown() const {
  SearchParameters shown = parameters_;
  const MelodyVoice voice = Voice();
  shown.melody = ui_->notePanel->Melody();
  shown.options.tolerance = static_cast<Tolerance>(std::max(ui_->toleranceBox->currentIndex(), 0));
  shown.options.firstTrackOnly = ui_->firstTrackCheck->isChecked();
  shown.options.drumTrack = ui_->drumTrackCheck->isChecked();
  shown.device = sound_.Available() ? voice.device : kNoMidiOutput;
  shown.tempo = voice.tempo;
  shown.instrument = voice.instrument;
  return shown;
}

void SearchDialog::Commit() {
  parameters_ = Shown();
  TrimMelodyRests(parameters_.melody);
  accept();
}

void SearchDialog::reject() {
  const SearchParameters now = Shown();
  const bool changed = now.melody.elements != opened_.melody.elements || now.options != opened_.options;
  if (changed && !AskYesNo(this, texts::AskDiscardMelody, DefaultButton::No)) return;
  HostedDialog::reject();
}

void SearchDialog::done(int result) {
  sound_.Stop();
  preview_.Release();
  HostedDialog::done(result);
}

QString SearchDialog::HelpTopic() const {
  return ui_->tabs->currentIndex() == 0 ? QStringLiteral("parm_melodiesuche-melodie.htm")
                                        : QStringLiteral("parm_melodiesuche-optionen.htm");
}

}  // namespace ts5
