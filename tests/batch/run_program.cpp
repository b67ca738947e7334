#include "batch/run_program.h"

#include <fcntl.h>
#include <signal.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string_view>

#include "support/test_data.h"

namespace ts5::batch {

namespace {

// The environment of this process with those variables in it.
std::vector<std::string> EnvironmentWith(const std::vector<Variable>& variables) {
  std::vector<std::string> lines;
  for (char** line = environ; *line != nullptr; ++line) {
    const std::string_view name = std::string_view(*line).substr(0, std::string_view(*line).find('='));
    if (std::ranges::find(variables, name, &Variable::first) == variables.end()) lines.emplace_back(*line);
  }
  for (const auto& [name, value] : variables) lines.push_back(name + "=" + value);
  return lines;
}

std::vector<char*> Pointers(const std::vector<std::string>& texts) {
  std::vector<char*> pointers;
  for (const std::string& text : texts) pointers.push_back(const_cast<char*>(text.c_str()));
  pointers.push_back(nullptr);
  return pointers;
}

}  // namespace

Program::Program(const std::vector<std::string>& line, const std::string& directory,
                 const std::string& registry, rlim_t fileLimit, std::vector<Variable> variables)
    : outPath_(registry + ".out"), errPath_(registry + ".err") {
  std::vector<std::string> words{TS5_BATCH_PROGRAM};
  words.insert(words.end(), line.begin(), line.end());
  variables.emplace_back("STAVORA_REGISTRY", registry);
  const std::vector<std::string> environment = EnvironmentWith(variables);
  const std::vector<char*> arguments = Pointers(words);
  const std::vector<char*> settings = Pointers(environment);
  child_ = fork();
  if (child_ < 0) throw std::runtime_error("no child process");
  if (child_ > 0) return;
  // The child: only calls that are safe here.
  const rlimit limit{fileLimit, fileLimit};
  if (fileLimit > 0 && setrlimit(RLIMIT_FSIZE, &limit) != 0) _exit(125);
  const int input = open("/dev/null", O_RDONLY);
  const int output = open(outPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  const int errors = open(errPath_.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
  if (chdir(directory.c_str()) != 0 || dup2(input, 0) < 0 || dup2(output, 1) < 0 || dup2(errors, 2) < 0)
    _exit(126);
  execve(TS5_BATCH_PROGRAM, arguments.data(), settings.data());
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
