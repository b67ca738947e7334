// The right to use a disc drive alone, among all runs and all processes of the program. It ends with the
// object, and with a process that is killed.
#pragma once

#include <string>

#include "platform/base/descriptor.h"
#include "platform/base/outcome.h"

namespace ts5 {

class DriveClaim {
 public:
  // drive: its device file, or the directory that stands for it. InUse: another one has it. SourceFailed: it
  // does not exist or may not be opened.
  [[nodiscard]] static Result<DriveClaim> Take(const std::string& drive);
  // The same, and waits a moment for one who only looks whether there is a disc.
  [[nodiscard]] static Result<DriveClaim> TakeSoon(const std::string& drive);

 private:
  explicit DriveClaim(FileDescriptor lock) : lock_(std::move(lock)) {}
  FileDescriptor lock_;
};

}  // namespace ts5
