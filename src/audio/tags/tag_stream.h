// A file as the tag library edits it, with every failed read and write remembered: a full disk in the middle
// of an edit must not look like a success.
#pragma once

#include <taglib/tiostream.h>

#include <array>
#include <cstddef>
#include <string>

#include "platform/base/descriptor.h"

namespace ts5::tags {

class TagStream : public TagLib::IOStream {
 public:
  // path must be there; without write access the stream is read-only.
  TagStream(std::string path, bool writable);

  [[nodiscard]] bool IsOpen() const { return static_cast<bool>(descriptor_); }
  [[nodiscard]] bool HasFailed() const { return failed_; }

  TagLib::FileName name() const override { return path_.c_str(); }
  TagLib::ByteVector readBlock(unsigned long length) override;
  void writeBlock(const TagLib::ByteVector& data) override;
  void insert(const TagLib::ByteVector& data, unsigned long start, unsigned long replace) override;
  void removeBlock(unsigned long start, unsigned long length) override;
  bool readOnly() const override { return !writable_; }
  bool isOpen() const override { return IsOpen(); }
  void seek(long offset, Position from) override;
  void clear() override {}
  long tell() const override { return static_cast<long>(position_); }
  long length() override { return static_cast<long>(size_); }
  void truncate(long length) override;

 private:
  // A part of the file as it was read: readers look at its start and its end in many small steps.
  struct Window {
    unsigned long at = 0;
    unsigned long size = 0;
    std::array<char, 4096> bytes;
  };

  bool ReadAll(unsigned long at, char* out, unsigned long count);
  // What is read only comes out of the two windows that were looked at last; nullptr when the reading failed.
  const char* InWindow(unsigned long at, unsigned long count);
  void WriteAll(unsigned long at, const char* data, unsigned long count);
  // Moves what lies from `from` to the end of the file so that it begins at `to`.
  void MoveTail(unsigned long from, unsigned long to);

  std::string path_;
  bool writable_;
  FileDescriptor descriptor_;
  unsigned long position_ = 0;
  unsigned long size_ = 0;
  bool failed_ = false;
  std::array<Window, 2> windows_;
  std::size_t older_ = 0;
};

}  // namespace ts5::tags
