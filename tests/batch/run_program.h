// The real program as a child process, with what it wrote and how it ended.
#pragma once

#include <sys/resource.h>
#include <sys/types.h>

#include <string>
#include <utility>
#include <vector>

namespace ts5::batch {

// A variable of its environment.
using Variable = std::pair<std::string, std::string>;

struct ProgramEnd {
  int status = -1;  // exit status; 128 + signal when a signal ended it
  std::string out;
  std::string err;
};

class Program {
 public:
  // Starts it without a terminal, its input empty, in that directory, with that registry file. fileLimit: the
  // longest file that it may write, as with ulimit -f; 0 for any. variables: what its environment has
  // besides.
  Program(const std::vector<std::string>& line, const std::string& directory, const std::string& registry,
          rlim_t fileLimit = 0, std::vector<Variable> variables = {});
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  void Signal(int signal) const;
  [[nodiscard]] ProgramEnd Wait();

 private:
  pid_t child_ = -1;
  std::string outPath_;
  std::string errPath_;
};

}  // namespace ts5::batch
