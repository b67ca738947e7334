// A console whose output is text and whose user answers from a script.
#pragma once

#include <atomic>
#include <deque>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

#include "batch/commands.h"

namespace ts5::batch {

struct CapturedConsole {
  std::ostringstream out;
  std::ostringstream err;
  std::deque<std::string> replies;  // of a user at a terminal; used with Answering()
  std::atomic<bool> interrupted = false;
  Console console{
      .out = out, .err = err, .readLine = {}, .interrupted = [this] { return interrupted.load(); }};

  CapturedConsole& OnTerminal() {
    console.terminal = true;
    return *this;
  }
  // With somebody who gives these replies, and then ends the input.
  CapturedConsole& Answering(std::deque<std::string> lines) {
    replies = std::move(lines);
    console.readLine = [this]() -> std::optional<std::string> {
      if (replies.empty()) return std::nullopt;
      std::string line = replies.front();
      replies.pop_front();
      return line;
    };
    return OnTerminal();
  }

  int Run(const std::vector<std::string>& line) { return RunBatch(line, console); }
};

}  // namespace ts5::batch
