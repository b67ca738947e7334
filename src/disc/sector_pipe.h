// The pipe between what reads sound and what writes it to the disc: it holds eight seconds, so that a file
// system that is busy for a while does not stop the laser.
#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <span>
#include <vector>

#include "platform/base/bytes.h"

namespace ts5::disc {

inline constexpr std::size_t kPipeBytes = 1'411'200;

class SectorPipe {
 public:
  explicit SectorPipe(std::size_t capacity = kPipeBytes) : ring_(capacity) {}

  // Waits for room. False when nobody reads any more.
  [[nodiscard]] bool Write(ByteView bytes);
  // Fills out, and waits for as much; less only at the end, 0 behind it.
  [[nodiscard]] std::size_t Read(std::span<std::uint8_t> out);
  // Waits until so much is there or the end: the laser begins with a reserve.
  void WaitForFill(std::size_t bytes);

  void CloseWriting();
  void CloseReading();
  [[nodiscard]] double Fill() const;  // 0 to 1

 private:
  std::vector<std::uint8_t> ring_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
  bool writingClosed_ = false;
  bool readingClosed_ = false;
  mutable std::mutex mutex_;
  std::condition_variable changed_;
};

}  // namespace ts5::disc
