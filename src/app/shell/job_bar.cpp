#include "app/shell/job_bar.h"

#include <QHBoxLayout>
#include <QKeyEvent>
#include <QScrollBar>
#include <QWheelEvent>
#include <algorithm>

#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "resources/icons.h"

namespace ts5 {

JobBar::JobBar(QWidget* parent)
    : QWidget(parent),
      newJob_(nullptr),
      menuButton_(new QToolButton(this)),
      menu_(new QMenu(this)),
      row_(new QWidget),
      scroll_(new QScrollArea(this)),
      back_(MakeArrow("jobsBack", "back", texts::EarlierJobs, -1)),
      forward_(MakeArrow("jobsForward", "forward", texts::LaterJobs, 1)) {
  setObjectName("jobBar");
  setAccessibleName(QtText(texts::JobBarName));
  row_->setObjectName("jobButtons");
  row_->setAccessibleName(QtText(texts::JobBarName));
  auto* buttons = new QHBoxLayout(row_);
  buttons->setContentsMargins(0, 0, 0, 0);
  buttons->setSpacing(2);
  newJob_ = MakeButton();
  newJob_->setObjectName("newJob");
  newJob_->setCheckable(false);
  newJob_->setText(QtText(texts::NewJobButton));
  newJob_->setToolTip(QtText(texts::NewJobButtonHint));
  newJob_->setAccessibleDescription(QtText(texts::NewJobButtonHint));
  buttons->addWidget(newJob_);
  buttons->addStretch(1);
  connect(newJob_, &QToolButton::clicked, this, &JobBar::NewJobChosen);

  scroll_->setWidget(row_);
  scroll_->setWidgetResizable(true);
  scroll_->setFrameShape(QFrame::NoFrame);
  scroll_->setFocusPolicy(Qt::NoFocus);
  scroll_->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  scroll_->setFixedHeight(newJob_->sizeHint().height() + 2);
  scroll_->viewport()->installEventFilter(this);

  menuButton_->setObjectName("jobMenu");
  menuButton_->setIcon(Icon("menu"));
  menuButton_->setToolTip(QtText(texts::JobMenuHint));
  menuButton_->setAccessibleName(QtText(texts::JobMenuName));
  menuButton_->setAccessibleDescription(QtText(texts::JobMenuHint));
  menuButton_->setPopupMode(QToolButton::InstantPopup);
  menuButton_->setMenu(menu_);
  menuButton_->setFocusPolicy(Qt::StrongFocus);

  auto* layout = new QHBoxLayout(this);
  layout->setContentsMargins(0, 0, 0, 0);
  layout->setSpacing(4);
  layout->addWidget(back_);
  layout->addWidget(scroll_, 1);
  layout->addWidget(forward_);
  layout->addWidget(menuButton_);
  connect(scroll_->horizontalScrollBar(), &QScrollBar::rangeChanged, this, &JobBar::ShowArrows);
  connect(scroll_->horizontalScrollBar(), &QScrollBar::valueChanged, this, &JobBar::ShowArrows);
  ShowArrows();
}

QToolButton* JobBar::MakeArrow(const char* name, const char* icon, TextId text, int direction) {
  auto* const arrow = new QToolButton(this);
  arrow->setObjectName(name);
  arrow->setIcon(Icon(icon));
  arrow->setToolTip(QtText(text));
  arrow->setAccessibleName(QtText(text));
  arrow->setAutoRaise(true);
  arrow->setAutoRepeat(true);
  arrow->setFocusPolicy(Qt::ClickFocus);  // the keys go from job to job anyway
  connect(arrow, &QToolButton::clicked, this, [this, direction] {
    QScrollBar& bar = *scroll_->horizontalScrollBar();
    bar.setValue(bar.value() + direction * std::max(scroll_->viewport()->width() / 2, 1));
  });
  return arrow;
}

void JobBar::ShowArrows() {
  const QScrollBar& bar = *scroll_->horizontalScrollBar();
  for (QToolButton* const arrow : {back_, forward_}) arrow->setVisible(bar.maximum() > 0);
  back_->setEnabled(bar.value() > bar.minimum());
  forward_->setEnabled(bar.value() < bar.maximum());
}

QToolButton* JobBar::MakeButton() {
  auto* button = new QToolButton(row_);
  button->setCheckable(true);
  button->setAutoRaise(true);
  button->setToolButtonStyle(Qt::ToolButtonTextOnly);
  button->setFocusPolicy(Qt::ClickFocus);
  button->setProperty("jobButton", true);
  button->installEventFilter(this);
  return button;
}

void JobBar::Show(const std::vector<Button>& jobs, int active, bool switchable, bool newJobAllowed) {
  auto* layout = static_cast<QHBoxLayout*>(row_->layout());
  while (buttons_.size() > jobs.size()) {
    if (buttons_.back()->hasFocus()) menuButton_->setFocus();
    buttons_.back()->deleteLater();
    layout->removeWidget(buttons_.back());
    buttons_.back()->hide();
    buttons_.pop_back();
  }
  while (buttons_.size() < jobs.size()) {
    QToolButton* button = MakeButton();
    const int index = JobCount();
    connect(button, &QToolButton::clicked, this, [this, button, index] {
      button->setChecked(false);  // the owner presses the button of the job that really is active
      emit JobChosen(index);
    });
    button->setContextMenuPolicy(Qt::CustomContextMenu);
    connect(button, &QWidget::customContextMenuRequested, this, [this, button, index](const QPoint& place) {
      emit MenuWanted(index, button->mapToGlobal(place));
    });
    layout->insertWidget(index, button);
    buttons_.push_back(button);
  }
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    const bool isActive = static_cast<int>(i) == active;
    QString label = jobs[i].title;
    label.replace('&', "&&");
    QString name =
        jobs[i].running ? ToQt(Format(Text(texts::JobRunning), FromQt(jobs[i].title))) : jobs[i].title;
    if (jobs[i].running) label = QStringLiteral("▶ ") + label;
    if (!jobs[i].progress.isEmpty()) {
      label += QStringLiteral(" · ") + jobs[i].progress;
      name += QStringLiteral(", ") + jobs[i].progress;
    }
    buttons_[i]->setText(label);
    buttons_[i]->setAccessibleName(name);
    buttons_[i]->setToolTip(name + QLatin1Char('\n') + jobs[i].description);
    buttons_[i]->setAccessibleDescription(jobs[i].description);
    buttons_[i]->setChecked(isActive);
    buttons_[i]->setAutoRaise(!isActive);
    buttons_[i]->setEnabled(switchable || isActive);
    buttons_[i]->setFocusPolicy(isActive ? Qt::StrongFocus : Qt::ClickFocus);
  }
  ListJobs(jobs, active, switchable);
  newJob_->setEnabled(newJobAllowed);
  setFocusProxy(active >= 0 && active < JobCount() ? JobButton(active) : nullptr);
  if (active >= 0 && active < JobCount()) scroll_->ensureWidgetVisible(JobButton(active), 24, 0);
}

// Behind the commands, with whole titles.
void JobBar::ListJobs(const std::vector<Button>& jobs, int active, bool switchable) {
  if (listed_.empty()) menu_->addSeparator();
  while (listed_.size() > jobs.size()) {
    delete listed_.back();
    listed_.pop_back();
  }
  while (listed_.size() < jobs.size()) {
    QAction* const action = menu_->addAction(QString());
    action->setCheckable(true);
    connect(action, &QAction::triggered, this, [this, index = static_cast<int>(listed_.size())] {
      listed_.at(static_cast<std::size_t>(index))->setChecked(false);  // as with the buttons
      emit JobChosen(index);
    });
    listed_.push_back(action);
  }
  for (std::size_t i = 0; i < jobs.size(); ++i) {
    QString title = buttons_[i]->accessibleName();
    listed_[i]->setText(title.replace('&', "&&"));
    listed_[i]->setStatusTip(jobs[i].description);
    listed_[i]->setChecked(static_cast<int>(i) == active);
    listed_[i]->setEnabled(switchable || static_cast<int>(i) == active);
  }
}

bool JobBar::eventFilter(QObject* watched, QEvent* event) {
  if (watched == scroll_->viewport()) {
    if (event->type() == QEvent::Wheel) {
      const QPoint delta = static_cast<QWheelEvent*>(event)->angleDelta();
      QScrollBar* bar = scroll_->horizontalScrollBar();
      bar->setValue(bar->value() - (delta.x() != 0 ? delta.x() : delta.y()) / 2);
      return true;
    }
    return false;
  }
  auto* button = static_cast<QToolButton*>(watched);
  switch (event->type()) {
    case QEvent::KeyPress: {
      const int key = static_cast<QKeyEvent*>(event)->key();
      if (key == Qt::Key_Left || key == Qt::Key_Right) {
        MoveFocus(button, key == Qt::Key_Left ? -1 : 1);
        return true;
      }
      if (key == Qt::Key_Return || key == Qt::Key_Enter) {
        button->click();
        return true;
      }
      break;
    }
    case QEvent::FocusIn:
      scroll_->ensureWidgetVisible(button, 24, 0);
      [[fallthrough]];
    case QEvent::Enter:
      emit Hint(button->accessibleDescription());
      break;
    case QEvent::FocusOut:
    case QEvent::Leave:
      emit Hint({});
      break;
    default:
      break;
  }
  return false;
}

void JobBar::MoveFocus(QWidget* from, int step) {
  std::vector<QWidget*> all(buttons_.begin(), buttons_.end());
  all.push_back(newJob_);
  auto at = std::ranges::find(all, from) - all.begin();
  for (at += step; at >= 0 && at < std::ssize(all); at += step) {
    QWidget* next = all[static_cast<std::size_t>(at)];
    if (!next->isEnabled()) continue;
    next->setFocus(Qt::OtherFocusReason);
    return;
  }
}

}  // namespace ts5
