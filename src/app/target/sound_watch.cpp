#include "app/target/sound_watch.h"

#include <QDir>
#include <QStandardPaths>

#include "app/shell/application.h"

namespace ts5 {
namespace {

constexpr int kSettleMilliseconds = 1500;

}  // namespace

SoundWatch::SoundWatch(Application& application, std::function<bool()> sounds, QObject* parent)
    : QObject(parent), application_(application), sounds_(std::move(sounds)) {
  settled_.setSingleShot(true);
  settled_.setInterval(kSettleMilliseconds);
  connect(&settled_, &QTimer::timeout, this, &SoundWatch::LookNow);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, this, &SoundWatch::Look);
  WatchPlaces();
}

// The cards of the kernel and the sockets of sound servers; of what is not there yet, the place where it will
// come.
void SoundWatch::WatchPlaces() {
  if (!application_.HasOwnDevices()) return;
  const QString runtime = QStandardPaths::writableLocation(QStandardPaths::RuntimeLocation);
  for (const auto& [place, parent] : {std::pair(QStringLiteral("/dev/snd"), QStringLiteral("/dev")),
                                      std::pair(runtime + QStringLiteral("/pulse"), runtime)}) {
    const bool there = QDir(place).exists();
    if (!parent.isEmpty()) watcher_.addPath(there ? place : parent);
    if (there) watcher_.removePath(parent);
  }
}

void SoundWatch::Look() {
  if (application_.HasOwnDevices()) settled_.start();
}

void SoundWatch::LookNow() {
  if (sounds_()) return settled_.start();
  WatchPlaces();
  worker_.DropAll();
  worker_.Start([this]() -> BackgroundWorker::Done {
    return [this, found = FindSoundDevices()] {
      if (application_.AddSoundDevices(found)) emit DevicesCame();
    };
  });
}

}  // namespace ts5
