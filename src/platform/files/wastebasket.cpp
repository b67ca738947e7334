#include "platform/files/wastebasket.h"

#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QStandardPaths>
#include <QString>

#include "platform/base/quiet.h"
#include "platform/files/files.h"
#include "platform/files/paths.h"

namespace ts5 {
namespace {

bool MakePrivateDirectory(const std::string& path) {
  (void)::mkdir(path.c_str(), 0700);
  return IsDirectory(path) && ::access(path.c_str(), W_OK) == 0;
}

// Whether there is a wastebasket in the user's home, the one of last resort. Without it, Qt moves the file to
// the current directory and calls that success.
bool HasWastebasket() {
  const std::string data =
      QFile::encodeName(QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation)).toStdString();
  if (!IsAbsolutePath(data) || Failed(MakeDirectories(data))) return false;
  const std::string basket = JoinPath(data, "Trash");
  return MakePrivateDirectory(basket) && MakePrivateDirectory(JoinPath(basket, "files")) &&
         MakePrivateDirectory(JoinPath(basket, "info"));
}

}  // namespace

Outcome MoveToTrash(const std::string& path) {
  if (!FileExists(path)) return Outcome::SourceFailed;
  const QuietLibraries quiet;  // what cannot be moved is our message to give
  if (!HasWastebasket()) return Outcome::TargetFailed;
  const QString name = QFile::decodeName(QByteArray::fromStdString(path));
  return QFile::moveToTrash(name) ? Outcome::Success : Outcome::TargetFailed;
}

}  // namespace ts5
