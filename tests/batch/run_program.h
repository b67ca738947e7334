// The real program as a child process, with what it wrote and how it ended.
#pragma once

#include <sys/types.h>

#include <string>
#include <vector>

namespace ts5::batch {

struct ProgramEnd {
  int status = -1;  // exit status; 128 + signal when a signal ended it
  std::string out;
  std::string err;
};

class Program {
 public:
  // Starts it without a terminal, its input empty, in that directory, with that registry file.
  Program(const std::vector<std::string>& line, const std::string& directory, const std::string& registry);
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
