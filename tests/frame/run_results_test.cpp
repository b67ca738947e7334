// What a run leaves behind and how long it takes: times, the report, the sources of a second try.
#include <gmock/gmock.h>

#include <random>

#include "frame/filter_catalogue.h"
#include "frame/job.h"
#include "frame/run_report.h"
#include "frame/run_time.h"
#include "run_support.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// --- times

// A run of files in simulated time.
struct Files {
  const char* what;
  std::size_t count;
  double perFile;  // seconds
  double perByte;
  std::function<std::uint64_t(std::size_t index, std::mt19937& random)> size;
  bool sizesKnown = true;
  double noise = 0.4;  // of a machine with other work: each file takes so much more or less
};

TEST(RunTime, FromTheFirstQuarterOnWhatIsLeftComesTrueWithinAFifth) {
  const auto alike = [](std::size_t, std::mt19937&) { return std::uint64_t{20'000}; };
  const auto mixed = [](std::size_t, std::mt19937& random) { return 2'000 + random() % 400'000; };
  const auto growing = [](std::size_t index, std::mt19937&) { return 1'000 + 300 * std::uint64_t{index}; };
  const auto late = [](std::size_t index, std::mt19937& random) {
    return index < 2000 ? 5'000 + random() % 50'000 : 3'000'000 + random() % 200'000;
  };
  const Files kRuns[] = {
      {"small files", 3000, 0.004, 0, alike},
      {"sizes that nobody knows", 3000, 0.004, 1e-8, mixed, false},
      {"all by size", 3000, 0, 4e-8, mixed},
      {"both", 3000, 0.003, 2e-8, mixed},
      {"ever bigger", 3000, 0.002, 2e-8, growing},
      {"big ones last", 3000, 0.002, 2e-8, late},
      {"few long ones", 12, 1, 1e-4, mixed, true, 0.15},
  };
  for (const Files& files : kRuns) {
    std::mt19937 random(7);
    std::uniform_real_distribution<double> noise(1 - files.noise, 1 + files.noise);
    std::vector<std::uint64_t> sizes;
    std::vector<double> costs;
    double total = 0;
    for (std::size_t i = 0; i < files.count; ++i) {
      sizes.push_back(files.size(i, random));
      costs.push_back((files.perFile + files.perByte * static_cast<double>(sizes.back())) * noise(random));
      total += costs.back();
    }
    const RunTime::Time start{};
    RunTime time(start);
    if (files.sizesKnown) time.SetSizes(sizes);
    double worked = 0;
    std::size_t asked = 0;
    std::size_t told = 0;
    for (std::size_t i = 0; i < files.count; ++i) {
      for (const double fraction : {0.0, 0.5}) {
        const double at = worked + fraction * costs[i];
        time.Reached(
            static_cast<std::uint32_t>(i + 1), static_cast<std::uint32_t>(files.count), fraction,
            start + std::chrono::duration_cast<RunTime::Time::duration>(std::chrono::duration<double>(at)));
        const auto left = time.Remaining();
        if (at < 1.9 || i < files.count / 100) {
          EXPECT_EQ(left, std::nullopt) << files.what << " " << at;
        }
        if (at < total / 4) continue;
        ++asked;
        if (!left) continue;
        ++told;
        EXPECT_NEAR(at + static_cast<double>(left->count()) / 1000, total, 0.2 * total)
            << files.what << " " << i;
      }
      worked += costs[i];
    }
    EXPECT_GT(told, asked / 2) << files.what;
  }
}

TEST(RunTime, WaitingIsNoWork) {
  const RunTime::Time start{};
  RunTime time(start);
  auto now = start;
  for (std::uint32_t i = 1; i <= 50; ++i) {
    time.Reached(i, 100, 0, now);
    if (i == 20) {
      time.Pause(now);
      now += seconds(600);
      time.Resume(now);
    }
    now += milliseconds(200);
  }
  ASSERT_TRUE(time.Remaining());
  EXPECT_NEAR(static_cast<double>(time.Remaining()->count()), 10'000, 500);
  EXPECT_EQ(time.Elapsed(now), milliseconds(610'000));
}

TEST(RunTime, IsToldInRoundNumbers) {
  EXPECT_EQ(TimeText(seconds(42), {}), "0:42");
  EXPECT_EQ(TimeText(seconds(3727), seconds(4)), "1:02:07, noch wenige Sekunden");
  EXPECT_EQ(RemainingText(seconds(41)), "noch etwa 0:45");
  EXPECT_EQ(RemainingText(seconds(131)), "noch etwa 2:20");
  EXPECT_EQ(RemainingText(seconds(1790)), "noch etwa 30:00");
}

// --- the report

RunResult Mixed() {
  RunResult result;
  result.filter = FilterId::MidiConverter;
  result.titles = Descriptor(result.filter).titles;
  result.items = {{"/m/a.mid", "/m/a.cnv.mid", 0},
                  {.source = "/m/b\tc.mid",
                   .code = -104,
                   .reason = "Die Datei ist leer.",
                   .remark = "Die Quelle hat ein ungültiges Dateiformat."},
                  {.source = "", .destination = "/z/treffer.txt", .code = -7777},
                  {.source = "/m/d.mid", .code = -5}};
  CountItems(result, 6);
  return result;
}

TEST(RunReport, NamesEveryItemItsOutcomeAndWhy) {
  const RunResult result = Mixed();
  EXPECT_THAT(result.counts, ElementsAre(1, 5, 0, 0)) << "what was not begun has not succeeded";
  EXPECT_EQ(FailureCount(result), 2U);
  EXPECT_THAT(FailedSources(result), ElementsAre("/m/b\tc.mid"));
  const std::string text = ReportText(result);
  EXPECT_TRUE(
      text.starts_with("\xEF\xBB\xBF"
                       "Ergebnisse der Midi-Konvertierung\r\n"));
  EXPECT_THAT(text, HasSubstr("Erfolgreich konvertierte Dateien:\t1\r\n"));
  EXPECT_THAT(text, HasSubstr("Datei\tErgebnis\tGrund\tVerzeichnis\r\n"
                              "a.mid\tErfolgreich\t\t/m\r\n"
                              "b c.mid\tFehlgeschlagen\tDie Quelle hat ein ungültiges Dateiformat. "
                              "Die Datei ist leer.\t/m\r\n"
                              "treffer.txt\tFehlgeschlagen\tFehler -7777\t/z\r\n"
                              "d.mid\tAbgebrochen\tFehler -5\t/m\r\n"));
  EXPECT_EQ(ReportLines(result, std::vector<std::size_t>{3}), "d.mid\tAbgebrochen\tFehler -5\t/m\n");
}

// --- a second try

TEST(WithOnly, KeepsTheChosenSourcesAndTheirKind) {
  Job list;
  list.sourceDrive = kListModeDrive;
  for (const char* path : {"/m/a.mid", "/m/b.mid", "STAVORA VIRTUELLE CD\\Track 2", "/n/b.mid"})
    list.files.Append(EntryFromPath(path));
  Job only = WithOnly(list, {"/n/b.mid", "STAVORA VIRTUELLE CD\\Track 2", "/x/fremd.mid"});
  ASSERT_EQ(ItemCount(only), 2U);
  EXPECT_TRUE(ItemEntry(only, 0)->cdTrack);
  EXPECT_EQ(ItemSource(only, 1), "/n/b.mid");
  list.files.Select({1});
  EXPECT_EQ(ItemCount(WithOnly(list, {"/m/a.mid"})), 0U) << "was not selected";

  Job directory;
  directory.directory = {"/m", {"a.mid", "b.mid", "Track 03"}, {4, 7, 9}};
  only = WithOnly(directory, {"/m/b.mid", "/m/Track 03"});
  EXPECT_EQ(only.Mode(), SourceMode::Directory);
  EXPECT_THAT(only.directory.names, ElementsAre("b.mid", "Track 03"));
  EXPECT_THAT(only.directory.indices, ElementsAre(7, 9));
  EXPECT_TRUE(ItemEntry(only, 1)->cdTrack);

  directory.directory.Deselect();  // a search of the tree
  only = WithOnly(directory, {"/m/tief/x.mid"});
  EXPECT_EQ(only.Mode(), SourceMode::List);
  EXPECT_EQ(ItemSource(only, 0), "/m/tief/x.mid");
}

}  // namespace
}  // namespace ts5
