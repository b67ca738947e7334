// Hearing the file under the cursor at once: Enter or a double click in the list of files plays it, Esc ends
// it. The files stay where they are, and so does the selection of the job.
#pragma once

#include <QObject>

#include "app/listen/listen_bar.h"
#include "app/listen/listener.h"

namespace ts5 {

class Application;
class CommandActions;
class FileView;

class ListenCommands : public QObject {
 public:
  // The bar becomes a child of barParent, in whose layout the caller puts it.
  ListenCommands(CommandActions& actions, FileView& files, Application& application, QWidget* barParent);

  [[nodiscard]] ListenBar* Bar() const { return bar_; }
  [[nodiscard]] Listener& Sound() { return listener_; }
  void Close() { listener_.Close(); }

 protected:
  // The keys of the list of files and of the bar.
  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void PlayRow(std::size_t row);

  FileView& files_;
  Application& application_;
  Listener listener_;
  ListenBar* bar_;
};

}  // namespace ts5
