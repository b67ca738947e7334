#include "platform/files/input_file.h"

#include <fcntl.h>

#include <algorithm>
#include <new>
#include <utility>

#include "platform/files/file_steps.h"

namespace ts5 {
namespace {

constexpr std::uint64_t kReadStep = std::uint64_t{4} << 20;

}  // namespace

Result<InputFile> InputFile::Open(const std::string& path) {
  struct stat status {};
  auto descriptor = OpenRegular(path, status);
  if (!descriptor) return Failure(descriptor.error());
  InputFile file;
  file.descriptor_ = *std::move(descriptor);
  file.size_ = static_cast<std::uint64_t>(status.st_size);
  return file;
}

InputFile InputFile::FromBytes(Bytes bytes) {
  InputFile file;
  file.size_ = bytes.size();
  file.bytes_ = std::make_shared<const Bytes>(std::move(bytes));
  return file;
}

Result<std::size_t> InputFile::ReadAt(std::uint64_t offset, std::span<std::uint8_t> out) const {
  if (bytes_) {
    if (offset >= size_) return std::size_t{0};
    const std::size_t count = std::min<std::uint64_t>(out.size(), size_ - offset);
    std::copy_n(bytes_->begin() + static_cast<std::ptrdiff_t>(offset), count, out.begin());
    return count;
  }
  std::size_t filled = 0;
  while (filled < out.size()) {
    const ssize_t got = Retry([&] {
      return ::pread(descriptor_.Get(), out.data() + filled, out.size() - filled,
                     static_cast<off_t>(offset + filled));
    });
    if (got < 0) return Failure(Outcome::ReadFailed);
    if (got == 0) break;
    filled += static_cast<std::size_t>(got);
  }
  return filled;
}

Result<Bytes> InputFile::ReadAll(std::uint64_t limit, const std::function<bool()>& stopped) const {
  if (size_ > limit) return Failure(Outcome::ReadFailed);
  try {
    Bytes content;
    content.reserve(static_cast<std::size_t>(size_));
    while (content.size() < size_) {
      if (stopped && stopped()) return Failure(Outcome::Cancelled);
      const std::size_t filled = content.size();
      content.resize(filled + static_cast<std::size_t>(std::min(kReadStep, size_ - filled)));
      const auto got = ReadAt(filled, std::span(content).subspan(filled));
      if (!got) return Failure(got.error());
      if (filled + *got == content.size()) continue;
      content.resize(filled + *got);  // the file has become shorter
      break;
    }
    return content;
  } catch (const std::bad_alloc&) {
    return Failure(Outcome::OutOfMemory);
  }
}

void InputFile::ExpectSequentialReads() const {
  if (descriptor_) (void)::posix_fadvise(descriptor_.Get(), 0, 0, POSIX_FADV_SEQUENTIAL);
}

}  // namespace ts5
