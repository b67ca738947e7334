#include "platform/wastebasket.h"

#include <QFile>
#include <QString>

#include "platform/files.h"
#include "platform/quiet.h"

namespace ts5 {

Outcome MoveToTrash(const std::string& path) {
  if (!FileExists(path)) return Outcome::SourceFailed;
  const QString name = QFile::decodeName(QByteArray::fromStdString(path));
  const QuietLibraries quiet;  // what cannot be moved is our message to give
  return QFile::moveToTrash(name) ? Outcome::Success : Outcome::TargetFailed;
}

}  // namespace ts5
