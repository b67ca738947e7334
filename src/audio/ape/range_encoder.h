// A range coder with 31 bits of code and carries that run into bytes already made. A symbol is a piece of a
// total: where it begins, how wide it is, and the total, which may be at most 2^16.
#pragma once

#include <cstdint>

#include "platform/base/bytes.h"

namespace ts5::ape {

class RangeEncoder {
 public:
  // Appends to out, which outlives the coder. The first byte takes up a carry that never comes: readers skip
  // it.
  explicit RangeEncoder(Bytes& out) : out_(out) {}

  void Encode(std::uint32_t begin, std::uint32_t width, std::uint32_t total) {
    Normalise();
    Take(range_ / total, begin, width);
  }
  // The same for a total of 2^shift.
  void EncodeShift(std::uint32_t begin, std::uint32_t width, unsigned shift) {
    Normalise();
    Take(range_ >> shift, begin, width);
  }

  // What is left, so that a reader has taken every byte after its last symbol, and none of what follows.
  void Finish() {
    Normalise();
    for (int i = 0; i < 4; ++i) Shift();
    out_.push_back(cache_);
    // What still waits behind the cache are bytes that no carry can reach any more.
    out_.insert(out_.end(), pending_, 0xFF);
    pending_ = 0;
  }

 private:
  static constexpr std::uint32_t kTop = std::uint32_t{1} << 31;
  static constexpr std::uint32_t kBottom = kTop >> 8;

  void Take(std::uint32_t step, std::uint32_t begin, std::uint32_t width) {
    low_ += step * begin;
    range_ = step * width;
  }

  void Normalise() {
    while (range_ <= kBottom) {
      Shift();
      range_ <<= 8;
    }
  }

  // Moves the top eight bits out. A byte of ones waits, with all that follow it, until a carry can no longer
  // come.
  void Shift() {
    const std::uint32_t top = low_ >> 23;
    if (top == 0xFF) {
      ++pending_;
    } else {
      const auto carry = static_cast<std::uint8_t>(top >> 8);
      out_.push_back(static_cast<std::uint8_t>(cache_ + carry));
      out_.insert(out_.end(), pending_, static_cast<std::uint8_t>(0xFF + carry));
      pending_ = 0;
      cache_ = static_cast<std::uint8_t>(top);
    }
    low_ = low_ << 8 & (kTop - 1);
  }

  Bytes& out_;
  std::uint32_t low_ = 0;
  std::uint32_t range_ = kTop;
  std::uint8_t cache_ = 0;
  std::size_t pending_ = 0;
};

}  // namespace ts5::ape
