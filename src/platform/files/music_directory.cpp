#include "platform/files/music_directory.h"

#include <QFile>
#include <QStandardPaths>
#include <QString>

#include "platform/files/directories.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {

std::string MusicDirectory() {
  const QString music = QStandardPaths::writableLocation(QStandardPaths::MusicLocation);
  const std::string home = HomeDirectory();
  // A desktop that has not been set up names an English directory, whatever its language.
  for (const std::string& path :
       {NormalisedPath(QFile::encodeName(music).toStdString()), JoinPath(home, "Musik")}) {
    if (IsDirectory(path) && path != home) return path;
  }
  return {};
}

}  // namespace ts5
