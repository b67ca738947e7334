// Fingerprints of data.
#pragma once

#include <cstdint>
#include <string>

#include "platform/base/bytes.h"

namespace ts5 {

[[nodiscard]] std::string Sha256Hex(ByteView bytes);  // 64 digits, lower case

// CRC-32 as archives and programs that compare discs have it, of bytes that come in portions.
class Crc32 {
 public:
  void Add(ByteView bytes);
  [[nodiscard]] std::uint32_t Value() const { return value_; }
  [[nodiscard]] std::string Text() const;  // 8 digits, upper case

 private:
  std::uint32_t value_ = 0;
};

}  // namespace ts5
