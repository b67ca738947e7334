#include "app/source/source_reader.h"

#include <algorithm>
#include <chrono>

#include "frame/cd_tracks.h"
#include "frame/ui/qt_text.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

// A directory that is being written to changes many times; it is read again once it has been quiet for so
// long.
constexpr int kQuietMilliseconds = 600;
// Directories whose changes are noticed; a system has not very many watches.
constexpr std::size_t kMostWatched = 500;
// By so much a file system's time may be behind the clock.
constexpr std::chrono::milliseconds kTimeStep{20};

std::filesystem::file_time_type LastChange(const QStringList& directories) {
  auto last = std::filesystem::file_time_type::min();
  for (const QString& directory : directories) {
    std::error_code gone;
    const auto changed = std::filesystem::last_write_time(FromQt(directory), gone);
    if (!gone) last = std::max(last, changed);
  }
  return last;
}

}  // namespace

SourceReader::SourceReader(QObject* parent)
    : QObject(parent),
      lister_(
          [this](std::function<void()> message) {
            QMetaObject::invokeMethod(this, std::move(message), Qt::QueuedConnection);
          },
          FindAudioCd) {
  changed_.setSingleShot(true);
  changed_.setInterval(kQuietMilliseconds);
  connect(&watcher_, &QFileSystemWatcher::directoryChanged, &changed_, qOverload<>(&QTimer::start));
  connect(&changed_, &QTimer::timeout, this, &SourceReader::Changed);
}

void SourceReader::Stop() {
  lister_.Cancel();
  changed_.stop();
  if (!watcher_.directories().isEmpty()) watcher_.removePaths(watcher_.directories());
}

void SourceReader::Read(const std::string& directory, bool subdirectories) {
  Stop();
  directory_ = directory;
  holding_.clear();
  begun_ = std::filesystem::file_time_type::clock::now() - kTimeStep;
  emit Begun();
  const auto sink = [this](std::vector<DirectoryItem> batch) {
    std::vector<FileListEntry> files;
    files.reserve(batch.size());
    for (DirectoryItem& item : batch) {
      if (const std::string_view below = DirectoryOf(item.name);
          !item.cdTrack && !below.empty() && holding_.size() < kMostWatched)
        holding_.insert(JoinPath(directory_, below));
      files.push_back({item.cdTrack ? std::move(item.entry) : JoinPath(directory_, item.name), item.cdTrack,
                       item.seconds, 0});
    }
    emit Found(files);
  };
  (void)lister_.Start(directory, subdirectories, sink, [this](ListingEnd end) { Finish(end); });
}

void SourceReader::Finish(ListingEnd end) {
  // Only a directory that has answered is watched: watching one that hangs would hang as well.
  if (Succeeded(end.outcome) && IsDirectory(directory_)) {
    QStringList watched{ToQt(directory_)};
    for (const std::string& directory : holding_) watched.append(ToQt(directory));
    watcher_.addPaths(watched);
    // What changed while it was read was seen by nobody. Once: a server's clock may be ahead of this one's.
    const auto last = LastChange(watched);
    if (last > begun_ && last != seen_) changed_.start();
    seen_ = last;
  }
  emit Done(end.outcome);
}

}  // namespace ts5
