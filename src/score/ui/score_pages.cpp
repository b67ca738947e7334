#include "score/ui/score_pages.h"

#include <QAbstractButton>
#include <QCheckBox>
#include <QLabel>
#include <QListWidget>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <utility>

#include "frame/texts.h"
#include "frame/ui/file_dialogs.h"
#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/files/paths.h"
#include "score/parameter_set.h"
#include "score/texts.h"
#include "score/ui/sound_page.h"
#include "ui_PLAYBACK2.h"
#include "ui_PLAYBACK3.h"
#include "ui_PLAYBACK4.h"
#include "ui_PLAYBACK6.h"

namespace ts5 {
namespace {

constexpr auto kHelpTopic = "parm_partitur-parameterset.htm";

// The controls of a mark: those of a mark that does not occur in the score cannot be used.
struct MarkControls {
  Articulation which;
  const char* names[3];
};
constexpr MarkControls kMarkControls[] = {
    {Articulation::Staccato, {"labelStaccato", "ProzStaccato", "ProzVelStaccato"}},
    {Articulation::Staccatissimo, {"labelStaccatissimo", "ProzStaccatissimo", "ProzVelStaccatissimo"}},
    {Articulation::Tenuto, {"labelTenuto", "ProzTenuto", "ProzVelTenuto"}},
    {Articulation::StrongAccent, {"labelAkzentStark", "AkzentStark", "CutAkzentStark"}},
    {Articulation::SoftAccent, {"labelAkzentNormal", "AkzentNormal", "CutAkzentNormal"}},
    {Articulation::HardBeat, {"labelSchlagSchwer", "SchlagSchwer", "CutSchlagSchwer"}},
    {Articulation::SoftBeat, {"labelSchlagWeich", "SchlagWeich", "CutSchlagWeich"}},
};

// A control of any of the pages by the name of what it sets.
template <typename Widget>
Widget* Find(std::span<QWidget* const> pages, const QString& name) {
  for (QWidget* page : pages) {
    if (auto* widget = page->findChild<Widget*>(name)) return widget;
  }
  return nullptr;
}

QString Named(const char* name, std::size_t index) {
  return QLatin1String(name) + QString::number(index);
}

template <typename Template>
std::pair<std::unique_ptr<Template>, QWidget*> AddPage(QTabWidget& tabs) {
  auto form = std::make_unique<Template>();
  auto* const page = new QWidget;
  form->setupUi(page);
  tabs.addTab(page, page->windowTitle());
  return {std::move(form), page};
}

}  // namespace

ScorePages::ScorePages(Purpose purpose, std::string setDirectory, DialogHost& host, QTabWidget& tabs)
    : QObject(&tabs), setDirectory_(std::move(setDirectory)), host_(host), window_(tabs.window()) {
  std::tie(staves_, pages_[0]) = AddPage<Ui::PLAYBACK2>(tabs);
  std::tie(first_, pages_[1]) = AddPage<Ui::PLAYBACK3>(tabs);
  std::tie(second_, pages_[2]) = AddPage<Ui::PLAYBACK4>(tabs);
  sounds_ = new SoundPage;
  tabs.addTab(sounds_, sounds_->windowTitle());
  std::tie(dynamics_, pages_[3]) = AddPage<Ui::PLAYBACK6>(tabs);
  staves_->stavesLabel->setText(
      QtText(purpose == Purpose::Play ? texts::ScoreStavesPlayed : texts::ScoreStavesWritten));
  tabs.setUsesScrollButtons(false);  // all pages in sight
  Bind();
  Show(nullptr, {});
}

ScorePages::~ScorePages() = default;

void ScorePages::Bind() {
  const auto take = [this] { Take(); };
  for (const PlaybackField& field : PlaybackFields()) {
    const QString name = ToQt(field.name);
    if (auto* box = Find<QSpinBox>(pages_, name)) {
      box->setRange(field.least, field.most);
      connect(box, &QSpinBox::valueChanged, this, take);
    } else if (auto* check = Find<QCheckBox>(pages_, name)) {
      connect(check, &QAbstractButton::toggled, this, take);
    }
  }
  for (std::size_t i = 0; i < kDynamicLevels.size(); ++i)
    connect(Find<QSlider>(pages_, Named("dynamic", i)), &QSlider::valueChanged, this, take);
  for (QCheckBox* check : {staves_->repeatsCheck, second_->autoCheck})
    connect(check, &QAbstractButton::toggled, this, take);
  connect(staves_->stavesList, &QListWidget::itemChanged, this, [this] { TakeStaves(); });
  connect(second_->loadButton, &QAbstractButton::clicked, this, [this] { LoadSetOfUser(); });
  connect(second_->saveButton, &QAbstractButton::clicked, this, [this] { SaveSetOfUser(); });
  connect(sounds_, &SoundPage::ChannelChosen, this, [this](int staff, int voice, int channel) {
    ChooseChannel(*score_, parameters_, static_cast<std::size_t>(staff), static_cast<std::size_t>(voice),
                  static_cast<std::uint8_t>(channel));
    sounds_->ShowScore(score_, parameters_);
    emit Changed();
  });
  connect(sounds_, &SoundPage::SoundChosen, this, [this](int staff, int program) {
    ChooseSound(*score_, parameters_, static_cast<std::size_t>(staff), static_cast<std::uint8_t>(program));
    sounds_->ShowScore(score_, parameters_);
    emit Changed();
  });
}

void ScorePages::Show(std::shared_ptr<const ScoreAtHand> score, const ScoreParameters& parameters) {
  showing_ = true;
  score_ = std::move(score);
  parameters_ = parameters;
  ShowValues();
  ShowStaves();
  EnableMarks();
  sounds_->ShowScore(score_, parameters_);
  second_->saveButton->setEnabled(score_ != nullptr);
  showing_ = false;
}

void ScorePages::SetPlaying(bool playing) {
  staves_->repeatsCheck->setEnabled(!playing);
  staves_->repeatsCheck->setToolTip(playing ? QtText(texts::PlaybackOnlyStopped) : QString());
}

void ScorePages::ShowValues() {
  const PlaybackParameters& playback = parameters_.playback;
  for (const PlaybackField& field : PlaybackFields()) {
    const QString name = ToQt(field.name);
    const int value = field.get(playback);
    if (auto* box = Find<QSpinBox>(pages_, name)) {
      box->setValue(value);
    } else if (auto* check = Find<QCheckBox>(pages_, name)) {
      check->setChecked(value != 0);
    }
  }
  for (std::size_t i = 0; i < kDynamicLevels.size(); ++i) {
    Find<QSlider>(pages_, Named("dynamic", i))->setValue(playback.dynamicVelocities[i]);
    Find<QLabel>(pages_, Named("dynamicValue", i))->setNum(playback.dynamicVelocities[i]);
  }
  staves_->repeatsCheck->setChecked(parameters_.playRepeats);
  second_->autoCheck->setChecked(parameters_.automaticSet);
  second_->setLabel->setText(parameters_.parameterSet.empty() ? QtText(texts::ParameterSetNone)
                                                              : ToQt(parameters_.parameterSet));
  second_->setLabel->setToolTip(ToQt(parameters_.parameterSet).toHtmlEscaped());
}

void ScorePages::ShowStaves() {
  QListWidget& list = *staves_->stavesList;
  list.clear();
  list.setEnabled(score_ != nullptr);
  if (score_ == nullptr) {
    list.addItem(QtText(texts::ScoreNoneAtHand));
    return;
  }
  const bool own = parameters_.chosenFor == score_->path;
  for (std::size_t i = 0; i < score_->staves.size(); ++i) {
    const bool silent = own && i < parameters_.silentStaves.size() && parameters_.silentStaves[i];
    auto* const item = new QListWidgetItem(ToQt(score_->staves[i].name), &list);
    item->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable | Qt::ItemIsUserCheckable);
    item->setCheckState(silent ? Qt::Unchecked : Qt::Checked);
  }
  list.setCurrentRow(0);
}

void ScorePages::EnableMarks() {
  for (const MarkControls& mark : kMarkControls) {
    const bool occurs = score_ == nullptr || score_->Has(mark.which);
    for (const char* name : mark.names) Find<QWidget>(pages_, QLatin1String(name))->setEnabled(occurs);
  }
  for (std::size_t i = 0; i < kDynamicLevels.size(); ++i) {
    const bool occurs = score_ == nullptr || score_->HasDynamic(i);
    for (const char* name : {"dynamicMark", "dynamic", "dynamicValue"})
      Find<QWidget>(pages_, Named(name, i))->setEnabled(occurs);
  }
}

void ScorePages::Take() {
  if (showing_) return;
  PlaybackParameters& playback = parameters_.playback;
  for (const PlaybackField& field : PlaybackFields()) {
    const QString name = ToQt(field.name);
    if (const auto* box = Find<QSpinBox>(pages_, name)) {
      field.set(playback, box->value());
    } else if (const auto* check = Find<QCheckBox>(pages_, name)) {
      field.set(playback, check->isChecked() ? 1 : 0);
    }
  }
  for (std::size_t i = 0; i < kDynamicLevels.size(); ++i) {
    const int value = Find<QSlider>(pages_, Named("dynamic", i))->value();
    playback.dynamicVelocities[i] = static_cast<std::uint8_t>(value);
    Find<QLabel>(pages_, Named("dynamicValue", i))->setNum(value);
  }
  parameters_.playRepeats = staves_->repeatsCheck->isChecked();
  parameters_.automaticSet = second_->autoCheck->isChecked();
  emit Changed();
}

void ScorePages::TakeStaves() {
  if (showing_ || score_ == nullptr) return;
  parameters_ = parameters_.For(score_->path);
  parameters_.silentStaves.assign(score_->staves.size(), false);
  for (std::size_t i = 0; i < score_->staves.size(); ++i)
    parameters_.silentStaves[i] =
        staves_->stavesList->item(static_cast<int>(i))->checkState() == Qt::Unchecked;
  emit Changed();
}

void ScorePages::LoadSetOfUser() {
  const auto path = AskFileToOpen({.title = QtText(texts::ParameterSetLoad),
                                   .start = setDirectory_,
                                   .filter = Text(texts::ParameterSetFilter),
                                   .helpTopic = QLatin1String(kHelpTopic)},
                                  host_, window_);
  if (!path) return;
  ScoreParameters loaded = score_ != nullptr ? parameters_.For(score_->path) : parameters_;
  const auto voices = score_ != nullptr ? score_->Voices() : std::vector<std::uint8_t>{};
  const Outcome outcome = LoadSet(*path, voices, loaded);
  Show(score_, loaded);
  emit Changed();
  if (Failed(outcome)) ShowWarning(window_, ToQt(SetFailure(*path)));
}

void ScorePages::SaveSetOfUser() {
  const std::string name = WithExtension(FileNameOf(score_->path), kParameterSetExtension);
  const auto path = AskFileToSave({.title = QtText(texts::ParameterSetSave),
                                   .start = JoinPath(setDirectory_, name),
                                   .filter = Text(texts::ParameterSetFilter),
                                   .helpTopic = QLatin1String(kHelpTopic)},
                                  host_, window_);
  if (!path) return;
  // The channels as they are in force, chosen or not.
  PlaybackParameters saved = parameters_.For(score_->path).playback;
  saved.channels.assign(score_->staves.size(), kNoChannels);
  for (std::size_t staff = 0; staff < score_->staves.size(); ++staff) {
    for (std::size_t voice = 0; voice < score_->staves[staff].voices; ++voice)
      saved.channels[staff][voice] = ChannelOf(*score_, parameters_, staff, voice);
  }
  if (Failed(SaveParameterSet(saved, score_->Voices(), *path))) {
    ShowWarning(window_, texts::ParameterSetNotSaved);
    return;
  }
  parameters_ = parameters_.For(score_->path);
  parameters_.parameterSet = *path;
  Show(score_, parameters_);
  emit Changed();
}

}  // namespace ts5
