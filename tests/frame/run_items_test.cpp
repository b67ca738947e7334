#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>
#include <set>

#include "frame/failure_reason.h"
#include "frame/ordered_pool.h"
#include "frame/remarks.h"
#include "frame/texts.h"
#include "run_support.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::CodesOf;
using test::CopyModule;
using test::CopyParameters;
using test::ListJob;
using test::RecordingHost;
using test::RunJob;
using test::TemporaryDirectory;
using testing::ElementsAre;
using testing::IsEmpty;

struct RunItemsTest : testing::Test {
  const TemporaryDirectory place;
  const FilterModule module = CopyModule();
};

TEST_F(RunItemsTest, CountsAndNamesEachKindOfFailureOnce) {
  const std::string tooLong = place.File(std::string(300, 'x') + ".mid");
  const Job job =
      ListJob({place.Write("a.mid", "ok"), place.Write("b.mid", "wrong format"), place.File("missing.mid"),
               place.Write("c.mid", "wrong format"), place.Write("d.mid", "read error"),
               place.Write("e.mid", "flags"), tooLong, place.File("\xff.mid"), place.Write("f.mid", "throw")},
              module);
  const RunResult result = RunJob(job, module);
  EXPECT_EQ(TitleText(result), "Ergebnisse der Midi-Konvertierung");
  EXPECT_EQ(Lines(result)[0], (RunLine{"Erfolgreich konvertierte Dateien:", 2}));
  EXPECT_EQ(Lines(result)[1], (RunLine{"Nicht (ordnungsgemäß) konvertierte Dateien:", 7}));
  EXPECT_EQ(Lines(result)[2], RunLine{});
  EXPECT_THAT(CodesOf(result), ElementsAre(0, -104, -300, -104, -100, 0x840000, -300, -300, -2));
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
  EXPECT_EQ(result.items[0].remark, "");
  EXPECT_EQ(result.items[1].remark, "Die Quelle hat ein ungültiges Dateiformat.");
  EXPECT_THAT(result.items[5].remark, testing::HasSubstr("Zeitbasis"));
  // Failures leave nothing, not even a temporary file.
  EXPECT_EQ(test::Listing(place.Path()), "a.mid a.out b.mid c.mid d.mid e.mid e.out f.mid");
  EXPECT_EQ(test::Content(place.File("a.out")), "ok copied");
}

TEST_F(RunItemsTest, NothingToSayIsKeine) {
  EXPECT_EQ(RemarksText(RunJob(ListJob({place.Write("a.mid", "ok")}, module), module)), "keine");
  EXPECT_EQ(RunJob(ListJob({}, module), module).counts[1], 0U);
}

TEST(Remarks, NameTheNumberWhereTheyHaveAPlaceForIt) {
  constexpr Remark kTable[] = {{-100, texts::FilesRejected}, {-101, texts::RemarkWriteFailed}};
  const auto line = [&](const RunStatus& status) { return RemarkLines(kTable, status).at(0); };
  EXPECT_EQ(line({.code = -100}).substr(0, 5), "-100 ");
  EXPECT_EQ(line({.code = -100, .number = 7}).substr(0, 2), "7 ");
  EXPECT_EQ(line({.code = -101, .number = 7}), Text(texts::RemarkWriteFailed));
}

TEST_F(RunItemsTest, RemarksStayBelowTheirLimit) {
  RunResult result;
  for (int i = 0; i < 300; ++i) result.remarks.push_back("Zeile " + std::to_string(i) + std::string(90, 'x'));
  const std::string text = RemarksText(result);
  EXPECT_LE(text.size(), kMaxRemarksBytes);
  EXPECT_GT(text.size(), kMaxRemarksBytes - 120);
  EXPECT_TRUE(text.ends_with("xxx"));
  result.remarks = {std::string(9999, 'a') + "ö"};
  EXPECT_EQ(RemarksText(result), std::string(9999, 'a'));
}

TEST_F(RunItemsTest, UnusableTargetsAreCountedAndTheRunGoesOn) {
  place.Write("b.out/inside", "");
  const Job job = ListJob({place.Write("b.mid", "ok"), place.Write("c.mid", "ok")}, module);
  EXPECT_THAT(CodesOf(RunJob(job, module)), ElementsAre(-200, 0));
  const RunResult elsewhere =
      RunJob(job, module, {.sourceDirectory = false, .directory = place.File("not there")});
  EXPECT_THAT(CodesOf(elsewhere), ElementsAre(-200, -200));
  EXPECT_EQ(RemarksText(elsewhere), "Die Zieldatei konnte nicht erstellt werden.");
}

// Whatever the settings, the source is there afterwards or was replaced because the user said so.
TEST_F(RunItemsTest, SourceThatIsItsOwnTarget) {
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
      As<CopyParameters>(*job.parameters).extension = "mid";
      test::KeepFormat(job, c.kept);
      const RunResult result = RunJob(job, module, {.useSuffix = c.suffix, .overwrite = c.overwrite});
      EXPECT_EQ(result.counts[0], 2U);
      EXPECT_EQ(test::Listing(place.Path()), c.listing);
      EXPECT_EQ(test::Content(place.File("song.mid")), c.source);
    }
  }
}

TEST_F(RunItemsTest, LinkedSourceIsNeverLost) {
  place.Write("song.mid", "ok");
  std::filesystem::create_symlink(place.File("song.mid"), place.File("song.out"));
  std::filesystem::create_directory_symlink(place.Path(), place.File("alias"));
  (void)RunJob(ListJob({place.File("song.mid")}, module), module);
  EXPECT_EQ(test::Content(place.File("song.mid")), "ok");
  EXPECT_EQ(test::Content(place.File("song001.out")), "ok copied");

  // A chosen name that is the source by another spelling of its path is refused.
  Job job = ListJob({place.File("alias/song.mid")}, module);
  job.destinationName = place.File("song.mid");
  EXPECT_THAT(CodesOf(RunJob(job, module)), ElementsAre(-200));
  EXPECT_EQ(test::Content(place.File("song.mid")), "ok");
}

TEST_F(RunItemsTest, ChosenNameIsAskedAboutWhenItExists) {
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
    EXPECT_THAT(CodesOf(result), ElementsAre(code));
    EXPECT_EQ(result.cancelled, code == -5);
    EXPECT_EQ(FailureCount(result), 0U);
    EXPECT_EQ(test::Listing(place.Path()), "a.mid chosen.out");
  }
}

// --- edges

// The module's own steps in place of those of the copying filter.
FilterModule Module(const ItemFilter& filter, unsigned workers) {
  FilterModule module = CopyModule();
  module.run = [filter, workers](ts5::Run& run) {
    ItemFilter own = filter;
    own.independent = workers > 1;
    own.workers = workers;
    RunItems(run, own);
  };
  return module;
}

TEST_F(RunItemsTest, AnExceptionSpoilsItsOwnItemOnly) {
  const auto throws = [](const std::string& source, std::string_view name) {
    if (source.ends_with(name)) throw std::bad_alloc();
  };
  const auto check = [&](const std::string& source) {
    throws(source, "c.mid");
    return test::CheckCopy(source);
  };
  const auto convert = [](ItemWork& work) {
    if (work.source.ends_with("d.mid")) throw std::runtime_error("library");
    return test::Copy(work);
  };
  for (const unsigned workers : {1U, 3U}) {
    const TemporaryDirectory place;
    FilterModule module = Module({.check = check, .convert = convert}, workers);
    module.target = [&](const FilterParameters&, const std::string& source) {
      throws(source, "b.mid");
      return TargetRule{"out", false};
    };
    std::vector<std::string> sources;
    for (const char* const name : {"a.mid", "b.mid", "c.mid", "d.mid", "e.mid"})
      sources.push_back(place.Write(name, "ok"));
    EXPECT_THAT(CodesOf(RunJob(ListJob(sources, module), module)), ElementsAre(0, -2, -2, -1, 0)) << workers;
    EXPECT_EQ(test::Listing(place.Path()), "a.mid a.out b.mid c.mid d.mid e.mid e.out");
  }
}

TEST_F(RunItemsTest, SuccessIsAFileOrSaysThatNothingChanged) {
  const auto convert = [](ItemWork& work) {
    if (work.source.ends_with("path.mid")) std::ofstream(work.target.TemporaryPath()) << "by path";
    work.unchanged = work.source.ends_with("same.mid");
    return Outcome::Success;
  };
  const FilterModule module = Module({.convert = convert}, 1);
  const RunResult result = RunJob(
      ListJob({place.Write("path.mid", ""), place.Write("same.mid", ""), place.Write("nothing.mid", "")},
              module),
      module);
  EXPECT_THAT(CodesOf(result), ElementsAre(0, 0, -200));
  EXPECT_EQ(test::Content(place.File("path.out")), "by path");
  EXPECT_EQ(result.items[1].destination, "");
  EXPECT_EQ(test::Listing(place.Path()), "nothing.mid path.mid path.out same.mid");
}

TEST_F(RunItemsTest, AFailureMayKeepItsTarget) {
  const auto convert = [](ItemWork& work) {
    work.keepTarget = work.source.ends_with("kept.mid");
    (void)work.target.Write(AsBytes(std::string("half")));
    return Outcome::AttributesNotWritten;
  };
  const FilterModule module = Module({.convert = convert}, 1);
  const RunResult result =
      RunJob(ListJob({place.Write("kept.mid", ""), place.Write("lost.mid", "")}, module), module);
  EXPECT_THAT(CodesOf(result), ElementsAre(-102, -102));
  EXPECT_EQ(result.items[0].destination, place.File("kept.out"));
  EXPECT_EQ(test::Listing(place.Path()), "kept.mid kept.out lost.mid");
}

TEST_F(RunItemsTest, WhatTheCheckReadIsConverted) {
  struct Text : PreparedItem {
    std::string text;
  };
  const FilterModule module = Module(
      {.prepare = [](const std::string& source) -> Result<std::unique_ptr<PreparedItem>> {
         auto text = test::ReadText(source);
         if (!text) return Failure(text.error());
         auto item = std::make_unique<Text>();
         item->text = *std::move(text);
         std::filesystem::remove(source);
         return item;
       },
       .convert = [](ItemWork& work) { return work.target.Write(AsBytes(work.Prepared<Text>().text)); }},
      2);
  const Job job =
      ListJob({place.Write("a.mid", "first"), place.Write("b.mid", "second"), place.File("c.mid")}, module);
  EXPECT_THAT(CodesOf(RunJob(job, module)), ElementsAre(0, 0, -300));
  EXPECT_EQ(test::Content(place.File("a.out")) + test::Content(place.File("b.out")), "firstsecond");
}

TEST(OrderedPool, WhateverThrowsEndsItAndComesOut) {
  struct Number {
    int value;
  };
  for (const char* const place : {"next", "work", "begin", "take", ""}) {
    const auto at = [place](std::string_view step, int value) {
      if (value == 40 && step == place) throw std::length_error(place);
      return true;
    };
    int number = 0;
    std::vector<int> taken;
    const auto next = [&]() -> std::unique_ptr<Number> {
      at("next", number);
      return number == 100 ? nullptr : std::make_unique<Number>(Number{number++});
    };
    const auto work = [&](const Number& n) {
      at("work", n.value);
      if (n.value % 7 == 0) std::this_thread::sleep_for(1ms);
    };
    const auto begin = [&](const Number& n) { return at("begin", n.value); };
    const auto take = [&](const Number& n, bool done) {
      if (done && at("take", n.value)) taken.push_back(n.value);
      return true;
    };
    std::atomic<bool> stop = false;
    OrderedPool<Number> pool({.next = next, .work = work, .begin = begin, .take = take}, 8, stop);
    if (*place == '\0') {
      EXPECT_TRUE(pool.Run(3));
    } else {
      EXPECT_THROW((void)pool.Run(3), std::length_error) << place;
    }
    EXPECT_TRUE(stop);
    ASSERT_EQ(taken.size(), *place == '\0' ? 100U : 40U) << place;
    for (std::size_t i = 0; i < taken.size(); ++i) ASSERT_EQ(taken[i], static_cast<int>(i));
  }
}

// --- reasons

TEST_F(RunItemsTest, FailuresSayWhatTheSystemSaid) {
  for (const unsigned workers : {1U, 3U}) {
    const TemporaryDirectory place;
    const FilterModule module = CopyModule(FilterId::MidiConverter, workers);
    const auto reason = [&](const std::string& source, const DestinationRules& rules = {}) {
      const std::string other = place.Write("z/other.mid", "ok");
      const RunResult result = RunJob(ListJob({source, other}, module), module, rules);
      return result.items.at(0).reason;
    };
    const auto path = [&](const std::string& name) { return "\"" + place.File(name) + "\""; };
    std::filesystem::create_symlink(place.File("gone"), place.File("link.mid"));
    std::filesystem::create_directory(place.File("dir.mid"));
    std::filesystem::create_directory(place.File("song.out"));
    const std::string song = place.Write("song.mid", "ok");
    const std::string kept = place.Write("kept.mid", "ok");
    place.Write("kept.out", "old");
    std::filesystem::permissions(place.File("kept.out"), std::filesystem::perms::owner_read);
    EXPECT_EQ(reason(place.File("none.mid")), "Die Datei " + path("none.mid") + " gibt es nicht.");
    EXPECT_EQ(reason(place.File("link.mid")), "Der Verweis " + path("link.mid") + " führt ins Leere.");
    EXPECT_EQ(reason(place.File("dir.mid")), path("dir.mid") + " ist ein Verzeichnis.");
    EXPECT_EQ(reason(song), path("song.out") + " ist ein Verzeichnis.");
    EXPECT_EQ(reason(kept), "Die Datei " + path("kept.out") + " ist schreibgeschützt.");
    EXPECT_EQ(reason(song, {.sourceDirectory = false, .directory = place.File("nowhere")}),
              "Das Verzeichnis " + path("nowhere") + " gibt es nicht.");
    EXPECT_EQ(reason(place.File(std::string(300, 'x'))),
              "Der Name " + path(std::string(300, 'x')) + " ist zu lang.");
    EXPECT_EQ(reason(place.Write("bad.mid", "wrong format")),
              "Dem Inhalt nach ist " + path("bad.mid") + " ein Text.");
    EXPECT_EQ(reason(place.Write("read.mid", "read error")),
              "Dem Inhalt nach ist " + path("read.mid") + " ein Text.");
  }
}

TEST(FailureReason, TellsContentsApart) {
  const TemporaryDirectory place;
  const auto reason = [&](const std::string& name, std::string_view content,
                          Outcome code = Outcome::WrongFormat) {
    std::string text = FailureReason(code, place.Write(name, content), {}, {});
    const std::size_t at = text.find(place.Path());
    return at == std::string::npos ? text : text.replace(at, place.Path().size() + 1, "");
  };
  using namespace std::string_view_literals;
  EXPECT_EQ(reason("a.mid", ""), "Die Datei \"a.mid\" ist leer.");
  EXPECT_EQ(reason("a.mid", "\x01\x9A\x00\xFF noise"sv),
            "Der Inhalt von \"a.mid\" gehört zu keiner bekannten Art von Dateien.");
  EXPECT_EQ(reason("a.mid", "RIFF....WAVEfmt "), "Dem Inhalt nach ist \"a.mid\" eine Wave-Datei.");
  EXPECT_EQ(reason("a.stv", "MThd"), "Dem Inhalt nach ist \"a.stv\" eine Midi-Datei.");
  EXPECT_EQ(reason("a.mid", "stv3-v"), "Dem Inhalt nach ist \"a.mid\" eine Stavora-Datei.");
  EXPECT_EQ(reason("a.stv", "\x8A\xE2\xB3\x74"),
            "Dem Inhalt nach ist \"a.stv\" eine Stavora-Datei eines älteren Formats.");
  // What the name says already is no news.
  EXPECT_EQ(reason("a.stv", "stv3-v"), "");
  EXPECT_EQ(reason("a.MusicXML", "<?xml version='1.0'?>"), "");
  EXPECT_EQ(reason("a.mxl", "PK\x03\x04"), "");
  EXPECT_EQ(reason("a.MID", "MThd"), "") << "as its name says";
  EXPECT_EQ(reason("a.mid", "", Outcome::Cancelled), "");
  EXPECT_EQ(reason("a.mid", "", Outcome::Success), "");
  // What is noted of another file is no reason.
  EXPECT_EQ(FailureReason(Outcome::TargetFailed, place.File("a.mid"), place.File("a.out"),
                          FileFault{EACCES, "/elsewhere/x", true}),
            "");
  EXPECT_EQ(FailureReason(Outcome::TargetFailed, place.File("a.mid"), place.File("a.out"),
                          FileFault{EACCES, place.Path(), true}),
            "Das Verzeichnis \"" + place.Path() + "\" ist schreibgeschützt.");
  EXPECT_EQ(FailureReason(Outcome::WriteFailed, place.File("a.mid"), place.File("a.out"),
                          FileFault{ENOSPC, place.File("a.out"), true}),
            "Auf dem Datenträger von \"" + place.File("a.out") + "\" ist kein Platz mehr.");
}

// --- one after the other and in parallel

struct Outcomes {
  RunResult result;
  std::vector<std::string> questions;
  std::map<std::string, std::string> files;
};

TEST_F(RunItemsTest, ParallelGivesWhatOneAfterTheOtherGives) {
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
      const auto convert = [&](ItemWork& work) {
        if (std::this_thread::get_id() != here) ++elsewhere;
        return test::Copy(work);
      };
      const FilterModule module = Module({.check = test::CheckCopy, .convert = convert}, workers);
      Job job = ListJob(sources, module);
      test::KeepFormat(job, kept);
      const auto host = std::make_shared<RecordingHost>(script);
      const RunResult result = RunJob(job, module, rules, host);
      return Outcomes{result, host->questions, test::Contents(root)};
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

TEST_F(RunItemsTest, IndependentItemsReallyOverlap) {
  std::atomic<int> inside = 0;
  const auto convert = [&inside](ItemWork& work) {
    work.unchanged = true;
    ++inside;
    // Nobody leaves before all four are in.
    const auto end = std::chrono::steady_clock::now() + 5s;
    while (inside < 4) {
      if (std::chrono::steady_clock::now() > end) return Outcome::ReadFailed;
      std::this_thread::yield();
    }
    return Outcome::Success;
  };
  const FilterModule module = Module({.convert = convert}, 4);
  std::vector<std::string> sources;
  for (char c = 'a'; c <= 'd'; ++c) sources.push_back(place.Write(std::string(1, c) + ".mid", "ok"));
  EXPECT_EQ(RunJob(ListJob(sources, module), module).counts[0], 4U);
}

// --- stops and questions

TEST_F(RunItemsTest, StopEndsTheRunAndLeavesNothingHalf) {
  for (const unsigned workers : {1U, 3U}) {
    const TemporaryDirectory place;
    const FilterModule module = CopyModule(FilterId::MidiConverter, workers);
    const Job job =
        ListJob({place.Write("a.mid", "ok"), place.Write("b.mid", "slow"), place.Write("c.mid", "block"),
                 place.Write("d.mid", "ok"), place.Write("e.mid", "ok")},
                module);
    const auto host = std::make_shared<RecordingHost>();
    std::thread stopper([&] {
      while (job.run->currentItem < 2) std::this_thread::sleep_for(1ms);
      job.run->cancelRequest = kUserStop;
    });
    const RunResult result = RunJob(job, module, {}, host);
    stopper.join();
    EXPECT_THAT(CodesOf(result), ElementsAre(0, 0, -5));
    EXPECT_EQ(result.counts[0], 2U);
    EXPECT_EQ(result.counts[1], 3U);
    EXPECT_THAT(result.remarks, ElementsAre("Der Vorgang wurde durch den Anwender abgebrochen."));
    EXPECT_TRUE(result.cancelled);
    EXPECT_EQ(FailureCount(result), 0U);
    EXPECT_EQ(test::Listing(place.Path()), "a.mid a.out b.mid b.out c.mid d.mid e.mid");
    EXPECT_THAT(host->states, ElementsAre(RunState::Idle));
  }
}

TEST_F(RunItemsTest, StopEndsAnOpenQuestion) {
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

TEST_F(RunItemsTest, RefusalAbandonsWhatIsAlreadyAtWork) {
  const FilterModule module = CopyModule(FilterId::MidiConverter, 3);
  const Job job = ListJob(
      {place.Write("a.mid", "ok"), place.Write("b.mid", "block"), place.Write("c.mid", "ok")}, module);
  place.Write("a.out", "old");
  const auto host = std::make_shared<RecordingHost>(std::deque{Answer::No});
  const RunResult result = RunJob(job, module, {.overwrite = OverwritePolicy::Ask}, host);
  EXPECT_THAT(CodesOf(result), ElementsAre(-5));
  EXPECT_EQ(test::Listing(place.Path()), "a.mid a.out b.mid c.mid");
}

TEST_F(RunItemsTest, QuestionWhoseWindowGoesAwayIsCancelled) {
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
  EXPECT_EQ(host->progress.back().item, item);
  EXPECT_EQ(WholeOf(host->progress.back()), 1);
  EXPECT_TRUE(std::ranges::is_sorted(host->progress, {}, &RunProgress::item));
  EXPECT_EQ(host->results.size(), 1U);
}

TEST_F(RunItemsTest, SubdirectoriesAreFoundAgainInTheTarget) {
  Job job = ListJob({}, module);
  job.sourceDrive = 0;
  job.subdirectories = true;
  job.directory = {.path = place.File("in"), .names = {"a.txt", "Chor/Alt/a.txt"}};
  for (const std::string& name : job.directory.names) place.Write("in/" + name, "ok");
  place.Write("in/Leer/b.txt", "wrong format");
  job.directory.names.emplace_back("Leer/b.txt");
  std::filesystem::create_directory(place.File("out"));
  job.targetDirectory = place.File("out");
  const RunResult result = RunJob(job, module, DestinationRulesOf(Settings{}, job));
  EXPECT_EQ(result.counts[0], 2U);
  EXPECT_EQ(test::Content(place.File("out/a.out")), "ok copied");
  EXPECT_EQ(test::Content(place.File("out/Chor/Alt/a.out")), "ok copied");
  EXPECT_FALSE(std::filesystem::exists(place.File("out/Leer"))) << "nothing came of what is there";
}

}  // namespace
}  // namespace ts5
