#include "support/sound_server.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>
#include <thread>

namespace ts5::test {

SoundServer::SoundServer() {
  const std::string program = "/usr/bin/pulseaudio";
  if (!std::filesystem::exists(program)) return;
  const std::string socket = home_.File("native");
  const std::string protocol = "module-native-protocol-unix auth-anonymous=1 socket=" + socket;
  server_ = fork();
  if (server_ == 0) {
    const int nothing = open("/dev/null", O_RDWR);
    for (const int one : {0, 1, 2}) dup2(nothing, one);
    execl(program.c_str(), program.c_str(), "-n", "--daemonize=no", "--exit-idle-time=-1",
          "--use-pid-file=no", "-L", "module-null-sink", "-L", protocol.c_str(), nullptr);
    _exit(127);
  }
  for (int i = 0; i < 500 && !std::filesystem::exists(socket); ++i)
    std::this_thread::sleep_for(std::chrono::milliseconds(20));
}

SoundServer::~SoundServer() {
  if (server_ <= 0) return;
  Signal(SIGKILL);
  waitpid(server_, nullptr, 0);
}

void SoundServer::Signal(int signal) const {
  kill(server_, signal);
}

}  // namespace ts5::test
