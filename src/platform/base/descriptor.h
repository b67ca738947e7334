// An open file descriptor that closes itself.
#pragma once

#include <unistd.h>

#include <utility>

namespace ts5 {

class FileDescriptor {
 public:
  FileDescriptor() = default;
  explicit FileDescriptor(int descriptor) : descriptor_(descriptor) {}
  FileDescriptor(FileDescriptor&& other) noexcept : descriptor_(std::exchange(other.descriptor_, -1)) {}
  FileDescriptor& operator=(FileDescriptor&& other) noexcept {
    std::swap(descriptor_, other.descriptor_);
    return *this;
  }
  ~FileDescriptor() { (void)Close(); }

  [[nodiscard]] explicit operator bool() const { return descriptor_ >= 0; }
  [[nodiscard]] int Get() const { return descriptor_; }
  // False when the system reports only now that something was not written.
  bool Close() { return descriptor_ < 0 || ::close(std::exchange(descriptor_, -1)) == 0; }

 private:
  int descriptor_ = -1;
};

}  // namespace ts5
