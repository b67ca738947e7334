#include "audio/tags/tag_stream.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>
#include <vector>

namespace ts5::tags {
namespace {

constexpr unsigned long kBlock = 1UL << 18;

}  // namespace

TagStream::TagStream(std::string path, bool writable)
    : path_(std::move(path)),
      writable_(writable),
      descriptor_(open(path_.c_str(), (writable ? O_RDWR : O_RDONLY) | O_CLOEXEC | O_NONBLOCK)) {
  struct stat facts {};
  if (!descriptor_ || fstat(descriptor_.Get(), &facts) != 0 || !S_ISREG(facts.st_mode)) {
    descriptor_ = FileDescriptor();
    return;
  }
  size_ = static_cast<unsigned long>(facts.st_size);
}

bool TagStream::ReadAll(unsigned long at, char* out, unsigned long count) {
  while (count > 0) {
    const ssize_t got = pread(descriptor_.Get(), out, count, static_cast<off_t>(at));
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) {
      failed_ = true;  // shorter than it was, or an error
      return false;
    }
    const auto done = static_cast<unsigned long>(got);
    at += done;
    out += done;
    count -= done;
  }
  return true;
}

const char* TagStream::InWindow(unsigned long at, unsigned long count) {
  const auto holds = [at, count](const Window& window) {
    return at >= window.at && at + count <= window.at + window.size;
  };
  if (!holds(windows_[older_]) && !holds(windows_[1 - older_])) {
    Window& window = windows_[older_];
    window.size = std::min<unsigned long>(window.bytes.size(), size_);
    window.at = std::min(at, size_ - window.size);
    if (!ReadAll(window.at, window.bytes.data(), window.size)) {
      window.size = 0;
      return nullptr;
    }
    older_ = 1 - older_;
  }
  const Window& window = holds(windows_[older_]) ? windows_[older_] : windows_[1 - older_];
  return window.bytes.data() + (at - window.at);
}

void TagStream::WriteAll(unsigned long at, const char* data, unsigned long count) {
  while (count > 0 && !failed_) {
    const ssize_t put = pwrite(descriptor_.Get(), data, count, static_cast<off_t>(at));
    if (put < 0 && errno == EINTR) continue;
    if (put <= 0) {
      failed_ = true;
      return;
    }
    const auto done = static_cast<unsigned long>(put);
    at += done;
    data += done;
    count -= done;
    size_ = std::max(size_, at);
  }
}

TagLib::ByteVector TagStream::readBlock(unsigned long length) {
  if (!IsOpen() || position_ >= size_) return {};
  const unsigned long count = std::min(length, size_ - position_);
  if (!writable_ && count <= windows_[0].bytes.size()) {
    const char* const read = InWindow(position_, count);
    if (read == nullptr) return {};
    position_ += count;
    return {read, static_cast<unsigned>(count)};
  }
  TagLib::ByteVector block(static_cast<unsigned>(count), '\0');
  if (!ReadAll(position_, block.data(), count)) return {};
  position_ += count;
  return block;
}

void TagStream::writeBlock(const TagLib::ByteVector& data) {
  if (!writable_ || !IsOpen()) return;
  WriteAll(position_, data.data(), data.size());
  position_ += data.size();
}

void TagStream::insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) {
  if (!writable_ || !IsOpen()) return;
  const unsigned long from = std::min(start, size_) + std::min(replace, size_ - std::min(start, size_));
  const unsigned long to = start + data.size();
  MoveTail(from, to);
  WriteAll(start, data.data(), data.size());
  position_ = to;
}

void TagStream::removeBlock(unsigned long start, unsigned long length) {
  if (!writable_ || !IsOpen() || start >= size_) return;
  MoveTail(start + std::min(length, size_ - start), start);
}

void TagStream::MoveTail(unsigned long from, unsigned long to) {
  const unsigned long tail = size_ - from;
  std::vector<char> block(std::min(kBlock, std::max(tail, 1UL)));
  for (unsigned long moved = 0; moved < tail && from != to;) {
    const unsigned long count = std::min<unsigned long>(block.size(), tail - moved);
    // Towards the end of the file the last block goes first, so that none is overwritten unread.
    const unsigned long at = to > from ? tail - moved - count : moved;
    if (!ReadAll(from + at, block.data(), count)) return;
    WriteAll(to + at, block.data(), count);
    if (failed_) return;
    moved += count;
  }
  if (to < from) truncate(static_cast<long>(to + tail));
}

void TagStream::seek(long offset, Position from) {
  long base = 0;
  if (from == Current) base = static_cast<long>(position_);
  if (from == End) base = static_cast<long>(size_);
  position_ = static_cast<unsigned long>(std::max(0L, base + offset));
}

void TagStream::truncate(long length) {
  if (!writable_ || !IsOpen()) return;
  int cut = -1;
  do {
    cut = ftruncate(descriptor_.Get(), length);
  } while (cut != 0 && errno == EINTR);
  if (cut != 0) {
    failed_ = true;
  } else {
    size_ = static_cast<unsigned long>(length);
  }
}

}  // namespace ts5::tags
