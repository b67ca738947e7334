#include "platform/base/quiet.h"

#include <fcntl.h>
#include <unistd.h>

#include <cstdio>
#include <mutex>

namespace ts5 {
namespace {

std::mutex guard;
int nested = 0;       // probing calls under way
int savedError = -1;  // standard error meanwhile

}  // namespace

QuietLibraries::QuietLibraries() {
  const std::lock_guard lock(guard);
  if (nested++ > 0) return;
  (void)std::fflush(stderr);
  const int nowhere = open("/dev/null", O_WRONLY | O_CLOEXEC);
  savedError = fcntl(STDERR_FILENO, F_DUPFD_CLOEXEC, 3);
  if (nowhere >= 0 && savedError >= 0) dup2(nowhere, STDERR_FILENO);
  if (nowhere >= 0) close(nowhere);
}

QuietLibraries::~QuietLibraries() {
  const std::lock_guard lock(guard);
  if (--nested > 0 || savedError < 0) return;
  (void)std::fflush(stderr);
  dup2(savedError, STDERR_FILENO);
  close(savedError);
  savedError = -1;
}

}  // namespace ts5
