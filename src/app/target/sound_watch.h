// Sound devices that come while the program runs: a card that is plugged in, a sound server that starts. They
// are looked for when the system says that something has changed, in the background, and not while something
// sounds, as a card that is in use looks like none.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <functional>

#include "app/shell/background_worker.h"

namespace ts5 {

class Application;

class SoundWatch : public QObject {
  Q_OBJECT

 public:
  // sounds: whether something does.
  SoundWatch(Application& application, std::function<bool()> sounds, QObject* parent = nullptr);

  // As soon as nothing sounds.
  void Look();

 signals:
  void DevicesCame();  // the application has them

 private:
  void WatchPlaces();
  void LookNow();

  Application& application_;
  std::function<bool()> sounds_;
  QFileSystemWatcher watcher_;
  QTimer settled_;
  BackgroundWorker worker_;
};

}  // namespace ts5
