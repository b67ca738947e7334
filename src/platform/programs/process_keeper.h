// A process of ours between this program and one that it starts. Whatever that one starts and leaves behind
// becomes a child of the keeper, in whichever group or session it is, so that the keeper can end it; and the
// keeper notices when this program is gone, however that came about.
//
// The keeper ends with the program's exit status, 128 + n after signal n, when nothing of it is left. SIGTERM
// asks the program to end and makes it end two seconds later; so does the end of this program.
#pragma once

#include <spawn.h>
#include <sys/types.h>

#include <array>

#include "platform/base/descriptor.h"

namespace ts5 {

struct KeptProgram {
  const char* program;  // looked for along PATH
  char* const* arguments;
  char* const* environment;
  const posix_spawn_file_actions_t& actions;
  const posix_spawnattr_t& attributes;     // makes a group of its own
  std::array<int, 3> streams{-1, -1, -1};  // its input, output and errors; -1: they lead nowhere
};

struct Keeper {
  pid_t id = -1;
  FileDescriptor life;  // as long as it is open, this program is there
};

// Nothing (id -1) when the program could not be started.
[[nodiscard]] Keeper StartKeeper(const KeptProgram& program);

}  // namespace ts5
