#include "frame/ui/practice_panel.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QHBoxLayout>
#include <QMenu>
#include <QScrollArea>
#include <QSignalBlocker>
#include <QWidgetAction>
#include <algorithm>

#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"

namespace ts5 {
namespace {

using std::chrono::nanoseconds;

constexpr int kSpeedStep = 5;  // per cent
constexpr int kSpeedWidth = 90;
constexpr int kTracksHeight = 320;

}  // namespace

PracticePanel::PracticePanel(std::function<PlayerControl*()> control, QWidget* parent)
    : QWidget(parent),
      control_(std::move(control)),
      from_(MakeButton("practiceFrom", texts::PracticeFrom, texts::PracticeFromTip)),
      to_(MakeButton("practiceTo", texts::PracticeTo, texts::PracticeToTip)),
      whole_(MakeButton("practiceWhole", texts::PracticeWhole, texts::PracticeWholeTip)),
      speed_(new QSlider(Qt::Horizontal, this)),
      speedText_(new QLabel(this)),
      shift_(new QSpinBox(this)),
      tracks_(MakeButton("practiceTracks", texts::PracticeTracks, texts::PracticeTracksTip)),
      trackMenu_(new QMenu(this)) {
  setObjectName("practicePanel");
  setAccessibleName(QtText(texts::PracticeName));
  speed_->setObjectName("practiceSpeed");
  speed_->setAccessibleName(QtText(texts::PracticeSpeed));
  speed_->setToolTip(QtText(texts::PracticeSpeedTip));
  speed_->setRange(kSlowestPractice, kFastestPractice);
  speed_->setSingleStep(kSpeedStep);
  speed_->setPageStep(kSpeedStep * 2);
  speed_->setMinimumWidth(kSpeedWidth);
  speed_->setValue(kOwnTempo);
  shift_->setObjectName("practiceShift");
  shift_->setAccessibleName(QtText(texts::PracticeShift));
  shift_->setToolTip(QtText(texts::PracticeShiftTip));
  shift_->setRange(-kFarthestShift, kFarthestShift);
  shift_->setSuffix(QtText(texts::PracticeSemitones));
  tracks_->setMenu(trackMenu_);
  tracks_->setPopupMode(QToolButton::InstantPopup);
  trackMenu_->setAccessibleName(QtText(texts::PracticeTracks));
  whole_->setCheckable(false);
  speedText_->setMinimumWidth(speedText_->fontMetrics().horizontalAdvance(QStringLiteral("200 %")));

  auto* const layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(4);
  for (QWidget* const widget : std::initializer_list<QWidget*>{from_, to_, whole_}) layout->addWidget(widget);
  layout->addWidget(speed_, 1);
  for (QWidget* const widget : std::initializer_list<QWidget*>{speedText_, shift_, tracks_})
    layout->addWidget(widget);

  connect(from_, &QAbstractButton::clicked, this, &PracticePanel::SetFrom);
  connect(to_, &QAbstractButton::clicked, this, &PracticePanel::SetTo);
  connect(whole_, &QAbstractButton::clicked, this, [this] {
    begun_.reset();
    practice_.passage.reset();
    Give();
  });
  connect(speed_, &QSlider::valueChanged, this, [this](int speed) {
    practice_.speed = speed;
    Give();
  });
  connect(shift_, &QSpinBox::valueChanged, this, [this](int shift) {
    practice_.shift = shift;
    Give();
  });
  connect(trackMenu_, &QMenu::aboutToShow, this, &PracticePanel::FillTracks);
  TakeTitle({});
}

QToolButton* PracticePanel::MakeButton(const char* name, TextId text, TextId tip) {
  auto* const button = new QToolButton(this);
  button->setObjectName(name);
  button->setText(QtText(text));
  button->setToolTip(QtText(tip));
  button->setAccessibleDescription(QtText(tip));
  button->setFocusPolicy(Qt::TabFocus);
  return button;
}

void PracticePanel::Show(const PlayerStatus& status) {
  if (status.title != title_ || status.score != score_) return TakeTitle(status);
  // Another window may practise the same title.
  const PlayerControl* const control = control_();
  if (control == nullptr || title_.empty() || speed_->isSliderDown()) return;
  Practice now = control->GetPractice();
  if (now == practice_) return;
  practice_ = std::move(now);
  ShowPractice();
}

void PracticePanel::TakeTitle(const PlayerStatus& status) {
  title_ = status.title;
  score_ = status.score;
  begun_.reset();
  const PlayerControl* const control = control_();
  practice_ = control != nullptr && !title_.empty() ? control->GetPractice() : Practice{};
  const bool plays = !title_.empty();
  for (QWidget* const widget : std::initializer_list<QWidget*>{from_, to_, speed_, speedText_})
    widget->setEnabled(plays);
  shift_->setEnabled(plays && score_ && score_->shifts);
  tracks_->setEnabled(plays && score_ && !score_->tracks.empty());
  ShowPractice();
}

void PracticePanel::ShowPractice() {
  const QSignalBlocker quietSpeed(speed_);
  const QSignalBlocker quietShift(shift_);
  speed_->setValue(practice_.speed);
  shift_->setValue(practice_.shift);
  speedText_->setText(ToQt(Format(Text(texts::PracticeSpeedValue), practice_.speed)));
  from_->setDown(begun_.has_value());
  whole_->setEnabled(practice_.passage.has_value() || begun_.has_value());
}

// --- the passage

void PracticePanel::SetFrom() {
  const PlayerControl* const control = control_();
  if (control == nullptr) return;
  const PlayerStatus status = control->Status();
  const nanoseconds from = PassageBegin(status.position, score_ ? score_->bars : std::vector<nanoseconds>());
  if (practice_.passage && practice_.passage->to - from >= kShortestPassage) {
    practice_.passage->from = from;
  } else {
    practice_.passage.reset();
    begun_ = from;
  }
  Give();
}

void PracticePanel::SetTo() {
  const PlayerControl* const control = control_();
  if (control == nullptr) return;
  const PlayerStatus status = control->Status();
  const nanoseconds to =
      PassageEnd(status.position, status.duration, score_ ? score_->bars : std::vector<nanoseconds>());
  nanoseconds from = begun_.value_or(practice_.passage ? practice_.passage->from : nanoseconds{0});
  if (to - from < kShortestPassage) from = nanoseconds{0};
  begun_.reset();
  practice_.passage = PracticePassage{from, to};
  practice_ = Limited(practice_, status.duration, score_ ? score_->tracks.size() : 0);
  Give();
}

void PracticePanel::Give() {
  if (PlayerControl* const control = control_(); control != nullptr && !title_.empty())
    control->SetPractice(practice_);
  ShowPractice();
}

// --- the tracks

void PracticePanel::FillTracks() {
  trackMenu_->clear();
  if (!score_) return;
  auto* const list = new QWidget;
  auto* const grid = new QGridLayout(list);
  for (std::size_t i = 0; i < score_->tracks.size(); ++i) {
    if (score_->tracks[i].empty()) continue;
    const auto track = static_cast<std::uint32_t>(i);
    const int row = grid->rowCount();
    const QString name = ToQt(score_->tracks[i]);
    auto* const label = new QLabel(name, list);
    label->setTextFormat(Qt::PlainText);
    grid->addWidget(label, row, 0);
    const auto add = [&](int column, TextId text, std::set<std::uint32_t> Practice::*tracks) {
      auto* const box = new QCheckBox(QtText(text), list);
      box->setAccessibleName(name + QStringLiteral(": ") + QtText(text));
      box->setChecked((practice_.*tracks).contains(track));
      grid->addWidget(box, row, column);
      connect(box, &QCheckBox::toggled, this, [this, track, tracks](bool on) {
        on ? (void)(practice_.*tracks).insert(track) : (void)(practice_.*tracks).erase(track);
        Give();
      });
    };
    add(1, texts::PracticeMute, &Practice::muted);
    add(2, texts::PracticeSolo, &Practice::solo);
  }
  auto* const scroll = new QScrollArea;
  scroll->setWidget(list);
  scroll->setWidgetResizable(true);
  scroll->setFrameShape(QFrame::NoFrame);
  scroll->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll->setMinimumWidth(list->sizeHint().width() + 20);
  scroll->setFixedHeight(std::min(list->sizeHint().height() + 4, kTracksHeight));
  auto* const action = new QWidgetAction(trackMenu_);
  action->setDefaultWidget(scroll);
  trackMenu_->addAction(action);
}

}  // namespace ts5
