// A regular file, or bytes in memory, that is read at any place: what readers of large files stand on.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"

namespace ts5 {

class InputFile {
 public:
  InputFile() = default;  // empty
  // SourceFailed: it cannot be opened, or is a directory, device or pipe.
  [[nodiscard]] static Result<InputFile> Open(const std::string& path);
  [[nodiscard]] static InputFile FromBytes(Bytes bytes);

  // As it was when it was opened.
  [[nodiscard]] std::uint64_t Size() const { return size_; }
  // Fills out from the offset; fewer bytes only where the file ends. ReadFailed. Any thread.
  [[nodiscard]] Result<std::size_t> ReadAt(std::uint64_t offset, std::span<std::uint8_t> out) const;
  // The whole file. stopped is polled every few milliseconds and may be empty. ReadFailed: an error, or
  // longer than limit; Cancelled: stopped said so; OutOfMemory.
  [[nodiscard]] Result<Bytes> ReadAll(std::uint64_t limit, const std::function<bool()>& stopped = {}) const;
  // Says that the file will be read from front to back.
  void ExpectSequentialReads() const;

 private:
  FileDescriptor descriptor_;
  std::shared_ptr<const Bytes> bytes_;
  std::uint64_t size_ = 0;
};

}  // namespace ts5
