#include "platform/files/remove_tree.h"

#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

namespace ts5 {
namespace {

constexpr const char* kProgram = "/bin/rm";

// A grandchild belongs to nobody here, so nobody has to wait for it. Between fork and exec only what is safe
// beside other threads is called.
bool StartAlone(const std::string& directory) {
  const char* const path = directory.c_str();
  const pid_t child = ::fork();
  if (child < 0) return false;
  if (child == 0) {
    (void)::setsid();
    const pid_t grandchild = ::fork();
    if (grandchild == 0) {
      ::execl(kProgram, kProgram, "-rf", "--", path, nullptr);
      ::_exit(127);
    }
    ::_exit(grandchild < 0 ? 1 : 0);
  }
  int status = 0;
  while (::waitpid(child, &status, 0) < 0) {
    if (errno != EINTR) return false;
  }
  return WIFEXITED(status) && WEXITSTATUS(status) == 0;
}

}  // namespace

void RemoveTree(const std::string& path) {
  std::error_code stays;
  std::filesystem::remove_all(path, stays);
}

void RemoveTreeInBackground(const std::string& directory) {
  if (::access(kProgram, X_OK) == 0 && StartAlone(directory)) return;
  RemoveTree(directory);
}

}  // namespace ts5
