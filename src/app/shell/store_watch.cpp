#include "app/shell/store_watch.h"

#include "app/shell/application.h"
#include "frame/ui/qt_text.h"

namespace ts5 {
namespace {

constexpr int kAfterChange = 300;  // milliseconds; a change touches the file several times
constexpr int kWhileWaiting = 2000;

}  // namespace

StoreWatch::StoreWatch(Application& application, QObject* parent)
    : QObject(parent), application_(application) {
  timer_.setSingleShot(true);
  connect(&timer_, &QTimer::timeout, this, &StoreWatch::Look);
  connect(&watcher_, &QFileSystemWatcher::fileChanged, this, [this] { timer_.start(kAfterChange); });
  Watch();
  if (application_.WaitsForRegistry()) timer_.start(kWhileWaiting);
}

void StoreWatch::Watch() {
  const QString path = ToQt(application_.RegistryPath());
  if (!watcher_.files().contains(path)) watcher_.addPath(path);  // also when it was replaced
}

void StoreWatch::Look() {
  const bool waited = application_.WaitsForRegistry();
  if (application_.LookAtRegistry()) emit JobsChanged();
  if (application_.WaitsForRegistry()) {
    timer_.start(kWhileWaiting);
  } else if (waited) {
    emit Reached();
  }
  Watch();
}

}  // namespace ts5
