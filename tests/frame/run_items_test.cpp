#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <map>
#include <random>
#include <set>

#include "frame/item_dependence.h"
#include "run_support.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::CopyModule;
using test::CopyParameters;
using test::ListJob;
using test::RecordingHost;
using test::RunJob;
using test::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;

std::vector<std::int32_t> Codes(const RunResult& result) {
  std::vector<std::int32_t> codes;
  for (const RunItem& item : result.items) codes.push_back(item.code);
  return codes;
}

TEST(RunItems, CountsAndNamesEachKindOfFailureOnce) {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
  const std::string tooLong = place.File(std::string(300, 'x') + ".mid");
  const Job job =
      ListJob({place.Write("a.mid", "ok"), place.Write("b.mid", "wrong format"), place.File("missing.mid"),
               place.Write("c.mid", "wrong format"), place.Write("d.mid", "read error"),
               place.Write("e.mid", "flags"), tooLong, place.File("\xff.mid"), place.Write("f.mid", "throw")},
              module);
  const RunResult result = RunJob(job, module);
  EXPECT_EQ(result.title, "Ergebnisse der Midi-Konvertierung");
  EXPECT_EQ(result.lines[0], (RunLine{"Erfolgreich konvertierte Dateien:", 2}));
  EXPECT_EQ(result.lines[1], (RunLine{"Nicht (ordnungsgemäß) konvertierte Dateien:", 7}));
  EXPECT_EQ(result.lines[2], RunLine{});
  EXPECT_THAT(Codes(result), ElementsAre(0, -104, -300, -104, -100, 0x840000, -300, -300, -2));
  EXPECT_EQ(RemarksText(result),
            "Die Quelle hat ein ungültiges Dateiformat.\r\n"
            "Es trat ein Fehler in der Quelldatei auf.\r\n"
            "Aus der Datei konnte nicht gelesen werden.\r\n"
            "Die Datei wurde erfolgreich ins RIFF-Format konvertiert.\r\n"
            "Die Konvertierung der Zeitbasis war erfolgreich.\r\n"
            "Ein Speicherfehler trat auf.");
  EXPECT_FALSE(result.cancelled);
  EXPECT_EQ(FailureCount(result), 7U);
  EXPECT_EQ(result.items[0].destination, place.File("a.out"));
  EXPECT_EQ(result.items[4].destination, "");
  // Failures leave nothing, not even a temporary file.
  EXPECT_EQ(test::Listing(place.Path()), "a.mid a.out b.mid c.mid d.mid e.mid e.out f.mid");
  EXPECT_EQ(test::Content(place.File("a.out")), "ok copied");
}

TEST(RunItems, NothingToSayIsKeine) {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
  EXPECT_EQ(RemarksText(RunJob(ListJob({place.Write("a.mid", "ok")}, module), module)), "keine");
  EXPECT_EQ(RunJob(ListJob({}, module), module).lines[1].count, 0U);
}

TEST(RunItems, RemarksStayBelowTheirLimit) {
  RunResult result;
  for (int i = 0; i < 300; ++i) result.remarks.push_back("Zeile " + std::to_string(i) + std::string(90, 'x'));
  const std::string text = RemarksText(result);
  EXPECT_LE(text.size(), kMaxRemarksBytes);
  EXPECT_GT(text.size(), kMaxRemarksBytes - 120);
  EXPECT_TRUE(text.ends_with("xxx"));
  result.remarks = {std::string(9999, 'a') + "ö"};
  EXPECT_EQ(RemarksText(result), std::string(9999, 'a'));
}

TEST(RunItems, UnusableTargetsAreCountedAndTheRunGoesOn) {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
  place.Write("b.out/inside", "");
  const Job job = ListJob({place.Write("b.mid", "ok"), place.Write("c.mid", "ok")}, module);
  EXPECT_THAT(Codes(RunJob(job, module)), ElementsAre(-200, 0));
  const RunResult elsewhere =
      RunJob(job, module, {.sourceDirectory = false, .directory = place.File("not there")});
  EXPECT_THAT(Codes(elsewhere), ElementsAre(-200, -200));
  EXPECT_EQ(RemarksText(elsewhere), "Die Zieldatei konnte nicht erstellt werden.");
}

// Whatever the settings, the source is there afterwards or was replaced because the user said so.
TEST(RunItems, SourceThatIsItsOwnTarget) {
  struct Case {
    bool kept;
    bool suffix;
    OverwritePolicy overwrite;
    std::string listing;
    std::string source;  // content afterwards
  };
  const Case cases[] = {
      {true, true, OverwritePolicy::Replace, "song.cnv.mid song.mid", "ok"},
      {true, false, OverwritePolicy::Replace, "song.mid", "ok copied"},
      {true, false, OverwritePolicy::Number, "song.mid song001.mid", "ok"},
      {false, true, OverwritePolicy::Replace, "song.mid song001.mid", "ok"},
      {false, false, OverwritePolicy::Replace, "song.mid song001.mid", "ok"},
      {false, true, OverwritePolicy::Number, "song.mid song001.mid", "ok"},
  };
  for (const Case& c : cases) {
    for (const unsigned workers : {1U, 2U}) {
      const TemporaryDirectory place;
      const TemporaryDirectory other;
      const FilterModule module = CopyModule(FilterId::MidiConverter, workers);
      Job job = ListJob({place.Write("song.mid", "ok"), other.Write("x.mid", "ok")}, module);
      job.parameters = LoadParameters(&module, [&] {
        RegistryValues values;
        values.SetText("Extension", "mid");
        values.SetText("Kept", c.kept ? "1" : "0");
        return values;
      }());
      const RunResult result = RunJob(job, module, {.useSuffix = c.suffix, .overwrite = c.overwrite});
      EXPECT_EQ(result.lines[0].count, 2U);
      EXPECT_EQ(test::Listing(place.Path()), c.listing);
      EXPECT_EQ(test::Content(place.File("song.mid")), c.source);
    }
  }
}

TEST(RunItems, LinkedSourceIsNeverLost) {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
  place.Write("song.mid", "ok");
  std::filesystem::create_symlink(place.File("song.mid"), place.File("song.out"));
  std::filesystem::create_directory_symlink(place.Path(), place.File("alias"));
  (void)RunJob(ListJob({place.File("song.mid")}, module), module);
  EXPECT_EQ(test::Content(place.File("song.mid")), "ok");
  EXPECT_EQ(test::Content(place.File("song001.out")), "ok copied");

  // A conversion in place that fails leaves the source, also through another spelling of its path.
  place.Write("bad.mid", "read error");
  Job job = ListJob({place.File("alias/bad.mid")}, module);
  job.destinationName = place.File("bad.mid");
  EXPECT_THAT(Codes(RunJob(job, module)), ElementsAre(-100));
  EXPECT_EQ(test::Content(place.File("bad.mid")), "read error");
}

TEST(RunItems, ChosenNameIsAskedAboutWhenItExists) {
  for (const auto& [answer, content, code] :
       {std::tuple(Answer::Yes, "ok copied", 0), std::tuple(Answer::No, "old", -5)}) {
    const TemporaryDirectory place;
    const FilterModule module = CopyModule();
    Job job = ListJob({place.Write("a.mid", "ok")}, module);
    job.destinationName = place.Write("chosen.out", "old");
    const auto host = std::make_shared<RecordingHost>(std::deque{answer});
    const RunResult result = RunJob(job, module, {.overwrite = OverwritePolicy::Number}, host);
    EXPECT_THAT(host->questions,
                ElementsAre("Die Zieldatei ist bereits vorhanden. Soll sie überschrieben werden?"));
    EXPECT_EQ(test::Content(place.File("chosen.out")), content);
    EXPECT_THAT(Codes(result), ElementsAre(code));
    EXPECT_EQ(result.cancelled, code == -5);
    EXPECT_EQ(FailureCount(result), 0U);
    EXPECT_EQ(test::Listing(place.Path()), "a.mid chosen.out");
  }
}

// --- one after the other and in parallel

struct Outcomes {
  RunResult result;
  std::vector<std::string> questions;
  std::map<std::string, std::string> files;
};

std::map<std::string, std::string> AllFiles(const std::string& directory) {
  std::map<std::string, std::string> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
    if (!entry.is_directory()) {
      files[std::filesystem::relative(entry.path(), directory)] = test::Content(entry.path());
    }
  }
  return files;
}

TEST(RunItems, ParallelGivesWhatOneAfterTheOtherGives) {
  std::mt19937 random(20261124);
  const auto pick = [&](int count) { return static_cast<int>(random() % static_cast<unsigned>(count)); };
  const char* const contents[] = {"ok", "ok", "slow", "slow", "wrong format", "read error", "flags", "throw"};
  const auto here = std::this_thread::get_id();
  std::atomic<int> elsewhere = 0;  // conversions on other threads
  for (int round = 0; round < 40; ++round) {
    // Few names in three directories: targets collide with each other, with old files and with sources.
    const TemporaryDirectory place;
    const std::string root = place.File("root");
    std::map<std::string, std::string> files;
    std::vector<std::string> sources;
    const int count = 2 + pick(14);
    for (int i = 0; i < count; ++i) {
      const std::string name =
          std::string("d") + std::to_string(pick(3)) + "/song" +
          std::vector<std::string>{"", "1", "001", "002"}[static_cast<std::size_t>(pick(4))] +
          (pick(6) == 0 ? ".out" : ".mid");
      sources.push_back(root + "/" + name);
      if (pick(8) != 0) files[name] = std::string(contents[pick(8)]) + " " + std::to_string(i);
    }
    for (int i = 0; i < 4; ++i) files["d" + std::to_string(pick(3)) + "/song.out"] = "ok old";
    const DestinationRules rules{.sourceDirectory = pick(2) == 0,
                                 .directory = root + "/d0",
                                 .useSuffix = pick(2) == 0,
                                 .overwrite = static_cast<OverwritePolicy>(pick(3))};
    std::deque<Answer> script;
    for (int i = 0; i < 20; ++i) script.push_back(pick(5) == 0 ? Answer::No : Answer::Yes);
    const bool kept = pick(3) == 0;

    const auto run = [&](unsigned workers) {
      std::filesystem::remove_all(root);
      for (int d = 0; d < 3; ++d) std::filesystem::create_directories(root + "/d" + std::to_string(d));
      for (const auto& [name, content] : files) place.Write("root/" + name, content);
      FilterModule module = CopyModule();
      module.run = [&, workers](ts5::Run& run) {
        const auto convert = [&](ItemWork& work) {
          if (std::this_thread::get_id() != here) ++elsewhere;
          return test::Copy(work);
        };
        RunItems(run,
                 {.independent = true, .check = test::CheckCopy, .convert = convert, .workers = workers});
      };
      Job job = ListJob(sources, module);
      RegistryValues values;
      values.SetText("Kept", kept ? "1" : "0");
      job.parameters = LoadParameters(&module, values);
      const auto host = std::make_shared<RecordingHost>(script);
      Outcomes outcomes;
      outcomes.result = RunJob(job, module, rules, host);
      outcomes.questions = host->questions;
      outcomes.files = AllFiles(root);
      return outcomes;
    };
    const Outcomes sequential = run(1);
    const Outcomes parallel = run(4);
    ASSERT_EQ(parallel.result, sequential.result) << round;
    ASSERT_EQ(parallel.questions, sequential.questions) << round;
    ASSERT_EQ(parallel.files, sequential.files) << round;
    // No temporary file is left: whatever is new is a target of the result.
    std::set<std::string> targets;
    for (const RunItem& item : sequential.result.items) targets.insert(item.destination);
    for (const auto& [name, content] : sequential.files) {
      ASSERT_TRUE(files.contains(name) || targets.contains(root + "/" + name)) << name;
    }
  }
  EXPECT_GT(elsewhere, 50);
}

TEST(RunItems, IndependentItemsReallyOverlap) {
  const TemporaryDirectory place;
  FilterModule module = CopyModule(FilterId::MidiConverter, 4);
  std::atomic<int> inside = 0;
  module.run = [&inside](ts5::Run& run) {
    RunItems(run, {.independent = true,
                   .convert =
                       [&inside](ItemWork&) {
                         ++inside;
                         // Nobody leaves before all four are in.
                         const auto end = std::chrono::steady_clock::now() + 5s;
                         while (inside < 4) {
                           if (std::chrono::steady_clock::now() > end) return Outcome::ReadFailed;
                           std::this_thread::yield();
                         }
                         return Outcome::Success;
                       },
                   .workers = 4});
  };
  std::vector<std::string> sources;
  for (char c = 'a'; c <= 'd'; ++c) sources.push_back(place.Write(std::string(1, c) + ".mid", "ok"));
  EXPECT_EQ(RunJob(ListJob(sources, module), module).lines[0].count, 4U);
}

TEST(ItemDependence, TargetsThatMayBeSources) {
  const TemporaryDirectory place;
  place.Write("d/a.mid", "");
  place.Write("d/b.out", "");
  std::filesystem::create_directory_symlink(place.File("d"), place.File("link"));
  std::filesystem::create_symlink(place.File("d/b.out"), place.File("d/other.mid"));
  const auto item = [&](const std::string& source, const std::string& head) {
    return PlannedItem{place.File(source), {.head = place.File(head), .tail = ".out"}};
  };
  EXPECT_FALSE(SourceCouldBeTarget({item("d/a.mid", "d/a"), item("d/b.out", "d/b.cnv")}));
  EXPECT_FALSE(SourceCouldBeTarget({item("d/a.mid", "d/a"), item("d/b.out", "d/b")})) << "its own source";
  EXPECT_TRUE(SourceCouldBeTarget({item("d/b.out", "d/b"), item("d/b.out", "d/b")}))
      << "a source listed twice";
  EXPECT_TRUE(SourceCouldBeTarget({item("d/a.mid", "d/b"), item("d/b.out", "d/x")}));
  EXPECT_TRUE(SourceCouldBeTarget({item("d/a.mid", "link/b"), item("d/b.out", "d/x")})) << "through a link";
  EXPECT_TRUE(SourceCouldBeTarget({item("d/a.mid", "d/b"), item("d/other.mid", "d/x")}))
      << "a source that is a link";
  EXPECT_TRUE(SourceCouldBeTarget({item("d/a.mid", "d/B"), item("d/b.out", "d/x")})) << "other case";
  EXPECT_TRUE(SourceCouldBeTarget({item("d/a.mid", "d/song"), item("d/song012.out", "d/x")}))
      << "missing, numbered";
  EXPECT_FALSE(SourceCouldBeTarget({item("d/a.mid", "d/song"), item("d/song12.out", "d/x")}));
}

// --- stops and questions

TEST(RunItems, StopEndsTheRunAndLeavesNothingHalf) {
  for (const unsigned workers : {1U, 3U}) {
    const TemporaryDirectory place;
    const FilterModule module = CopyModule(FilterId::MidiConverter, workers);
    const Job job =
        ListJob({place.Write("a.mid", "ok"), place.Write("b.mid", "slow"), place.Write("c.mid", "block"),
                 place.Write("d.mid", "ok"), place.Write("e.mid", "ok")},
                module);
    const auto host = std::make_shared<RecordingHost>();
    std::chrono::steady_clock::time_point stopped;
    std::thread stopper([&] {
      while (job.run->currentItem < 2) std::this_thread::sleep_for(1ms);
      stopped = std::chrono::steady_clock::now();
      job.run->cancelRequest = kUserStop;
    });
    const RunResult result = RunJob(job, module, {}, host);
    const auto took = std::chrono::steady_clock::now() - stopped;
    stopper.join();
    EXPECT_LT(took, 200ms);
    EXPECT_THAT(Codes(result), ElementsAre(0, 0, -5));
    EXPECT_EQ(result.lines[0].count, 2U);
    EXPECT_EQ(result.lines[1].count, 3U);
    EXPECT_THAT(result.remarks, ElementsAre("Der Vorgang wurde durch den Anwender abgebrochen."));
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(FailureCount(result), 0U);
    EXPECT_EQ(test::Listing(place.Path()), "a.mid a.out b.mid b.out c.mid d.mid e.mid");
    EXPECT_THAT(host->states, ElementsAre(RunState::Idle));
  }
}

TEST(RunItems, StopEndsAnOpenQuestion) {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
  const Job job = ListJob({place.Write("a.mid", "ok")}, module);
  place.Write("a.out", "old");
  const auto host = std::make_shared<RecordingHost>();
  bool closed = false;
  std::thread stopper([&] {
    ASSERT_TRUE(host->WaitForQuestion());
    host->open.at(0)->OnWithdrawn([&closed] { closed = true; });
    job.run->cancelRequest = kUserStop;
  });
  const RunResult result = RunJob(job, module, {.overwrite = OverwritePolicy::Ask}, host);
  stopper.join();
  EXPECT_TRUE(result.cancelled);
  EXPECT_TRUE(closed);
  EXPECT_TRUE(host->open.at(0)->Withdrawn());
  host->open.at(0)->Reply(Answer::Yes);  // too late
  EXPECT_EQ(test::Content(place.File("a.out")), "old");
}

TEST(RunItems, RefusalAbandonsWhatIsAlreadyAtWork) {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule(FilterId::MidiConverter, 3);
  const Job job = ListJob(
      {place.Write("a.mid", "ok"), place.Write("b.mid", "block"), place.Write("c.mid", "ok")}, module);
  place.Write("a.out", "old");
  const auto host = std::make_shared<RecordingHost>(std::deque{Answer::No});
  const RunResult result = RunJob(job, module, {.overwrite = OverwritePolicy::Ask}, host);
  EXPECT_THAT(Codes(result), ElementsAre(-5));
  EXPECT_EQ(test::Listing(place.Path()), "a.mid a.out b.mid c.mid");
}

TEST(RunItems, QuestionWhoseWindowGoesAwayIsCancelled) {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
  const Job job = ListJob({place.Write("a.mid", "ok")}, module);
  place.Write("a.out", "old");
  const auto host = std::make_shared<RecordingHost>();
  host->dropQuestions = true;
  EXPECT_TRUE(RunJob(job, module, {.overwrite = OverwritePolicy::Ask}, host).cancelled);
  EXPECT_EQ(test::Content(place.File("a.out")), "old");
}

TEST(Run, AskingBeforeAStopIsObeyed) {
  const FilterModule module = CopyModule();
  const Job job = ListJob({}, module);
  const auto host = std::make_shared<RecordingHost>(std::deque{Answer::No, Answer::Yes});
  ts5::Run run({.job = job}, module, job.run.Shared(), host);
  EXPECT_FALSE(run.ConfirmStop("Abbrechen?"));
  EXPECT_THAT(host->questions, IsEmpty()) << "nobody asked to stop";
  job.run->cancelRequest = kUserStop;
  EXPECT_FALSE(run.ConfirmStop("Abbrechen?"));
  EXPECT_FALSE(run.Cancelled());
  job.run->cancelRequest = kUserStop;
  EXPECT_TRUE(run.ConfirmStop("Abbrechen?"));
  EXPECT_TRUE(run.Cancelled());
  job.run->closing = true;  // the end of the program asks nothing
  EXPECT_TRUE(run.ConfirmStop("Abbrechen?"));
  EXPECT_EQ(host->questions.size(), 2U);
}

TEST(Run, ProgressIsOrderedThinnedOutAndComplete) {
  const FilterModule module = CopyModule();
  const Job job = ListJob({}, module);
  const auto host = std::make_shared<RecordingHost>();
  ts5::Run run({.job = job}, module, job.run.Shared(), host);
  const auto end = std::chrono::steady_clock::now() + 300ms;
  std::uint32_t item = 0;
  while (std::chrono::steady_clock::now() < end) run.Progress(++item, 1000000000);
  run.Progress(item, item, 1);
  run.Finish();
  ASSERT_GE(host->progress.size(), 3U);
  EXPECT_LE(host->progress.size(), 8U);
  EXPECT_EQ(host->progress.front().item, 1U);
  EXPECT_EQ(host->progress.back(), (RunProgress{item, item, 1}));
  EXPECT_TRUE(std::ranges::is_sorted(host->progress, {}, &RunProgress::item));
  EXPECT_EQ(host->results.size(), 1U);
}

}  // namespace
}  // namespace ts5
