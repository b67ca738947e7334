#include "score/ui/score_playback.h"

#include <QSignalBlocker>
#include <QTimer>
#include <algorithm>
#include <utility>

#include "frame/ui/message_box.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "score/parameter_set.h"
#include "score/texts.h"
#include "score/ui/score_pages.h"
#include "score/ui/staff_lights.h"
#include "ui_PLAYBACKSCORE.h"

namespace ts5 {
namespace {

QStringList StaffNames(const ScoreAtHand* score) {
  QStringList names;
  if (score == nullptr) return names;
  for (const StaffAtHand& staff : score->staves) names << ToQt(staff.name);
  return names;
}

}  // namespace

ScorePlayback::ScorePlayback(PlaybackWindow& window, Subject subject, DialogHost& host)
    : QObject(&window),
      window_(window),
      subject_(std::move(subject)),
      ui_(std::make_unique<Ui::PLAYBACKSCORE>()) {
  auto* const extras = new QWidget;
  ui_->setupUi(extras);
  lights_ = new StaffLights(extras);
  lights_->setAccessibleName(ui_->lightsLabel->text());
  ui_->lightsLayout->addWidget(lights_);
  window_.AddExtras(extras);
  pages_ = new ScorePages(ScorePages::Purpose::Play, subject_.setDirectory, host, window_.Pages());
  ui_->tempoSlider->setRange(kSlowestTempo, kFastestTempo);
  connect(ui_->tempoSlider, &QSlider::valueChanged, this, [this](int tempo) {
    if (stage_) stage_->HoldTempo(static_cast<std::uint32_t>(tempo));
  });
  connect(ui_->ownTempoButton, &QAbstractButton::clicked, this, [this] {
    if (stage_) stage_->HoldTempo(std::nullopt);
  });
  connect(pages_, &ScorePages::Changed, this, [this] { Take(); });
  connect(&window_, &PlaybackWindow::Refreshed, this, [this] { Refresh(); });
  Refresh();
}

ScorePlayback::~ScorePlayback() = default;

void ScorePlayback::Refresh() {
  const auto stage = std::dynamic_pointer_cast<ScoreStage>(window_.Run()->player.Stage());
  if (stage != stage_) {
    stage_ = stage;
    shownTitle_ = 0;
    sourceShown_ = false;
  }
  const ScoreStage::View view = stage_ ? stage_->Look() : ScoreStage::View{};
  if (view.score != nullptr) {
    ShowTitle(view);
  } else {
    ShowSource();
  }
  pages_->SetPlaying(stage_ != nullptr);
  ui_->tempoGroup->setEnabled(view.score != nullptr);
  ui_->ownTempoButton->setEnabled(view.tempoHeld);
  lights_->SetLit(view.score != nullptr ? view.sounding : std::vector<bool>(lights_->Lit().size()));
}

void ScorePlayback::ShowTitle(const ScoreStage::View& view) {
  if (shownTitle_ != view.titles) {
    shownTitle_ = view.titles;
    lights_->SetStaves(StaffNames(view.score.get()));
    pages_->Show(view.score, stage_->Parameters());
  }
  if (view.tempo == 0 || ui_->tempoSlider->isSliderDown()) return;
  const QSignalBlocker quiet(ui_->tempoSlider);
  ui_->tempoSlider->setValue(static_cast<int>(std::min(view.tempo, kFastestTempo)));
  ui_->tempoLabel->setText(ToQt(Format(Text(texts::ScoreTempoValue), view.tempo)));
}

// While nothing plays: the score that would be played first.
void ScorePlayback::ShowSource() {
  ScorePlayerParameters* const parameters = subject_.parameters();
  const std::string source = subject_.source();
  if (parameters == nullptr || (sourceShown_ && source == shownSource_)) return;
  sourceShown_ = true;
  shownSource_ = source;
  std::shared_ptr<const ScoreAtHand> score;
  if (auto read = ReadScoreAtHand(source)) score = std::make_shared<ScoreAtHand>(*std::move(read));
  ScoreParameters shown = parameters->For(source);
  if (score != nullptr && shown.parameterSet.empty()) {
    if (Failed(LoadAutomaticSet(subject_.setDirectory, source, score->Voices(), shown)))
      QTimer::singleShot(0, this,
                         [this, failed = SetFailure(AutomaticParameterSet(subject_.setDirectory, source))] {
                           ShowWarning(&window_, ToQt(failed));
                         });
  }
  lights_->SetStaves(StaffNames(score.get()));
  pages_->Show(std::move(score), shown);
  ui_->tempoLabel->clear();
}

void ScorePlayback::Take() {
  if (ScorePlayerParameters* const parameters = subject_.parameters())
    static_cast<ScoreParameters&>(*parameters) = pages_->Parameters();
  if (stage_) stage_->SetParameters(pages_->Parameters());
}

}  // namespace ts5
