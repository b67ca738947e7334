#include "frame/ui/hosted_dialog.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QApplication>
#include <QBoxLayout>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabWidget>
#include <algorithm>
#include <utility>
#include <vector>

namespace ts5 {
namespace {

// What the desktop adds around a window.
constexpr int kWindowFrame = 40;
constexpr int kSideFrame = 8;

// Moves all that a layout has above its last row into another one.
void TakeAllButLast(QBoxLayout& from, QBoxLayout& into) {
  while (from.count() > 1) {
    QLayoutItem* const item = from.takeAt(0);
    if (QWidget* const widget = item->widget()) {
      into.addWidget(widget);
      delete item;
    } else if (QLayout* const layout = item->layout()) {
      into.addLayout(layout);
    } else {
      into.addItem(item);
    }
  }
}

// What is higher than the screen scrolls; the last row, with the buttons, stays in sight.
// needed: the least height; room: that there is.
void ScrollOnSmallScreens(QDialog& dialog, int needed, int room) {
  auto* const rows = qobject_cast<QVBoxLayout*>(dialog.layout());
  if (rows == nullptr || rows->count() < 2 || needed <= room) return;
  QWidget* const first = dialog.focusWidget();  // which a move takes the focus from
  auto* const area = new QScrollArea(&dialog);
  auto* const content = new QWidget(area);
  auto* const inner = new QVBoxLayout(content);
  inner->setContentsMargins(0, 0, 0, 0);
  inner->setSpacing(rows->spacing());
  TakeAllButLast(*rows, *inner);
  area->setFrameShape(QFrame::NoFrame);
  area->setFocusPolicy(Qt::NoFocus);
  area->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
  area->setWidgetResizable(true);
  area->setWidget(content);
  area->setMinimumWidth(content->minimumSizeHint().width() + area->verticalScrollBar()->sizeHint().width());
  rows->insertWidget(0, area, 1);
  area->show();  // not only after the first picture of the dialog
  QObject::connect(qApp, &QApplication::focusChanged, area, [area](QWidget*, QWidget* now) {
    if (now != nullptr && area->isAncestorOf(now)) area->ensureWidgetVisible(now);
  });
  rows->activate();
  dialog.resize(std::max(dialog.width(), rows->totalMinimumSize().width()), room);
  if (first != nullptr) first->setFocus();
}

// What a layout and those in it place, in their order.
void CollectPlaces(const QLayout& layout, std::vector<const QWidget*>& places) {
  for (int i = 0; i < layout.count(); ++i) {
    if (const QWidget* const widget = layout.itemAt(i)->widget()) places.push_back(widget);
    if (const QLayout* const inner = layout.itemAt(i)->layout()) CollectPlaces(*inner, places);
  }
}

// The tab key goes through the places of the window in their order, also to what was put into them behind the
// template; within each the order is its own.
void TabInOrder(QDialog& dialog) {
  std::vector<const QWidget*> places;
  CollectPlaces(*dialog.layout(), places);
  const auto rank = [&places](const QWidget* control) {
    return std::ranges::find_if(
        places, [control](const QWidget* place) { return place == control || place->isAncestorOf(control); });
  };
  std::vector<QWidget*> stops;
  for (QWidget* at = dialog.nextInFocusChain(); at != &dialog; at = at->nextInFocusChain()) {
    if (at->focusPolicy() != Qt::NoFocus && at->focusProxy() == nullptr && at->window() == &dialog)
      stops.push_back(at);
  }
  std::ranges::stable_sort(stops, {}, rank);
  for (std::size_t i = 1; i < stops.size(); ++i) QWidget::setTabOrder(stops[i - 1], stops[i]);
}

}  // namespace

HostedDialog::HostedDialog(DialogHost& host, QString prompt, QWidget* parent)
    : QDialog(parent), host_(host), prompt_(std::move(prompt)) {}

void HostedDialog::ConnectButtons() {
  const auto connect = [this](const char* name, auto action) {
    if (auto* button = findChild<QAbstractButton*>(QLatin1String(name))) {
      QObject::connect(button, &QAbstractButton::clicked, this, action);
    }
  };
  connect("okButton", [this] { Commit(); });
  connect("cancelButton", [this] { reject(); });
  connect("helpButton", [this] { host_.OpenHelp(HelpTopic()); });
}

void HostedDialog::keyPressEvent(QKeyEvent* event) {
  if (event->key() == Qt::Key_F1) {
    host_.OpenHelp(HelpTopic());
    return;
  }
  QDialog::keyPressEvent(event);
}

void HostedDialog::showEvent(QShowEvent* event) {
  // The least width of a template is for short texts, and for another look.
  for (QPushButton* const button : findChildren<QPushButton*>()) {
    if (button->minimumWidth() < button->maximumWidth())
      button->setMinimumWidth(std::max(button->minimumWidth(), button->minimumSizeHint().width()));
  }
  // Rows that were laid out before the list had its style would be too low.
  for (QAbstractItemView* const list : findChildren<QAbstractItemView*>()) {
    if (list->isVisible()) list->doItemsLayout();
    if (list->currentIndex().isValid()) list->scrollTo(list->currentIndex());
  }
  // The toolkit's first size is at most two thirds of the screen, which would clip wrapped texts of high
  // dialogs on small screens.
  if (const QLayout* const rows = layout()) {
    const QSize room = Room();
    width_ = std::min(width(), room.width());
    const int wanted = std::max({height(), sizeHint().height(), rows->totalHeightForWidth(width_)});
    resize(width_, std::min(wanted, room.height()));
    TabInOrder(*this);
    ScrollOnSmallScreens(*this, LeastHeight(), room.height());
    StayWhole();
  }
  if (!prompt_.isEmpty()) host_.ShowPrompt(prompt_);
  QDialog::showEvent(event);
}

bool HostedDialog::event(QEvent* event) {
  const bool done = QDialog::event(event);
  if (event->type() == QEvent::LayoutRequest && isVisible()) StayWhole();
  return done;
}

QSize HostedDialog::Room() const {
  return screen()->availableSize() - QSize(kSideFrame, kWindowFrame);
}

int HostedDialog::LeastHeight() const {
  return std::max(layout()->minimumHeightForWidth(width_), layout()->totalMinimumSize().height());
}

// The user does not make it so small that wrapped texts are cut, or pages of tabs, which ask for less than
// they need; also when there is more in it by now.
void HostedDialog::StayWhole() {
  const QLayout* const rows = layout();
  if (rows == nullptr) return;
  const bool tabs = findChild<QTabWidget*>() != nullptr;
  const QSize room = Room();
  if ((!rows->hasHeightForWidth() && !tabs) || LeastHeight() > room.height()) return;
  const int height = std::max(LeastHeight(), tabs ? std::min(sizeHint().height(), room.height()) : 0);
  setMinimumSize(std::max(width_, std::min(rows->totalMinimumSize().width(), room.width())), height);
}

void HostedDialog::hideEvent(QHideEvent* event) {
  if (!prompt_.isEmpty() && !event->spontaneous()) host_.ShowPrompt({});
  QDialog::hideEvent(event);
}

void FocusText(QLineEdit* field) {
  field->setFocus();
  field->selectAll();
}

}  // namespace ts5
