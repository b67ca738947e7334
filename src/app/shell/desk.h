// What the commands have of the main window: the actions that they carry out, boxes over the window, its
// status bar and its help.
#pragma once

#include <QLabel>
#include <QMainWindow>
#include <QMessageBox>
#include <QObject>
#include <memory>
#include <string_view>

#include "app/shell/command_actions.h"
#include "app/shell/dialog_queue.h"
#include "frame/job_dialogs.h"
#include "frame/ui/dialog_host.h"

namespace ts5 {

class HelpWindow;

class Desk : public QObject, public DialogHost, public JobDialogs {
 public:
  // Puts its prompt into the status bar of the window.
  explicit Desk(QMainWindow& window);
  ~Desk() override;

  [[nodiscard]] CommandActions& Actions() { return *actions_; }
  // The parent for dialogs, and nothing more: commands ask the window for nothing.
  [[nodiscard]] QWidget* Window() const { return window_; }
  // Dialogs that come of themselves.
  [[nodiscard]] DialogQueue& Queue() { return queue_; }

  // JobDialogs: boxes that are waited for.
  [[nodiscard]] bool Confirm(std::string_view question, MessageIcon icon, Answer preset) override;
  void Tell(std::string_view text, MessageIcon icon) override;
  // A box that comes when its turn has come, and is not waited for.
  void TellLater(std::string_view text, MessageIcon icon);

  // DialogHost
  void OpenHelp(const QString& topic) override;
  void ShowPrompt(const QString& prompt) override;
  [[nodiscard]] QString Prompt() const { return prompt_->text(); }
  // A text that passes, over the prompt: the hint of a control, or news for so many milliseconds (0: until
  // the next one). "" takes it away.
  void ShowHint(const QString& hint, int milliseconds = 0);

  // The window goes: no command is carried out, and no box comes any more.
  void Close();

 private:
  QMainWindow* window_;
  CommandActions* actions_;
  QLabel* prompt_;
  DialogQueue queue_;
  std::unique_ptr<HelpWindow> help_;
};

[[nodiscard]] QMessageBox::Icon BoxIcon(MessageIcon icon);

}  // namespace ts5
