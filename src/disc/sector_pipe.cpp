#include "disc/sector_pipe.h"

#include <algorithm>

namespace ts5::disc {
namespace {

constexpr auto kPatience = std::chrono::milliseconds(50);  // of NextSome, for more than a little

}  // namespace

// What one side fills or reads lies in the part of the ring that the other does not touch meanwhile: only the
// marks need the lock.
std::span<std::uint8_t> SectorPipe::Room(std::size_t most) {
  std::unique_lock lock(mutex_);
  const std::size_t enough = count_ == ring_.size() ? Quarter() : 1;
  room_.wanted = enough;
  room_.came.wait(lock, [&] { return readingClosed_ || ring_.size() - count_ >= enough; });
  room_.wanted = 0;
  if (readingClosed_) return {};
  const std::size_t at = (first_ + count_) % ring_.size();
  return std::span(ring_).subspan(at, std::min({most, ring_.size() - count_, ring_.size() - at}));
}

void SectorPipe::Add(std::size_t bytes) {
  std::unique_lock lock(mutex_);
  count_ += bytes;
  data_.Tell(count_, lock);
}

bool SectorPipe::Write(ByteView bytes) {
  while (!bytes.empty()) {
    const auto room = Room(bytes.size());
    if (room.empty()) return false;
    std::copy_n(bytes.begin(), room.size(), room.begin());
    bytes = bytes.subspan(room.size());
    Add(room.size());
  }
  return true;
}

ByteView SectorPipe::Next(std::size_t bytes) {
  return Piece(std::min(bytes, AwaitData(bytes)));
}

void SectorPipe::Drop(std::size_t bytes) {
  std::unique_lock lock(mutex_);
  first_ = (first_ + bytes) % ring_.size();
  count_ -= bytes;
  room_.Tell(ring_.size() - count_, lock);
}

std::optional<ByteView> SectorPipe::NextSome(std::size_t bytes) {
  // Asked first: what came before the end was announced is there.
  const bool ended = Ended();
  const std::size_t there = AwaitData(bytes, kPatience);
  if (there == 0 && !ended) return std::nullopt;
  return Piece(std::min(bytes, there));
}

void SectorPipe::WaitForReserve() {
  (void)AwaitData(ring_.size());
}

// More than half of the ring is never waited for: the writing side rests with more in it.
std::size_t SectorPipe::AwaitData(std::size_t bytes, std::optional<std::chrono::milliseconds> patience) {
  std::unique_lock lock(mutex_);
  const std::size_t wanted = count_ >= bytes ? bytes : std::max(bytes, Quarter());
  const std::size_t enough = std::min(wanted, (ring_.size() + 1) / 2);
  const auto ready = [&] { return writingClosed_ || count_ >= enough; };
  data_.wanted = enough;
  if (patience) {
    (void)data_.came.wait_for(lock, *patience, ready);
  } else {
    data_.came.wait(lock, ready);
  }
  data_.wanted = 0;
  return count_;
}

void SectorPipe::Close(bool& side) {
  const std::lock_guard lock(mutex_);
  side = true;
  data_.came.notify_all();
  room_.came.notify_all();
}

bool SectorPipe::Ended() const {
  const std::lock_guard lock(mutex_);
  return writingClosed_;
}

double SectorPipe::Fill() const {
  const std::lock_guard lock(mutex_);
  return static_cast<double>(count_) / static_cast<double>(ring_.size());
}

}  // namespace ts5::disc
