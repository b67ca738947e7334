// Encoders of the command line: their definitions file, their arguments, and running them, the bad ones most.
#include <gmock/gmock.h>
#include <signal.h>
#include <sys/stat.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <thread>

#include "audio/interfaces/command_line.h"
#include "audio/interfaces/encoder_interface.h"
#include "audio/interfaces/encoder_run.h"
#include "audio/interfaces/known_encoders.h"
#include "audio/media_probe.h"
#include "audio/texts.h"
#include "audio/wave_file.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::interfaces {
namespace {

using namespace test;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// --- arguments

TEST(EncoderCommandLine, SplitsWithoutAShell) {
  const struct {
    std::string_view line;
    std::vector<std::string> words;
  } cases[] = {
      {"-b 128 {q} {z}", {"-b", "128", "{q}", "{z}"}},
      {"  a\t b  ", {"a", "b"}},
      {R"(--title "Ein Lied" x)", {"--title", "Ein Lied", "x"}},
      {R"(--t="a b"c "" d)", {"--t=a bc", "", "d"}},
      {R"(C:\a\b \" x" y)", {R"(C:\a\b)", R"(\ x)", "y"}},
      {R"("not closed)", {"not closed"}},
      {"$(touch x) `y` ; | > 'q q'", {"$(touch", "x)", "`y`", ";", "|", ">", "'q", "q'"}},
      {"", {}},
  };
  for (const auto& row : cases) EXPECT_EQ(SplitCommandLine(row.line), row.words) << row.line;
}

TEST(EncoderCommandLine, FillsThePlacesOfTheTemplateOnly) {
  const auto arguments = [](std::string_view line, std::string_view source, std::string_view target) {
    return EncoderArguments(line, source, target).value_or(std::vector<std::string>{"failed"});
  };
  EXPECT_THAT(arguments("-b 128 {q} {z}", "/a b.wav", "/x.mp3"),
              ElementsAre("-b", "128", "/a b.wav", "/x.mp3"));
  EXPECT_THAT(arguments("-o {z} {q}", "/s.wav", "/t.mp3"), ElementsAre("-o", "/t.mp3", "/s.wav"));
  EXPECT_THAT(arguments("--io={z}:{q} {q}{z}", "/s", "/t"), ElementsAre("--io=/t:/s", "{q}{z}"));
  EXPECT_THAT(arguments("{q}:{z}", "/s{z}", "/t{q}"), ElementsAre("/s{z}:/t{q}"));
  EXPECT_THAT(arguments("\"{q}\" {z}", "/a\" --evil \"$(x)\n.wav", "/t"),
              ElementsAre("/a\" --evil \"$(x)\n.wav", "/t"));
  EXPECT_THAT(arguments("{q} {z}", "-rf", "t"), ElementsAre("./-rf", "./t"));
  for (const char* line : {"{q}", "{z} x", "", "{Q} {Z}"})
    EXPECT_THAT(EncoderArguments(line, "/s", "/t"), FailsWith(Outcome::InvalidParameter)) << line;
}

// --- definitions

EncoderInterface Sample() {
  return {"/usr/bin/lame",
          "Mein LAME",
          "mp3",
          {{"-b 128 {q} {z}", 128, true, false, true, false, true, Deemphasis::Ccitt},
           {"\"{q}\" \"{z}\"", 8, false, true, false, true, false, Deemphasis::None}}};
}

TEST(InterfaceFile, IsWrittenAsItIsKnown) {
  const TemporaryDirectory directory;
  const std::string path = directory.File("ts5i.cdi");
  ASSERT_THAT(SaveInterfaces(path, {Sample()}), IsOk());
  const std::string text = Content(path);
  EXPECT_THAT(text, HasSubstr("[sTS4 Mpeg Interfaces]\r\ninterfacenum=1\r\n"));
  EXPECT_THAT(text,
              HasSubstr("[Interface 1]\r\nencoderfilename=/usr/bin/lame\r\nencoderfriendlyname=Mein LAME\r\n"
                        "encoderfileextension=mp3\r\nparamsetnum=2\r\n"));
  EXPECT_THAT(
      text,
      HasSubstr("[Interface 1 ParamSet 1]\r\nparamstr=-b 128 {q} {z}\r\nbitrate=128\r\nvbr=1\r\nmono=0\r\n"
                "crc=1\r\ncopyright=0\r\noriginal=1\r\ndeemphasis=2\r\n"));
  EXPECT_THAT(LoadInterfaces(path), ElementsAre(Sample()));

  EncoderInterface other = Sample();
  other.name = "Kodér ř";
  other.encoder = "/opt/řeka/enc";
  ASSERT_THAT(SaveInterfaces(path, {other, Sample()}), IsOk());
  EXPECT_THAT(LoadInterfaces(path), ElementsAre(other, Sample()));
  ASSERT_THAT(SaveInterfaces(path, {}), IsOk());
  EXPECT_THAT(Listing(directory.Path()), IsEmpty());
  EXPECT_THAT(SaveInterfaces(path, {}), IsOk());
}

TEST(InterfaceFile, TakesWhateverStandsThere) {
  const TemporaryDirectory directory;
  const std::string path =
      directory.Write("ts5i.cdi",
                      "[sTS4 Mpeg Interfaces]\ninterfacenum=999999999\n"
                      "[Interface 1]\nencoderfilename=/" +
                          std::string(300, 'x') + "\nencoderfriendlyname=" + std::string(40, 'n') +
                          "\nencoderfileextension=" + std::string(20, 'e') +
                          "\nparamsetnum=-3\n[interface 2]\nparamsetnum=2\n"
                          "[Interface 2 ParamSet 1]\nvbr=7\nbitrate=-5\ndeemphasis=9\n");
  const EncoderInterfaces loaded = LoadInterfaces(path);
  ASSERT_EQ(loaded.size(), 4U);
  EXPECT_EQ(loaded[0], (EncoderInterface{"", std::string(32, 'n'), std::string(12, 'e'), {}}));
  EXPECT_FALSE(loaded[0].Available());
  ASSERT_EQ(loaded[1].sets.size(), 2U);
  EXPECT_TRUE(loaded[1].sets[0].vbr);
  EXPECT_EQ(loaded[1].sets[0].bitRate, 0U);
  EXPECT_EQ(BitRateIndex(loaded[1].sets[0].bitRate), 0U);
  EXPECT_EQ(loaded[1].sets[1].parameters, "");
  EXPECT_THAT(LoadInterfaces(directory.File("none")), IsEmpty());
}

TEST(InterfaceChecks, SayWhatIsWrong) {
  const TemporaryDirectory directory;
  const std::string program = directory.Write("enc", "#!/bin/sh\n");
  EXPECT_EQ(EncoderFault("  "), texts::InterfaceAskEncoder);
  EXPECT_EQ(EncoderFault(directory.File("none")), texts::InterfaceNoSuchFile);
  EXPECT_EQ(EncoderFault(directory.Path()), texts::InterfaceNoSuchFile);
  EXPECT_EQ(EncoderFault(program), texts::InterfaceNotRunnable);
  chmod(program.c_str(), 0755);
  EXPECT_EQ(EncoderFault(" " + program + " "), std::nullopt);
  EXPECT_EQ(InterfaceNameFault(std::string(32, 'n')), std::nullopt);
  EXPECT_EQ(InterfaceNameFault(std::string(33, 'n')), texts::InterfaceAskName);
  EXPECT_EQ(InterfaceNameFault(" \t"), texts::InterfaceAskName);
  EXPECT_EQ(ExtensionFault("mp3"), std::nullopt);
  for (const char* wrong : {"*.mp3", ".mp3", "a/b", "dreizehnlange"})
    EXPECT_EQ(ExtensionFault(wrong), texts::InterfaceAskExtension);
  EXPECT_EQ(ParametersFault("-x {z} {q}"), std::nullopt);
  for (const char* wrong : {"", " ", "{q} {z}", "{q}{z}", "-b {q}", "-b {z}", "q z"})
    EXPECT_EQ(ParametersFault(wrong), texts::InterfaceAskParameters) << wrong;
  EXPECT_THAT(
      DescribeSet(Sample(), 0),
      HasSubstr(
          "Parameter-Set 1 :\nBitrate:\t\t\t128\nVariable Bitrate:\t\tJa\nMono:\t\t\tNein\nCRC:\t\t\tJa\n"
          "Original:\t\t\tJa\nCopyright:\t\tNein\nDeemphasis:\t\tCCITT"));
}

// --- running

// Not one that ended and waits for its parent to look.
bool IsAlive(pid_t id) {
  if (kill(id, 0) != 0) return false;
  const std::string facts = Content("/proc/" + std::to_string(id) + "/stat");
  const std::size_t state = facts.rfind(") ");
  return state != std::string::npos && facts[state + 2] != 'Z';
}
bool Ends(pid_t id) {
  for (int i = 0; i < 1000 && IsAlive(id); ++i) std::this_thread::sleep_for(10ms);
  return !IsAlive(id);
}

class EncoderRunTest : public testing::Test {
 protected:
  EncoderRunTest() : source_(directory_.File("Quelle \"$(touch x)\" {z} ü.wav")) { WriteWave(source_); }

  static void WriteWave(const std::string& path) {
    auto wave = WaveFile::Create(path, PcmFormat(8000, 16, 1));
    EXPECT_THAT(wave->Write(Bytes(16000, 1)), IsOk());
    EXPECT_THAT(wave->Close(), IsOk());
  }

  // An encoder that is a shell script with the source as $1 and the target as $2.
  EncoderInterface Script(const std::string& body, const std::string& parameters = "{q} {z} end") {
    const std::string path = directory_.Write("encoder.sh", "#!/bin/sh\n" + body + "\n");
    chmod(path.c_str(), 0755);
    return {path, "Skript", "mp3", {{.parameters = parameters}}};
  }

  Outcome Run(const EncoderInterface& interface, const WorkWatch& watch = {}) {
    auto staged = StagedFile::Create(Target());
    EXPECT_THAT(staged, IsOk());
    const Outcome outcome = RunEncoder(interface, 0, {source_, 1}, *staged, watch);
    if (Succeeded(outcome) || outcome == Outcome::EncoderFailed) {
      EXPECT_THAT(staged->Commit(), IsOk());
    }
    return outcome;
  }
  std::string Target() { return directory_.File("Ziel.mp3"); }

  // Nothing of ours is left in the directory.
  void ExpectTidy() {
    for (const auto& entry : std::filesystem::directory_iterator(directory_.Path()))
      EXPECT_THAT(entry.path().filename().string(), testing::Not(testing::StartsWith(".")));
  }

  TemporaryDirectory directory_;
  std::string source_;
};

TEST_F(EncoderRunTest, NamesReachTheEncoderUnharmed) {
  EXPECT_THAT(
      Run(Script("echo \"$#\" > \"$2\"; cat \"$1\" >> \"$2\"; case \"$2\" in *.mp3) ;; *) exit 9;; esac")),
      IsOk());
  EXPECT_EQ(Content(Target()), "3\n" + Content(source_));
  EXPECT_FALSE(std::filesystem::exists("x"));
  ExpectTidy();
}

TEST_F(EncoderRunTest, OutcomesOfEncoders) {
  const struct {
    const char* body;
    Outcome outcome;
    std::string target;
  } cases[] = {
      {"exit 0", Outcome::TargetFailed, ""},
      {": > \"$2\"", Outcome::TargetFailed, ""},
      {"echo made > \"$2\"; exit 1", Outcome::EncoderFailed, "made\n"},
      {"echo made > \"$2\"; kill -9 $$", Outcome::EncoderFailed, "made\n"},
      {"exit 1", Outcome::TargetFailed, ""},
      {"mkdir \"$2\"", Outcome::TargetFailed, ""},
      {"head -c 3000000 /dev/zero; head -c 3000000 /dev/zero >&2; echo made > \"$2\"", Outcome::Success,
       "made\n"},
      {"cat; echo made > \"$2\"", Outcome::Success, "made\n"},  // waits for no input
  };
  for (const auto& row : cases) {
    SCOPED_TRACE(row.body);
    std::filesystem::remove(Target());
    EXPECT_EQ(Run(Script(row.body)), row.outcome);
    EXPECT_EQ(Content(Target()), row.target);
    ExpectTidy();
  }
}

TEST_F(EncoderRunTest, WhatCannotRunAtAll) {
  EXPECT_EQ(Run({directory_.File("none"), "", "mp3", {{.parameters = "{q} {z} x"}}}),
            Outcome::EncoderNotStarted);
  EXPECT_EQ(Run({directory_.Path(), "", "mp3", {{.parameters = "{q} {z} x"}}}), Outcome::EncoderNotStarted);
  EXPECT_EQ(Run(Script("exit 0", "no places")), Outcome::InvalidParameter);
  EXPECT_EQ(Run({"/bin/true", "", "mp3", {}}), Outcome::InvalidParameter);
  ExpectTidy();
}

// Whatever it started ends with it, also what does not listen.
TEST_F(EncoderRunTest, AStopLeavesNoProcess) {
  const std::string pids = directory_.File("pids");
  const EncoderInterface hanging = Script("echo half > \"$2\"; sh -c 'trap \"\" TERM; echo $$ >> \"" + pids +
                                          "\"; sleep 600' & echo $$ >> \"" + pids + "\"; wait; sleep 600");
  std::atomic<bool> stop = false;
  std::jthread stopper([&] {
    const auto lines = [&] {
      const std::string text = Content(pids);
      return std::count(text.begin(), text.end(), '\n');
    };
    while (lines() < 2) std::this_thread::sleep_for(10ms);
    std::this_thread::sleep_for(10ms);
    stop = true;
  });
  EXPECT_EQ(Run(hanging, {.cancelled = [&] { return stop.load(); }}), Outcome::Cancelled);
  EXPECT_FALSE(std::filesystem::exists(Target()));
  ExpectTidy();
  std::ifstream in(pids);
  for (pid_t id = 0; in >> id;) EXPECT_TRUE(Ends(id));
}

TEST_F(EncoderRunTest, AnEncoderThatForksAndDies) {
  const std::string pids = directory_.File("pids");
  EXPECT_THAT(Run(Script("sh -c 'echo $$ > \"" + pids + "\"; sleep 600' & while [ ! -s \"" + pids +
                         "\" ]; do sleep 0.01; done; echo made > \"$2\"")),
              IsOk());
  pid_t id = 0;
  std::ifstream(pids) >> id;
  ASSERT_GT(id, 0);
  EXPECT_TRUE(Ends(id));
}

// The lines of parameters that are offered make files of the kind that they promise.
TEST_F(EncoderRunTest, KnownEncodersWork) {
  auto wave = WaveFile::Create(source_, AudioCdFormat());
  EXPECT_THAT(wave->Write(Bytes(176400, 3)), IsOk());
  EXPECT_THAT(wave->Close(), IsOk());
  for (const EncoderInterface& known : FindEncoders()) {
    EXPECT_EQ(EncoderFault(known.encoder), std::nullopt);
    EXPECT_EQ(InterfaceNameFault(known.name), std::nullopt);
    EXPECT_EQ(ExtensionFault(known.extension), std::nullopt);
    for (std::size_t set = 0; set < known.sets.size(); ++set) {
      SCOPED_TRACE(known.sets[set].parameters);
      EXPECT_EQ(ParametersFault(known.sets[set].parameters), std::nullopt);
      auto staged = StagedFile::Create(directory_.File("out." + known.extension));
      EXPECT_THAT(RunEncoder(known, set, {source_, 1}, *staged), IsOk());
      EXPECT_GT(staged->Size(), 100U);
    }
  }
  EXPECT_THAT(FindEncoders("relative:/nonexistent:"), IsEmpty());
  ExpectTidy();
}

}  // namespace
}  // namespace ts5::interfaces
