#include "platform/programs/process.h"

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/wait.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <thread>

#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::FailsWith;
using test::IsOk;

std::string OutputOf(const std::string& program, const std::vector<std::string>& arguments) {
  const auto result = RunProcess(program, arguments);
  return result ? std::string(AsText(result->output)) : ToString(result.error());
}

std::size_t OpenDescriptors() {
  const std::filesystem::directory_iterator entries("/proc/self/fd");
  return static_cast<std::size_t>(std::distance(begin(entries), end(entries)));
}

bool HasChildren() {
  return !(::waitpid(-1, nullptr, WNOHANG) < 0 && errno == ECHILD);
}

bool Ends(const std::string& number) {
  for (int i = 0; i < 300; ++i, std::this_thread::sleep_for(10ms)) {
    if (::kill(std::stoi(number), 0) != 0) return true;
  }
  return false;
}

TEST(Process, ArgumentsArriveAsTheyAreWithoutAShell) {
  EXPECT_EQ(OutputOf("printf", {"%s|", "a b", "$HOME", "`id`", "\"'\\", "*", "Größe", "; rm x"}),
            "a b|$HOME|`id`|\"'\\|*|Größe|; rm x|");
}

TEST(Process, SpeaksCAndRunsWhereItIsTold) {
  const test::TemporaryDirectory directory;
  EXPECT_EQ(OutputOf("sh", {"-c", "echo $LC_ALL"}), "C\n");
  const auto result = RunProcess("pwd", {"-P"}, {.directory = directory.Path()});
  ASSERT_THAT(result, IsOk());
  EXPECT_EQ(AsText(result->output), std::filesystem::canonical(directory.Path()).string() + "\n");
}

TEST(Process, StatusAndBothStreams) {
  const auto result = RunProcess("sh", {"-c", "echo out; echo err >&2; exit 7"});
  ASSERT_THAT(result, IsOk());
  EXPECT_EQ(result->status, 7);
  EXPECT_EQ(AsText(result->output), "out\n");
  EXPECT_EQ(AsText(result->errors), "err\n");
  EXPECT_EQ(RunProcess("sh", {"-c", "kill -9 $$"})->status, 128 + 9);
}

TEST(Process, WhatCannotBeStartedSaysSo) {
  const test::TemporaryDirectory directory;
  const std::string text = directory.Write("text", "no program");
  for (const std::string& program : {std::string("ts5-no-such-program"), text, directory.Path(),
                                     std::string(), std::string("true\0x", 6)}) {
    EXPECT_THAT(RunProcess(program, {}), FailsWith(Outcome::SourceFailed)) << program;
  }
  EXPECT_THAT(RunProcess("true", {}, {.directory = directory.File("none")}),
              FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(RunProcess("true", {std::string("a\0b", 3)}), FailsWith(Outcome::SourceFailed));
}

TEST(Process, MuchDataBothWaysNeverBlocks) {
  Bytes input(3'000'000);
  for (std::size_t i = 0; i < input.size(); ++i) input[i] = static_cast<std::uint8_t>(i * 31);
  const auto result = RunProcess("tee", {"/dev/stderr"}, {.input = input});
  ASSERT_THAT(result, IsOk());
  EXPECT_TRUE(result->output == input);
  EXPECT_TRUE(result->errors == input);

  const auto bounded = RunProcess("cat", {}, {.input = input, .limit = 1000});
  ASSERT_THAT(bounded, IsOk());
  EXPECT_EQ(bounded->output.size(), 1000U);

  // A program that does not want its input is no failure of ours, let alone our end.
  EXPECT_EQ(RunProcess("true", {}, {.input = input})->status, 0);
}

TEST(Process, EndsWithItsTimeOrByRequestWithAllItHasStarted) {
  EXPECT_THAT(RunProcess("sh", {"-c", "sleep 1h & sleep 1h"}, {.timeout = 100ms}),
              FailsWith(Outcome::Cancelled));
  EXPECT_THAT(RunProcess("sleep", {"1h"}, {.cancelled = [] { return true; }}), FailsWith(Outcome::Cancelled));
  // What has left its group and its session and lost its parents does not escape, whether the program ends or
  // is ended.
  for (const std::string end : {"", "; sleep 1h"}) {
    auto process = Process::Start(
        "sh", {"-c", "(setsid sh -c 'sleep 1h & echo $!; trap \"\" TERM; wait' &) ; read line" + end},
        {.input = true, .output = true});
    ASSERT_THAT(process, IsOk());
    Bytes line(20);
    ASSERT_GT(process->Read(ProcessStream::Output, line).value_or(0), 0U);
    process->CloseInput();
    if (end.empty()) {
      EXPECT_EQ(process->Wait(10s), 1);
    }
    process->Terminate();
    EXPECT_TRUE(Ends(std::string(AsText(line))));
  }
  EXPECT_FALSE(HasChildren());
}

TEST(Process, EndsWithUsHoweverWeEnd) {
  const test::TemporaryDirectory directory;
  const std::string note = directory.File("pid");
  const pid_t us = ::fork();
  if (us == 0) {
    const auto left = Process::Start("sh", {"-c", "echo $$ >$0.new; mv $0.new $0; exec sleep 1h", note});
    while (!std::filesystem::exists(note)) std::this_thread::sleep_for(5ms);
    (void)::raise(SIGKILL);
  }
  ASSERT_EQ(::waitpid(us, nullptr, 0), us);
  EXPECT_TRUE(Ends(test::Content(note)));
}

TEST(Process, ByHand) {
  auto process = Process::Start("cat", {}, {.input = true, .output = true});
  ASSERT_THAT(process, IsOk());
  EXPECT_EQ(process->Wait(10ms), std::nullopt);
  EXPECT_THAT(process->Write(AsBytes("hello")), IsOk());
  Bytes block(100);
  EXPECT_EQ(process->Read(ProcessStream::Output, block).value_or(0), 5U);
  process->CloseInput();
  EXPECT_EQ(process->Read(ProcessStream::Output, block).value_or(9), 0U);
  EXPECT_EQ(process->Wait(10s), 0);
  EXPECT_THAT(process->Write(AsBytes("x")), FailsWith(Outcome::WriteFailed));

  auto deaf = Process::Start("true", {}, {.input = true});
  ASSERT_THAT(deaf, IsOk());
  EXPECT_EQ(deaf->Wait(10s), 0);
  EXPECT_THAT(deaf->Write(AsBytes("x")), FailsWith(Outcome::WriteFailed)) << "and no signal ends us";
}

TEST(Process, AStubbornProgramIsMadeToEnd) {
  auto process = Process::Start("sh", {"-c", "trap '' TERM; echo ready; while :; do sleep 0.05; done"},
                                {.output = true});
  ASSERT_THAT(process, IsOk());
  Bytes block(100);
  ASSERT_EQ(process->Read(ProcessStream::Output, block).value_or(0), 6U);
  process->Terminate();
  EXPECT_EQ(process->Wait(0ms), 128 + SIGKILL);
  EXPECT_FALSE(HasChildren());
}

TEST(Process, LeavesNoDescriptorsAndNoZombies) {
  const std::size_t before = OpenDescriptors();
  for (int i = 0; i < 20; ++i) {
    (void)RunProcess("true", {});
    (void)RunProcess("ts5-no-such-program", {});
    const auto running = Process::Start("sleep", {"100"}, {.input = true, .output = true, .errors = true});
    EXPECT_THAT(running, IsOk());
  }
  EXPECT_EQ(OpenDescriptors(), before);
  EXPECT_FALSE(HasChildren());

  // What we have open is none of its business.
  const test::TemporaryDirectory directory;
  FILE* const open = std::fopen(directory.Write("a", "x").c_str(), "r");  // without close-on-exec
  EXPECT_EQ(OutputOf("sh", {"-c", "ls /proc/self/fd | wc -l"}), "4\n") << "its three streams and that of ls";
  std::fclose(open);
}

}  // namespace
}  // namespace ts5
