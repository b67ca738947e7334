// Reads the source directory for the file view, in the background, and again when the directory changes.
#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QTimer>
#include <filesystem>
#include <functional>
#include <set>
#include <string>
#include <vector>

#include "frame/directory_listing.h"
#include "frame/file_list.h"

namespace ts5 {

class SourceReader : public QObject {
  Q_OBJECT

 public:
  explicit SourceReader(QObject* parent = nullptr);

  // Reads the directory; an earlier reading is given up. The files come with Found, then Done.
  void Read(const std::string& directory, bool subdirectories);
  void Stop();
  [[nodiscard]] bool Reading() const { return lister_.Running(); }

 signals:
  void Begun();
  void Found(const std::vector<ts5::FileListEntry>& files);
  void Done(ts5::Outcome outcome);
  // The directory was changed by somebody since it was read.
  void Changed();

 private:
  void Finish(ListingEnd end);

  DirectoryLister lister_;
  QFileSystemWatcher watcher_;
  std::filesystem::file_time_type begun_ = {};  // reading
  std::filesystem::file_time_type seen_ = {};   // the last change, as it was when reading ended
  QTimer changed_;
  std::string directory_;
  std::set<std::string> holding_;  // directories below it with files
};

}  // namespace ts5
