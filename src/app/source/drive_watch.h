// Notices drives that come and go and discs that are changed: the kernel tells of real ones, their
// directories of the virtual ones. No drive is asked for it.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <optional>
#include <set>
#include <string>

#include "platform/disc/drive_events.h"

namespace ts5 {

class DriveWatch : public QObject {
  Q_OBJECT

 public:
  explicit DriveWatch(QObject* parent = nullptr);

 signals:
  void DrivesChanged();
  // drive: its path.
  void DiscChanged(const std::string& drive);

 private:
  void TakeEvents();
  void Settle();

  std::optional<DriveEvents> events_;
  QFileSystemWatcher virtual_;
  QTimer settled_;  // a drive that comes needs a moment until it can be opened
  bool drives_ = false;
  std::set<std::string> discs_;
};

}  // namespace ts5
