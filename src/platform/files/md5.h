// MD5 (RFC 1321) as a checksum inside file formats.
#pragma once

#include <array>
#include <cstdint>
#include <memory>

#include "platform/base/bytes.h"

namespace ts5 {

class Md5Sum {
 public:
  Md5Sum();
  Md5Sum(Md5Sum&& other) noexcept;
  Md5Sum& operator=(Md5Sum&& other) noexcept;
  ~Md5Sum();

  void Add(ByteView bytes);
  // Of all that was added.
  [[nodiscard]] std::array<std::uint8_t, 16> Finish() const;

 private:
  class Impl;
  std::unique_ptr<Impl> impl_;
};

}  // namespace ts5
