// The two ends of a pipe, which no program that is started gets by itself.
#pragma once

#include <fcntl.h>

#include <array>
#include <optional>

#include "platform/base/descriptor.h"

namespace ts5 {

struct Pipe {
  FileDescriptor read;
  FileDescriptor write;
};

[[nodiscard]] inline std::optional<Pipe> MakePipe() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC) != 0) return std::nullopt;
  return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace ts5
