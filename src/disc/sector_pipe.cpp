#include "disc/sector_pipe.h"

#include <algorithm>

namespace ts5::disc {

bool SectorPipe::Write(ByteView bytes) {
  std::unique_lock lock(mutex_);
  while (!bytes.empty()) {
    changed_.wait(lock, [this] { return readingClosed_ || count_ < ring_.size(); });
    if (readingClosed_) return false;
    const std::size_t at = (first_ + count_) % ring_.size();
    const std::size_t room = std::min(ring_.size() - count_, ring_.size() - at);
    const std::size_t part = std::min(room, bytes.size());
    std::copy_n(bytes.begin(), part, ring_.begin() + static_cast<std::ptrdiff_t>(at));
    count_ += part;
    bytes = bytes.subspan(part);
    changed_.notify_all();
  }
  return true;
}

std::size_t SectorPipe::Read(std::span<std::uint8_t> out) {
  std::unique_lock lock(mutex_);
  std::size_t done = 0;
  while (done < out.size()) {
    changed_.wait(lock, [this] { return writingClosed_ || count_ > 0; });
    if (count_ == 0) break;
    const std::size_t part = std::min({count_, ring_.size() - first_, out.size() - done});
    std::copy_n(ring_.begin() + static_cast<std::ptrdiff_t>(first_), part,
                out.begin() + static_cast<std::ptrdiff_t>(done));
    first_ = (first_ + part) % ring_.size();
    count_ -= part;
    done += part;
    changed_.notify_all();
  }
  return done;
}

void SectorPipe::WaitForFill(std::size_t bytes) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return writingClosed_ || count_ >= std::min(bytes, ring_.size()); });
}

void SectorPipe::CloseWriting() {
  const std::lock_guard lock(mutex_);
  writingClosed_ = true;
  changed_.notify_all();
}

void SectorPipe::CloseReading() {
  const std::lock_guard lock(mutex_);
  readingClosed_ = true;
  changed_.notify_all();
}

double SectorPipe::Fill() const {
  const std::lock_guard lock(mutex_);
  return static_cast<double>(count_) / static_cast<double>(ring_.size());
}

}  // namespace ts5::disc
