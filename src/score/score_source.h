// The fields of score files, read from bytes in memory with every length checked.
//
// A field past the end gives zeros and makes Ok() false for good, as ByteReader does; so does a field whose
// value no score can hold (Invalid()). Readers of records therefore read a whole record and ask once; every
// loop over records asks, so that a reading can be stopped wherever it is. All integers are little-endian.
#pragma once

#include <cstddef>
#include <cstdint>

#include "platform/base/bytes.h"
#include "platform/base/work_watch.h"

namespace ts5 {

class ScoreSource {
 public:
  ScoreSource() = default;
  // stopped must outlive the source.
  explicit ScoreSource(ByteView bytes, std::size_t position = 0, const CancelCheck* stopped = nullptr)
      : in_(bytes), stop_(stopped != nullptr && *stopped ? stopped : nullptr) {
    in_.Seek(position);
  }

  [[nodiscard]] bool Ok() const { return in_.Ok() && !invalid_ && !(stop_ != nullptr && Stop()); }
  // Why it is not Ok: it was told to stop.
  [[nodiscard]] bool Stopped() const { return stopped_; }
  void Invalid() { invalid_ = true; }
  // A value outside its range makes the record invalid.
  void Require(bool holds) {
    if (!holds) invalid_ = true;
  }
  [[nodiscard]] std::size_t Position() const { return in_.Position(); }
  void Seek(std::size_t position) { in_.Seek(position); }

  [[nodiscard]] std::uint8_t U8() { return in_.U8(); }
  [[nodiscard]] std::int8_t I8() { return in_.I8(); }
  [[nodiscard]] std::uint16_t U16() { return in_.U16Le(); }
  [[nodiscard]] std::int16_t I16() { return in_.I16Le(); }
  [[nodiscard]] std::uint32_t U32() { return in_.U32Le(); }
  void Skip(std::size_t count) { in_.Skip(count); }
  [[nodiscard]] ByteView Take(std::size_t count) { return in_.Take(count); }

  // One byte below 254; behind 254 a U16, behind 255 a U32.
  [[nodiscard]] std::uint32_t CompactUnsigned();
  // One signed byte; behind 80 a U16 (without a sign), behind 7F a U32.
  [[nodiscard]] std::int32_t CompactSigned();
  // A CompactUnsigned count and so many bytes.
  [[nodiscard]] ByteView Blob();
  // A text of the older formats: a signed 16-bit length above 0, the text and a terminator; else one byte.
  [[nodiscard]] ByteView OldText();
  // A colour of the palette, or its own red, green and blue; red in the low byte.
  std::uint32_t Colour();
  // An optional frame: nothing of it is of use here.
  void Frame();

 private:
  [[nodiscard]] bool Stop() const;

  ByteReader in_;
  bool invalid_ = false;
  const CancelCheck* stop_ = nullptr;
  mutable unsigned asked_ = 0;
  mutable bool stopped_ = false;
};

}  // namespace ts5
