#include "platform/files/digest.h"

#include <QByteArray>
#include <QCryptographicHash>

namespace ts5 {

std::string Sha256Hex(ByteView bytes) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  hash.addData(QByteArray::fromRawData(AsText(bytes).data(), static_cast<qsizetype>(bytes.size())));
  return hash.result().toHex().toStdString();
}

}  // namespace ts5
