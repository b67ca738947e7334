#include "frame/ui/playback_window.h"

#include <QCoreApplication>
#include <QKeyEvent>

#include "frame/filter_catalogue.h"
#include "frame/texts.h"
#include "frame/ui/level_meter_widget.h"
#include "frame/ui/message_box.h"
#include "frame/ui/position_slider.h"
#include "frame/ui/practice_panel.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "resources/icons.h"
#include "ui_PLAYBACK.h"

namespace ts5 {
namespace {

constexpr int kRefreshMilliseconds = 16;  // 60 times a second
constexpr unsigned kRefreshesPerTime = 3;

using std::chrono::milliseconds;

struct StepButton {
  QAbstractButton* button;
  std::string_view icon;
  PlayerStep step;
};

}  // namespace

PlaybackWindow::PlaybackWindow(Subject subject, DialogHost& host, QWidget* parent)
    : HostedDialog(host, QtText(texts::PlaybackPrompt), parent),
      subject_(std::move(subject)),
      ui_(std::make_unique<Ui::PLAYBACK>()),
      position_(new PositionSlider(this)),
      meter_(new LevelMeterWidget(this)),
      practice_(new PracticePanel([run = subject_.run] { return &run->player; }, this)) {
  ui_->setupUi(this);
  ConnectButtons();
  setWindowTitle(ToQt(Format(Text(texts::PlaybackCaption), subject_.title)));
  ui_->positionLayout->addWidget(position_);
  ui_->meterLayout->addWidget(meter_);
  ui_->practiceLayout->addWidget(practice_, 1);

  if (const PlayerOptions* options = subject_.options()) {
    ui_->pauseBox->setValue(options->interval);
    ui_->shortCheck->setChecked(options->shortPlay);
    ui_->shortBox->setValue(options->shortSeconds);
    const bool bars = options->timeInBars && !Has(subject_.filter, kPlaysSamples);
    ui_->barsRadio->setChecked(bars);
    ui_->minutesRadio->setChecked(!bars);
    ui_->resultsCheck->setChecked(options->resultDialog);
    ui_->volumeSlider->setValue(options->volume / 100);
    ui_->balanceSlider->setValue(options->balance / 100);
  }
  for (QSpinBox* box : {ui_->pauseBox, ui_->shortBox})
    connect(box, &QSpinBox::valueChanged, this, [this] { TakeOptions(); });
  for (QAbstractButton* button :
       {static_cast<QAbstractButton*>(ui_->shortCheck), static_cast<QAbstractButton*>(ui_->barsRadio),
        static_cast<QAbstractButton*>(ui_->resultsCheck)})
    connect(button, &QAbstractButton::toggled, this, [this] { TakeOptions(); });
  for (QSlider* slider : {ui_->volumeSlider, ui_->balanceSlider})
    connect(slider, &QSlider::valueChanged, this, [this] { TakeSound(); });
  connect(position_, &QSlider::valueChanged, this,
          [this](int value) { subject_.run->player.Seek(milliseconds(value)); });
  connect(position_, &PositionSlider::Stepped, this,
          [this](int step) { subject_.run->player.Move(milliseconds(step)); });
  connect(ui_->playButton, &QAbstractButton::clicked, this, [this] { subject_.play(); });
  connect(ui_->stopButton, &QAbstractButton::clicked, this, [this] { subject_.stop(); });
  for (const StepButton& row : {StepButton{ui_->previousButton, "previous", PlayerStep::Previous},
                                StepButton{ui_->restartButton, "restart", PlayerStep::Restart},
                                StepButton{ui_->nextButton, "next", PlayerStep::Next}}) {
    row.button->setIcon(Icon(row.icon));
    connect(row.button, &QAbstractButton::clicked, this,
            [this, step = row.step] { subject_.run->player.Step(step); });
  }
  connect(ui_->soundButton, &QAbstractButton::clicked, this,
          [this] { ShowNotice(this, texts::PlaybackNoSound); });
  connect(&timer_, &QTimer::timeout, this, [this] { Refresh(); });
  timer_.start(kRefreshMilliseconds);
  Refresh();
}

PlaybackWindow::~PlaybackWindow() = default;

QString PlaybackWindow::HelpTopic() const {
  return QStringLiteral("playback.htm");
}

void PlaybackWindow::keyPressEvent(QKeyEvent* event) {
  const bool page = event->key() == Qt::Key_PageUp || event->key() == Qt::Key_PageDown;
  if (page && position_->isEnabled()) {
    QCoreApplication::sendEvent(position_, event);
    return;
  }
  HostedDialog::keyPressEvent(event);
}

QTabWidget& PlaybackWindow::Pages() {
  return *ui_->pages;
}

void PlaybackWindow::AddExtras(QWidget* extras) {
  ui_->extrasLayout->addWidget(extras);
}

void PlaybackWindow::TakeOptions() {
  PlayerOptions* const options = subject_.options();
  if (options == nullptr) return;
  options->interval = ui_->pauseBox->value();
  options->shortPlay = ui_->shortCheck->isChecked();
  options->shortSeconds = ui_->shortBox->value();
  if (!Has(subject_.filter, kPlaysSamples)) options->timeInBars = ui_->barsRadio->isChecked();
  options->resultDialog = ui_->resultsCheck->isChecked();
}

void PlaybackWindow::TakeSound() {
  PlayerOptions* const options = subject_.options();
  if (options == nullptr) return;
  options->volume = ui_->volumeSlider->value() * 100;
  options->balance = ui_->balanceSlider->value() * 100;
  subject_.run->player.SetSound({options->volume, options->balance});
}

void PlaybackWindow::Refresh() {
  const PlayerOptions* const options = subject_.options();
  if (options == nullptr) {
    timer_.stop();
    close();
    return;
  }
  if (Has(subject_.filter, kPlaysSamples)) meter_->Advance(subject_.run->player.Levels());
  const RunState state = subject_.run->state;
  const PlayerStatus status = subject_.run->player.Status();
  practice_->Show(status);
  position_->Show(status, status.title.empty() ? std::nullopt : subject_.run->player.GetPractice().passage);
  const bool active = !MayChangeJob(state);
  ui_->playButton->setText(QtText(active && !status.paused ? texts::RunButtonPause : texts::RunButtonPlay));
  for (QAbstractButton* button :
       {static_cast<QAbstractButton*>(ui_->stopButton), static_cast<QAbstractButton*>(ui_->previousButton),
        static_cast<QAbstractButton*>(ui_->restartButton), static_cast<QAbstractButton*>(ui_->nextButton)})
    button->setEnabled(active);
  emit Refreshed();
  const PlaybackForm form = PlaybackFormOf(subject_.filter, *options, state, status);
  if (shown_ == form) return;
  if (shown_ && refreshes_++ % kRefreshesPerTime != 0) {
    // A time that nobody can read faster would cost a new layout each time.
    PlaybackForm later = *shown_;
    later.elapsed = form.elapsed;
    if (later == form) return;
  }
  Show(form);
  shown_ = form;
}

void PlaybackWindow::Show(const PlaybackForm& form) {
  ui_->playButton->setEnabled(form.playEnabled);
  ui_->PLAYBACK1->setEnabled(form.optionsEnabled);
  ui_->shortBox->setEnabled(form.shortSecondsEnabled);
  ui_->barsRadio->setEnabled(form.barsEnabled);
  position_->setEnabled(form.positionEnabled);
  meter_->setVisible(form.meterShown);
  ui_->fileLabel->setText(ToQt(form.title));
  ui_->elapsedLabel->setText(ToQt(form.elapsed));
  ui_->durationLabel->setText(ToQt(form.duration));
  ui_->volumeLabel->setText(ToQt(form.volume));
  ui_->balanceLabel->setText(ToQt(form.balance));
}

}  // namespace ts5
