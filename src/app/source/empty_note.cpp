#include "app/source/empty_note.h"

#include <QEvent>
#include <QHBoxLayout>
#include <QVBoxLayout>
#include <algorithm>

#include "app/texts.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

constexpr int kBelowText = 56;

QPushButton* MakeButton(QWidget* parent, const char* name, TextId text, TextId toolTip) {
  auto* const button = new QPushButton(QtText(text), parent);
  button->setObjectName(name);
  button->setToolTip(QtText(toolTip));
  button->setAccessibleDescription(QtText(toolTip));
  return button;
}

}  // namespace

EmptyNote::EmptyNote(QWidget* view)
    : QWidget(view->parentWidget()),
      view_(view),
      music_(MakeButton(this, "chooseMusic", texts::ChooseMusic, texts::ChooseMusicTip)),
      files_(MakeButton(this, "chooseFiles", texts::ChooseFiles, texts::ChooseFilesTip)),
      examples_(MakeButton(this, "showExamples", texts::ShowExamples, texts::ShowExamplesTip)),
      hint_(new QLabel(QtText(texts::DragToFreeList), this)) {
  setObjectName("emptyNote");
  auto* const buttons = new QHBoxLayout;
  buttons->addStretch(1);
  for (QPushButton* const button : {music_, files_, examples_}) buttons->addWidget(button);
  buttons->addStretch(1);
  hint_->setAlignment(Qt::AlignHCenter);
  hint_->setWordWrap(true);
  hint_->setForegroundRole(QPalette::PlaceholderText);
  auto* const layout = new QVBoxLayout(this);
  layout->addLayout(buttons);
  layout->addWidget(hint_);
  connect(music_, &QPushButton::clicked, this, &EmptyNote::MusicWanted);
  connect(files_, &QPushButton::clicked, this, &EmptyNote::FilesWanted);
  connect(examples_, &QPushButton::clicked, this, &EmptyNote::ExamplesWanted);
  view->installEventFilter(this);
  hide();
}

void EmptyNote::ShowFor(Place place) {
  setVisible(place != Place::None);
  music_->setVisible(place == Place::Directory);
  hint_->setVisible(place == Place::Directory);
  files_->setVisible(place == Place::List);
  Stand();
}

void EmptyNote::Stand() {
  constexpr int kFrame = 2;
  const QRect view = view_->geometry().adjusted(kFrame, kFrame, -kFrame, -kFrame);
  // In a low view the buttons go before the text above them.
  const int room = std::max(view.height() - sizeHint().height(), 0);
  const int top = std::min(std::max(view.height() / 3, kBelowText), room);
  setGeometry(view.left(), view.top() + top, view.width(),
              std::min(sizeHint().height(), view.height() - top));
  raise();
}

bool EmptyNote::eventFilter(QObject* watched, QEvent* event) {
  if (event->type() == QEvent::Resize || event->type() == QEvent::Move) Stand();
  return QWidget::eventFilter(watched, event);
}

}  // namespace ts5
