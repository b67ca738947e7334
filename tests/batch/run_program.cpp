#include "batch/run_program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <stdexcept>

#include "support/test_data.h"

namespace ts5::batch {

Program::Program(const std::vector<std::string>& line, const std::string& directory,
                 const std::string& registry, rlim_t fileLimit)
    : outPath_(registry + ".out"), errPath_(registry + ".err") {
  std::vector<char*> words{const_cast<char*>(TS5_BATCH_PROGRAM)};
  for (const std::string& word : line) words.push_back(const_cast<char*>(word.c_str()));
  words.push_back(nullptr);
  child_ = fork();
  if (child_ < 0) throw std::runtime_error("no child process");
  if (child_ > 0) return;
  // The child: only calls that are safe here.
  setenv("STAVORA_REGISTRY", registry.c_str(), 1);
  const rlimit limit{fileLimit, fileLimit};
  if (fileLimit > 0 && setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(125);
  const int input = open("/dev/null", O_RDONLY);
  const int output = open(outPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int errors = open(errPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (chdir(directory.c_str()) != 0 || dup2(input, 0) < 0 || dup2(output, 1) < 0 || dup2(errors, 2) < 0)
    _exit(126);
  execv(TS5_BATCH_PROGRAM, words.data());
  _exit(127);
}

Program::~Program() {
  if (child_ <= 0) return;
  kill(child_, SIGKILL);
  waitpid(child_, nullptr, 0);
}

void Program::Signal(int signal) const {
  kill(child_, signal);
}

ProgramEnd Program::Wait() {
  int status = 0;
  waitpid(child_, &status, 0);
  child_ = -1;
  ProgramEnd end{.status = WIFEXITED(status) ? WEXITSTATUS(status) : 128 + WTERMSIG(status),
                 .out = test::Content(outPath_),
                 .err = test::Content(errPath_)};
  std::filesystem::remove(outPath_);
  std::filesystem::remove(errPath_);
  return end;
}

}  // namespace ts5::batch
