// Checks that need a process of their own: other limits, another user, a violent end.
#pragma once

#include <sys/types.h>

#include <functional>

namespace ts5::test {

// Runs the body in a child process, which ends with status 0 when it returns true.
[[nodiscard]] pid_t StartChild(const std::function<bool()>& body);
// Its exit status, -1 when a signal ended it.
[[nodiscard]] int WaitForChild(pid_t child);
[[nodiscard]] inline int InChild(const std::function<bool()>& body) {
  return WaitForChild(StartChild(body));
}

}  // namespace ts5::test
