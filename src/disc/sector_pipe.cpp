#include "disc/sector_pipe.h"

#include <algorithm>

namespace ts5::disc {
namespace {

constexpr auto kPatience = std::chrono::milliseconds(50);  // of ReadSome, for more than a little

}  // namespace

// What is copied lies in the part of the ring that the other side does not touch meanwhile: only the marks
// need the lock.
bool SectorPipe::Write(ByteView bytes) {
  while (!bytes.empty()) {
    std::size_t at = 0;
    std::size_t room = 0;
    {
      std::unique_lock lock(mutex_);
      const std::size_t enough = count_ == ring_.size() ? Quarter() : 1;
      room_.wanted = enough;
      room_.came.wait(lock, [&] { return readingClosed_ || ring_.size() - count_ >= enough; });
      room_.wanted = 0;
      if (readingClosed_) return false;
      at = (first_ + count_) % ring_.size();
      room = std::min(ring_.size() - count_, ring_.size() - at);
    }
    const std::size_t part = std::min(room, bytes.size());
    std::copy_n(bytes.begin(), part, ring_.begin() + static_cast<std::ptrdiff_t>(at));
    bytes = bytes.subspan(part);
    std::unique_lock lock(mutex_);
    count_ += part;
    data_.Tell(count_, lock);
  }
  return true;
}

std::size_t SectorPipe::Read(std::span<std::uint8_t> out) {
  std::size_t done = 0;
  while (done < out.size()) {
    const std::size_t part = Take(out.subspan(done), AwaitData(out.size() - done));
    if (part == 0) break;
    done += part;
  }
  return done;
}

std::optional<std::size_t> SectorPipe::ReadSome(std::span<std::uint8_t> out) {
  // Asked first: what came before the end was announced is there.
  const bool ended = Ended();
  const std::size_t there = AwaitData(out.size(), kPatience);
  if (there == 0 && !ended) return std::nullopt;
  return Take(out, there);
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

std::size_t SectorPipe::Take(std::span<std::uint8_t> out, std::size_t there) {
  const std::size_t wanted = std::min(there, out.size());
  for (std::size_t done = 0; done < wanted;) {
    const std::size_t part = std::min(wanted - done, ring_.size() - first_);
    std::copy_n(ring_.begin() + static_cast<std::ptrdiff_t>(first_), part,
                out.begin() + static_cast<std::ptrdiff_t>(done));
    done += part;
    std::unique_lock lock(mutex_);
    first_ = (first_ + part) % ring_.size();
    count_ -= part;
    room_.Tell(ring_.size() - count_, lock);
  }
  return wanted;
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
