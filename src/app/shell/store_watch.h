// Keeps an eye on the registry while the window is open: what "ts5-batch" or another window changes there
// comes into this one, and a file that could not be used at the start is tried again until it can.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>

namespace ts5 {

class Application;

class StoreWatch : public QObject {
  Q_OBJECT

 public:
  StoreWatch(Application& application, QObject* parent);

 signals:
  void JobsChanged();  // settings or jobs are others now
  void Reached();      // the file that was waited for has the session's changes

 private:
  void Look();
  void Watch();

  Application& application_;
  QFileSystemWatcher watcher_;
  QTimer timer_;
};

}  // namespace ts5
