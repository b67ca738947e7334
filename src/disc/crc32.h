// CRC-32 (ISO-HDLC, as archives and rippers use it) of data that come in portions.
#pragma once

#include <array>
#include <cstdint>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/text.h"

namespace ts5::disc {

class Crc32 {
 public:
  void Add(ByteView bytes) {
    for (const std::uint8_t byte : bytes) value_ = kTable[(value_ ^ byte) & 0xFF] ^ value_ >> 8;
  }
  [[nodiscard]] std::uint32_t Value() const { return ~value_; }

 private:
  static constexpr std::array<std::uint32_t, 256> kTable = [] {
    std::array<std::uint32_t, 256> table{};
    for (std::uint32_t i = 0; i < table.size(); ++i) {
      std::uint32_t value = i;
      for (int bit = 0; bit < 8; ++bit) value = (value & 1) != 0 ? 0xEDB88320U ^ value >> 1 : value >> 1;
      table[i] = value;
    }
    return table;
  }();

  std::uint32_t value_ = 0xFFFF'FFFF;
};

[[nodiscard]] inline std::string Crc32Text(std::uint32_t value) {
  return Format("%08X", value);
}

}  // namespace ts5::disc
