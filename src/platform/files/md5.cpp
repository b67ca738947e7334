#include "platform/files/md5.h"

#include <QCryptographicHash>
#include <algorithm>

namespace ts5 {

class Md5Sum::Impl {
 public:
  QCryptographicHash hash{QCryptographicHash::Md5};
};

Md5Sum::Md5Sum() : impl_(std::make_unique<Impl>()) {}
Md5Sum::Md5Sum(Md5Sum&& other) noexcept = default;
Md5Sum& Md5Sum::operator=(Md5Sum&& other) noexcept = default;
Md5Sum::~Md5Sum() = default;

void Md5Sum::Add(ByteView bytes) {
  impl_->hash.addData(QByteArrayView(bytes.data(), static_cast<qsizetype>(bytes.size())));
}

std::array<std::uint8_t, 16> Md5Sum::Finish() const {
  std::array<std::uint8_t, 16> sum{};
  std::ranges::copy(impl_->hash.result(), reinterpret_cast<char*>(sum.data()));
  return sum;
}

}  // namespace ts5
