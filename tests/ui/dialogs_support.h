// What the tests of the dialogs share: a host that writes down what it is asked for, answers to message
// boxes, and one sample of every dialog.
#pragma once

#include <QtWidgets>
#include <functional>
#include <memory>
#include <vector>

#include "frame/ui/dialog_host.h"

namespace ts5 {

class RecordingHost : public DialogHost {
 public:
  void OpenHelp(const QString& topic) override { topics << topic; }
  void ShowPrompt(const QString& prompt) override { prompts << prompt; }

  QStringList topics;
  QStringList prompts;
};

// Presses a button of the next message box that appears and keeps the box's text. Made before the action.
class NextMessage {
 public:
  explicit NextMessage(QMessageBox::StandardButton answer = QMessageBox::Ok) : answer_(answer) {
    timer_.setInterval(5);
    QObject::connect(&timer_, &QTimer::timeout, [this] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      if (box == nullptr) return;
      text_ = box->text();
      icon_ = box->icon();
      title_ = box->windowTitle();
      timer_.stop();
      if (auto* button = box->button(answer_)) button->click();
    });
    timer_.start();
  }

  [[nodiscard]] const QString& Text() const { return text_; }
  [[nodiscard]] QMessageBox::Icon Icon() const { return icon_; }
  [[nodiscard]] const QString& Title() const { return title_; }

 private:
  QMessageBox::StandardButton answer_;
  QTimer timer_;
  QString text_;
  QString title_;
  QMessageBox::Icon icon_ = QMessageBox::NoIcon;
};

template <typename Widget>
Widget& Child(QWidget& window, const char* name) {
  auto* widget = window.findChild<Widget*>(QLatin1String(name));
  if (widget == nullptr) qFatal("there is no %s", name);
  return *widget;
}

inline void Press(QWidget& window, const char* button) {
  Child<QAbstractButton>(window, button).click();
}

// Does something with the next modal dialog of this kind as soon as it is open, which may take a moment when
// something is read for it.
template <typename Dialog, typename Action>
void InNext(const Action& action) {
  auto* const looks = new QTimer(qApp);
  QObject::connect(looks, &QTimer::timeout, [looks, action, left = 10'000]() mutable {
    auto* const dialog = dynamic_cast<Dialog*>(QApplication::activeModalWidget());
    if (dialog == nullptr) {
      if (--left == 0) qFatal("the dialog does not open");
      return;
    }
    looks->stop();
    looks->deleteLater();
    action(*dialog);
  });
  looks->start(1);
}

// One window of every kind, with something in it.
struct WindowSample {
  const char* name;
  std::function<std::unique_ptr<QWidget>(DialogHost&)> make;
};
[[nodiscard]] const std::vector<WindowSample>& WindowSamples();
[[nodiscard]] std::vector<WindowSample> ScoreWindowSamples();      // those of the score room, among them
[[nodiscard]] std::vector<WindowSample> SearchWindowSamples();     // those of the melody search, likewise
[[nodiscard]] std::vector<WindowSample> ArtworkerWindowSamples();  // those of the Artworker, likewise
[[nodiscard]] std::vector<WindowSample> DiscWindowSamples();       // those of discs, likewise

}  // namespace ts5
