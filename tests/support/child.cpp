#include "support/child.h"

#include <sys/wait.h>
#include <unistd.h>

namespace ts5::test {

pid_t StartChild(const std::function<bool()>& body) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(body() ? 0 : 1);
  return child;
}

int WaitForChild(pid_t child) {
  int status = 0;
  ::waitpid(child, &status, 0);
  return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
}

}  // namespace ts5::test
