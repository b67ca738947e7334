// A sound server of the test's own with one output that nobody hears, for as long as the object lives.
#pragma once

#include <sys/types.h>

#include "support/home.h"

namespace ts5::test {

class SoundServer {
 public:
  SoundServer();
  ~SoundServer();
  SoundServer(const SoundServer&) = delete;
  SoundServer& operator=(const SoundServer&) = delete;

  // False where none is installed.
  [[nodiscard]] bool Runs() const { return server_ > 0; }
  void Signal(int signal) const;

 private:
  Home home_;
  pid_t server_ = -1;
};

}  // namespace ts5::test
