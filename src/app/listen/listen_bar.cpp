#include "app/listen/listen_bar.h"

#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>

#include "app/texts.h"
#include "frame/playback_form.h"
#include "frame/player_parameters.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/paths.h"
#include "resources/icons.h"

namespace ts5 {
namespace {

constexpr int kRefreshMilliseconds = 33;
constexpr int kSlimHeight = 28;
constexpr int kVolumeWidth = 80;
constexpr int kNarrowVolumeWidth = 50;
constexpr int kTitleWidth = 60;
constexpr int kTitleGap = 8;
constexpr int kPositionWidth = 90;
constexpr int kNarrowBar = 560;
constexpr int kSoftest = -60;  // decibels; below it the slider means silence

}  // namespace

ListenBar::ListenBar(Listener& listener, std::int32_t volume, QWidget* parent)
    : QFrame(parent),
      listener_(listener),
      play_(MakeButton("listenPlay", texts::ListenPlay, "play")),
      stop_(MakeButton("listenStop", texts::ListenStop, "stop")),
      title_(new ElidedLabel(this)),
      position_(new PositionSlider(this)),
      time_(new QLabel(this)),
      loudness_(new QLabel(this)),
      volume_(new QSlider(Qt::Horizontal, this)),
      practise_(new QToolButton(this)),
      practice_(new PracticePanel([&listener] { return listener.Control(); }, this)) {
  setObjectName("listenBar");
  setAccessibleName(QtText(texts::ListenBarName));
  setFrameShape(StyledPanel);
  title_->setObjectName("listenTitle");
  title_->setMinimumWidth(kTitleWidth);
  position_->setObjectName("listenPosition");
  position_->setMinimumSize(kPositionWidth, kSlimHeight);
  time_->setObjectName("listenTime");
  volume_->setObjectName("listenVolume");
  volume_->setAccessibleName(QtText(texts::ListenVolume));
  volume_->setToolTip(QtText(texts::ListenVolume));
  volume_->setRange(kSoftest, 0);
  volume_->setFixedWidth(kVolumeWidth);
  volume_->setValue(std::max(volume / 100, kSoftest));

  practise_->setObjectName("listenPractise");
  practise_->setText(QtText(texts::ListenPractise));
  practise_->setToolTip(QtText(texts::ListenPractiseTip));
  practise_->setAccessibleDescription(QtText(texts::ListenPractiseTip));
  practise_->setCheckable(true);
  practise_->setAutoRaise(true);
  practise_->setFocusPolicy(Qt::TabFocus);
  practice_->hide();

  auto* const rows = new QVBoxLayout(this);
  rows->setContentsMargins(4, 2, 4, 2);
  rows->setSpacing(2);
  auto* const layout = new QHBoxLayout;
  layout->setSpacing(4);
  rows->addLayout(layout);
  rows->addWidget(practice_);
  for (QWidget* const widget : std::initializer_list<QWidget*>{play_, stop_}) layout->addWidget(widget);
  layout->addWidget(title_, 1);
  layout->addWidget(position_, 1);
  layout->addWidget(time_);
  loudness_->setPixmap(Icon("wavdevicon").pixmap(16));
  loudness_->setToolTip(QtText(texts::ListenVolume));
  layout->addWidget(loudness_);
  layout->addWidget(volume_);
  layout->addWidget(practise_);

  connect(play_, &QAbstractButton::clicked, this, &ListenBar::TogglePlay);
  connect(stop_, &QAbstractButton::clicked, this, &ListenBar::StopOrGo);
  connect(position_, &QSlider::valueChanged, this, [this](int value) {
    if (PlayerControl* const control = listener_.Control()) control->Seek(std::chrono::milliseconds(value));
  });
  connect(position_, &PositionSlider::Stepped, this, [this](int step) {
    if (PlayerControl* const control = listener_.Control()) control->Move(std::chrono::milliseconds(step));
  });
  connect(volume_, &QSlider::valueChanged, this, [this](int decibels) {
    emit VolumeChanged(decibels <= kSoftest ? kLowestVolume : decibels * 100);
  });
  connect(practise_, &QAbstractButton::toggled, practice_, &QWidget::setVisible);
  connect(&listener_, &Listener::Asked, this, &ListenBar::ShowTitle);
  connect(&listener_, &Listener::Changed, this, [this] {
    listener_.Busy() ? timer_.start() : timer_.stop();
    Refresh();
  });
  connect(&listener_, &Listener::Refused, this, &ListenBar::ShowRefusal);
  timer_.setInterval(kRefreshMilliseconds);
  connect(&timer_, &QTimer::timeout, this, &ListenBar::Refresh);
  hide();
}

QToolButton* ListenBar::MakeButton(const char* name, TextId text, std::string_view icon) {
  auto* const button = new QToolButton(this);
  button->setObjectName(name);
  button->setAutoRaise(true);
  button->setFocusPolicy(Qt::TabFocus);
  button->setIcon(Icon(icon));
  button->setToolTip(QtText(text));
  button->setAccessibleName(QtText(text));
  return button;
}

bool ListenBar::Narrow() const {
  return width() < kNarrowBar;
}

void ListenBar::resizeEvent(QResizeEvent* event) {
  QFrame::resizeEvent(event);
  loudness_->setVisible(!Narrow());
  volume_->setFixedWidth(Narrow() ? kNarrowVolumeWidth : kVolumeWidth);
}

void ListenBar::TogglePlay() {
  if (PlayerControl* const control = listener_.Control()) {
    control->TogglePause();
  } else if (!listener_.Busy()) {
    emit AgainWanted();
  }
}

void ListenBar::StopOrGo() {
  if (listener_.Busy()) {
    listener_.Stop();
  } else {
    hide();
  }
}

void ListenBar::ShowTitle() {
  refused_ = false;
  ShowName(ToQt(FileNameOf(listener_.Title()->path)), ToQt(listener_.Title()->path));
  for (QWidget* const widget : std::initializer_list<QWidget*>{position_, time_}) widget->show();
  show();
}

// What the name leaves is the position's.
void ListenBar::ShowName(const QString& name, const QString& path) {
  title_->ShowLine(name, path);
  title_->setMaximumWidth(std::max(title_->fontMetrics().horizontalAdvance(name) + kTitleGap, kTitleWidth));
}

// In place of the position, as there is none.
void ListenBar::ShowRefusal(const QString& why) {
  refused_ = true;
  title_->ShowParagraph(why);
  title_->setMaximumWidth(QWIDGETSIZE_MAX);
  for (QWidget* const widget : std::initializer_list<QWidget*>{position_, time_}) widget->hide();
  show();
}

void ListenBar::Refresh() {
  PlayerControl* const control = listener_.Control();
  PlayerStatus status = control != nullptr ? control->Status() : PlayerStatus{};
  if (Narrow()) status.place.reset();
  const bool plays = !status.title.empty();
  position_->setEnabled(plays && status.duration.count() > 0);
  practice_->Show(status);
  position_->Show(status, plays ? control->GetPractice().passage : std::nullopt);
  // Whoever hears a title slowly has to see why.
  if (status.score != shown_) {
    shown_ = status.score;
    if (plays && practice_->Practises()) practise_->setChecked(true);
  }
  const QString name = ToQt(status.name);
  if (plays && !refused_ && !name.isEmpty() && title_->text() != name) ShowName(name, title_->toolTip());
  const QString time = plays ? ToQt(ListenTimeText(status)) : QString();
  if (time_->text() != time) time_->setText(time);
  const bool pausable = plays && !status.paused;
  const QString does = QtText(pausable ? texts::ListenPause : texts::ListenPlay);
  if (play_->accessibleName() == does) return;
  play_->setIcon(Icon(pausable ? "pause" : "play"));
  play_->setAccessibleName(does);
  play_->setToolTip(does);
}

}  // namespace ts5
