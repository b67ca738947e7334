// A few bytes of an existing file read and overwritten in place. Everything that makes files goes through
// StagedFile; this is for the rare bytes that are changed where they lie and put back afterwards.
#pragma once

#include <cstdint>
#include <string>
#include <utility>

#include "platform/base/bytes.h"
#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"

namespace ts5 {

class FilePatch {
 public:
  // Gives the owner write permission first when it is missing (and leaves it so). SourceFailed: it is not a
  // regular file, or cannot be opened for reading and writing.
  [[nodiscard]] static Result<FilePatch> Open(const std::string& path);
  // Exactly count bytes; ReadFailed when the file holds fewer.
  [[nodiscard]] Result<Bytes> ReadAt(std::uint64_t offset, std::size_t count) const;
  [[nodiscard]] Outcome WriteAt(std::uint64_t offset, ByteView bytes) const;  // WriteFailed on a short write

 private:
  explicit FilePatch(FileDescriptor descriptor) : descriptor_(std::move(descriptor)) {}
  FileDescriptor descriptor_;
};

}  // namespace ts5
