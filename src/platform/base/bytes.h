// The one bounds-checked reader and the one writer of bytes: every format goes through them, so that no
// parser does size arithmetic of its own.
//
//   ByteReader in(file);
//   const auto tag = in.Tag();              // four characters, "" past the end
//   const auto size = in.U32Be();           // 0 past the end
//   const ByteView body = in.Take(size);    // empty past the end
//   if (!in.Ok()) return Failure(Outcome::ReadFailed);
//
// A read past the end gives zeros, moves to the end and makes Ok() false for good, so a parser may read a
// whole record and ask once.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

namespace ts5 {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

[[nodiscard]] inline ByteView AsBytes(std::string_view text) {
  return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}
[[nodiscard]] inline std::string_view AsText(ByteView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

class ByteReader {
 public:
  ByteReader() = default;
  explicit ByteReader(ByteView bytes) : bytes_(bytes) {}

  [[nodiscard]] bool Ok() const { return ok_; }
  [[nodiscard]] std::size_t Position() const { return position_; }
  [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
  [[nodiscard]] std::size_t Remaining() const { return bytes_.size() - position_; }
  [[nodiscard]] bool AtEnd() const { return position_ == bytes_.size(); }

  // An absolute position; one behind the end is a failed read.
  void Seek(std::size_t position) {
    if (position > bytes_.size()) {
      Fail();
    } else {
      position_ = position;
    }
  }
  void Skip(std::size_t count) { (void)Take(count); }

  // The next bytes as they lie in the source; empty when fewer than count are left.
  [[nodiscard]] ByteView Take(std::size_t count) {
    if (count > Remaining()) {
      Fail();
      return {};
    }
    const ByteView taken = bytes_.subspan(position_, count);
    position_ += count;
    return taken;
  }
  [[nodiscard]] std::string_view Tag() { return AsText(Take(4)); }

  [[nodiscard]] std::uint8_t U8() {
    if (position_ == bytes_.size()) {
      Fail();
      return 0;
    }
    return bytes_[position_++];
  }
  // The next byte without taking it; 0 at the end, which is no failed read.
  [[nodiscard]] std::uint8_t Peek() const { return AtEnd() ? std::uint8_t{0} : bytes_[position_]; }

  [[nodiscard]] std::uint16_t U16Be() { return static_cast<std::uint16_t>(Big(2)); }
  [[nodiscard]] std::uint32_t U24Be() { return static_cast<std::uint32_t>(Big(3)); }
  [[nodiscard]] std::uint32_t U32Be() { return static_cast<std::uint32_t>(Big(4)); }
  [[nodiscard]] std::uint64_t U64Be() { return Big(8); }
  [[nodiscard]] std::uint16_t U16Le() { return static_cast<std::uint16_t>(Little(2)); }
  [[nodiscard]] std::uint32_t U32Le() { return static_cast<std::uint32_t>(Little(4)); }
  [[nodiscard]] std::uint64_t U64Le() { return Little(8); }
  [[nodiscard]] std::int8_t I8() { return static_cast<std::int8_t>(U8()); }
  [[nodiscard]] std::int16_t I16Le() { return static_cast<std::int16_t>(U16Le()); }
  [[nodiscard]] std::int32_t I32Le() { return static_cast<std::int32_t>(U32Le()); }

 private:
  void Fail() {
    position_ = bytes_.size();
    ok_ = false;
  }
  [[nodiscard]] std::uint64_t Big(std::size_t count) {
    std::uint64_t value = 0;
    for (const std::uint8_t byte : Take(count)) value = value << 8 | byte;
    return value;
  }
  [[nodiscard]] std::uint64_t Little(std::size_t count) {
    std::uint64_t value = 0;
    unsigned shift = 0;
    for (const std::uint8_t byte : Take(count)) {
      value |= static_cast<std::uint64_t>(byte) << shift;
      shift += 8;
    }
    return value;
  }

  ByteView bytes_;
  std::size_t position_ = 0;
  bool ok_ = true;
};

// Appends to a buffer of its own; a length that is known only later is patched in.
class ByteWriter {
 public:
  [[nodiscard]] std::size_t Size() const { return bytes_.size(); }
  [[nodiscard]] ByteView View() const { return bytes_; }
  [[nodiscard]] Bytes Release() { return std::move(bytes_); }
  void Reserve(std::size_t size) { bytes_.reserve(size); }

  void U8(std::uint8_t value) { bytes_.push_back(value); }
  void U16Be(std::uint16_t value) { Big(value, 2); }
  void U24Be(std::uint32_t value) { Big(value, 3); }
  void U32Be(std::uint32_t value) { Big(value, 4); }
  void U64Be(std::uint64_t value) { Big(value, 8); }
  void U16Le(std::uint16_t value) { Little(value, 2); }
  void U32Le(std::uint32_t value) { Little(value, 4); }
  void U64Le(std::uint64_t value) { Little(value, 8); }

  void Append(ByteView bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }
  void Append(std::string_view text) { Append(AsBytes(text)); }
  void Fill(std::size_t count, std::uint8_t value) { bytes_.insert(bytes_.end(), count, value); }

  // Overwrite bytes that are written already; the position must lie inside the buffer.
  void PatchU32Be(std::size_t position, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i)
      bytes_.at(position + i) = static_cast<std::uint8_t>(value >> (24 - 8 * i));
  }
  void PatchU32Le(std::size_t position, std::uint32_t value) {
    for (std::size_t i = 0; i < 4; ++i) bytes_.at(position + i) = static_cast<std::uint8_t>(value >> (8 * i));
  }

 private:
  void Big(std::uint64_t value, unsigned count) {
    for (unsigned i = count; i-- > 0;) bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }
  void Little(std::uint64_t value, unsigned count) {
    for (unsigned i = 0; i < count; ++i) bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }

  Bytes bytes_;
};

}  // namespace ts5
