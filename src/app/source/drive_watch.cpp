#include "app/source/drive_watch.h"

#include <QSocketNotifier>
#include <utility>

#include "frame/ui/qt_text.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "platform/files/files.h"

namespace ts5 {
namespace {

constexpr int kSettleMilliseconds = 500;

}  // namespace

DriveWatch::DriveWatch(QObject* parent) : QObject(parent) {
  settled_.setSingleShot(true);
  settled_.setInterval(kSettleMilliseconds);
  connect(&settled_, &QTimer::timeout, this, &DriveWatch::Settle);
  if (auto events = DriveEvents::Open()) {
    events_ = *std::move(events);
    auto* const notifier = new QSocketNotifier(events_->Handle(), QSocketNotifier::Read, this);
    connect(notifier, &QSocketNotifier::activated, this, &DriveWatch::TakeEvents);
  }
  for (const std::string& directory : {VirtualCdDirectory(), VirtualRecorderDirectory()}) {
    if (Succeeded(MakeDirectories(directory))) virtual_.addPath(ToQt(directory));
  }
  connect(&virtual_, &QFileSystemWatcher::directoryChanged, this, [this](const QString& directory) {
    discs_.insert(FromQt(directory));
    settled_.start();
  });
}

void DriveWatch::TakeEvents() {
  for (const DriveEvent& event : events_->Read()) {
    drives_ = drives_ || event.drive;
    discs_.insert(event.device);
    settled_.start();
  }
}

void DriveWatch::Settle() {
  const bool drives = std::exchange(drives_, false);
  const std::set<std::string> discs = std::exchange(discs_, {});
  if (drives) emit DrivesChanged();
  for (const std::string& disc : discs) emit DiscChanged(disc);
}

}  // namespace ts5
