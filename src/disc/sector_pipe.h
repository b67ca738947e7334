// The pipe between what reads sound and what writes it: it holds eight seconds, so that a file system that is
// busy for a while does not stop the laser. One thread on each side; each wakes the other one only when there
// is enough of what it waits for.
#pragma once

#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <optional>
#include <span>
#include <vector>

#include "platform/base/bytes.h"
#include "platform/disc/cd_drive.h"

namespace ts5::disc {

inline constexpr std::size_t kPipeBytes = 1'411'200;
static_assert(kPipeBytes % kAudioSectorBytes == 0, "no sector lies in two pieces");
// What one command reads or writes.
inline constexpr std::size_t kPortion = kSectorsPerCommand * kAudioSectorBytes;

class SectorPipe {
 public:
  explicit SectorPipe(std::size_t capacity = kPipeBytes) : ring_(capacity) {}

  // Waits for room. False when nobody reads any more.
  [[nodiscard]] bool Write(ByteView bytes);
  // The same without a copy: waits for room, and says where the next bytes go, at least one and at most so
  // many, in one piece; none when nobody reads any more. Add says how many of them came.
  [[nodiscard]] std::span<std::uint8_t> Room(std::size_t most);
  void Add(std::size_t bytes);
  // Waits for so many bytes, and gives those that lie in one piece; fewer at the end, none behind it. Drop
  // says how many of them are not needed any more.
  [[nodiscard]] ByteView Next(std::size_t bytes);
  void Drop(std::size_t bytes);
  // The same with what there is after a moment in which more may come; nothing when none came.
  [[nodiscard]] std::optional<ByteView> NextSome(std::size_t bytes);
  // Waits until it is half full or the end: the laser begins with a reserve.
  void WaitForReserve();

  void CloseWriting() { Close(writingClosed_); }
  void CloseReading() { Close(readingClosed_); }
  [[nodiscard]] double Fill() const;  // 0 to 1

 private:
  // What one side waits for.
  struct Awaited {
    std::condition_variable came;
    std::size_t wanted = 0;  // bytes; 0: nobody waits

    // Unlocks, so that who wakes does not run into the lock.
    void Tell(std::size_t there, std::unique_lock<std::mutex>& lock) {
      const bool enough = wanted > 0 && there >= wanted;
      lock.unlock();
      if (enough) came.notify_one();
    }
  };
  // Bytes that are there when enough of them are, at the end, or when the patience is over.
  [[nodiscard]] std::size_t AwaitData(std::size_t bytes,
                                      std::optional<std::chrono::milliseconds> patience = {});
  // Who has to wait waits for so much: it is not woken for a little.
  [[nodiscard]] std::size_t Quarter() const { return (ring_.size() + 3) / 4; }
  // Of so many bytes that are there those that lie in one piece.
  [[nodiscard]] ByteView Piece(std::size_t bytes) const {
    return ByteView(ring_).subspan(first_, std::min(bytes, ring_.size() - first_));
  }
  void Close(bool& side);
  [[nodiscard]] bool Ended() const;

  std::vector<std::uint8_t> ring_;
  std::size_t first_ = 0;
  std::size_t count_ = 0;
  bool writingClosed_ = false;
  bool readingClosed_ = false;
  mutable std::mutex mutex_;
  Awaited data_;
  Awaited room_;
};

}  // namespace ts5::disc
