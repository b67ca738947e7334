#include "platform/files/digest.h"

#include <libdeflate.h>

#include <QByteArray>
#include <QCryptographicHash>

#include "platform/base/text.h"

namespace ts5 {

std::string Sha256Hex(ByteView bytes) {
  QCryptographicHash hash(QCryptographicHash::Sha256);
  hash.addData(QByteArray::fromRawData(AsText(bytes).data(), static_cast<qsizetype>(bytes.size())));
  return hash.result().toHex().toStdString();
}

void Crc32::Add(ByteView bytes) {
  value_ = ::libdeflate_crc32(value_, bytes.data(), bytes.size());
}

std::string Crc32::Text() const {
  return Format("%08X", value_);
}

}  // namespace ts5
