// A run that is killed goes on as if nothing had happened.
#include "frame/run_journal.h"

#include <gmock/gmock.h>

#include <thread>

#include "run_support.h"
#include "support/child.h"
#include "support/killing_disk.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::CopyModule;
using test::ListJob;
using test::RunJob;
using test::TemporaryDirectory;
using testing::IsEmpty;
using testing::SizeIs;

// A folder of sources in which something fails, two share a target name, and targets are there already.
struct Music {
  explicit Music(bool replaceSources = false) : inPlace(replaceSources) {
    for (int i = 0; i < 40; ++i) {
      const std::string text = i % 7 == 3    ? "wrong format"
                               : i % 11 == 5 ? "flags"
                                             : "ok " + std::to_string(i);
      const std::string name = "in" + std::to_string(i % 2) + "/" + std::to_string(i / 2);
      sources.push_back(place.Write(name + (inPlace ? ".out" : ".mid"), text));
    }
    place.Write("out/3.out", "old");
    module.run = [](Run& run) {
      RunItems(run, {.independent = true, .check = test::CheckCopy, .convert = test::Copy, .workers = 2});
    };
    job = ListJob(sources, module);
    job.title = "Abend";
    test::KeepFormat(job, inPlace);
    rules = {.sourceDirectory = inPlace,
             .directory = place.File("out"),
             .useSuffix = false,
             .overwrite = inPlace ? OverwritePolicy::Replace : OverwritePolicy::Number};
  }

  [[nodiscard]] ModuleFinder Modules() const {
    return [this](FilterId id) { return id == module.id ? &module : nullptr; };
  }
  [[nodiscard]] std::string Journals() const { return place.File("runs"); }
  RunResult Go(std::shared_ptr<RunJournal> goesOn = nullptr) const {
    RunSetup setup;
    setup.journals = Journals();
    Job work = goesOn ? goesOn->Plan().job : job;
    const DestinationRules by = goesOn ? goesOn->Plan().destination : rules;
    setup.goesOn = std::move(goesOn);
    return RunJob(work, module, by, std::make_shared<test::RecordingHost>(), std::move(setup));
  }

  bool inPlace;
  TemporaryDirectory place;
  std::vector<std::string> sources;
  FilterModule module = CopyModule();
  Job job;
  DestinationRules rules;
};

// The results with the names as they stand in their own folder.
std::vector<std::string> Told(const RunResult& result, const TemporaryDirectory& place) {
  std::vector<std::string> told{std::to_string(result.counts[0]) + "/" + std::to_string(result.counts[1])};
  for (const std::string& remark : result.remarks) told.push_back(remark);
  for (const RunItem& item : result.items) {
    std::string line = item.source + " " + item.destination + " " + std::to_string(item.code) + item.remark;
    for (auto at = line.find(place.Path()); at != std::string::npos; at = line.find(place.Path()))
      line.erase(at, place.Path().size());
    told.push_back(line);
  }
  return told;
}

TEST(RunJournal, AKilledRunGoesOnToTheSameResults) {
  for (const bool inPlace : {false, true}) {
    const Music undisturbed(inPlace);
    const auto expected = Told(undisturbed.Go(), undisturbed.place);
    EXPECT_THAT(FindInterruptedRuns(undisturbed.Journals(), undisturbed.Modules()), IsEmpty());
    int killed = 0;
    for (const int call : {2, 20, 45, 77, 101, 130, 148, 155}) {
      const Music music(inPlace);
      bool whole = false;  // a run that came to its end
      // Twice in a row.
      for (const int at : {call, call / 2}) {
        const auto open = FindInterruptedRuns(music.Journals(), music.Modules());
        if (whole || (at != call && open.empty())) break;
        whole = test::InChild([&] {
                  test::KillingDisk disk(at);
                  const OtherDiskCalls instead(disk);
                  (void)music.Go(open.empty() ? nullptr : open.front());
                  return true;
                }) == 0;
        if (!whole) ++killed;
      }
      if (!whole) {
        const auto open = FindInterruptedRuns(music.Journals(), music.Modules());
        const RunResult result = music.Go(open.empty() ? nullptr : open.front());
        EXPECT_EQ(Told(result, music.place), expected) << inPlace << " " << call;
      }
      EXPECT_EQ(test::Contents(music.place.Path()), test::Contents(undisturbed.place.Path()))
          << inPlace << " " << call;
      EXPECT_THAT(FindInterruptedRuns(music.Journals(), music.Modules()), IsEmpty()) << call;
    }
    EXPECT_GT(killed, 6) << inPlace;
  }
}

TEST(RunJournal, AnyBytesAreReadAndDamageCostsWhatIsBehindIt) {
  Music music;
  RunPlan plan{.job = music.job, .number = 3, .destination = music.rules, .begun = 1'000'000};
  plan.devices.output = "Orgel";
  for (const std::string& source : music.sources)
    plan.targets.push_back({.name = source + ".out", .family = TargetName::Of(source + ".out")});
  auto journal = RunJournal::Begin(music.Journals(), plan, music.Modules());
  ASSERT_TRUE(journal);
  for (std::size_t i = 0; i < 5; ++i) {
    ItemRecord record{.index = i, .item = {.source = music.sources[i], .code = i == 2 ? -5 : 0}, .number = 7};
    record.item.losses = {{.kind = "Bogen", .bar = "4", .count = 2, .line = "zwei Bögen"}};
    journal->Book(record);
  }
  EXPECT_THAT(FindInterruptedRuns(music.Journals(), music.Modules()), IsEmpty()) << "a living run has it";
  journal.reset();
  const auto runs = FindInterruptedRuns(music.Journals(), music.Modules());
  ASSERT_THAT(runs, SizeIs(1));
  const RunPlan& read = runs[0]->Plan();
  EXPECT_EQ(read.number, 3U);
  EXPECT_EQ(read.job.title, "Abend");
  EXPECT_EQ(read.devices.output, "Orgel");
  EXPECT_EQ(read.destination.directory, music.rules.directory);
  EXPECT_EQ(read.destination.overwrite, OverwritePolicy::Number);
  EXPECT_EQ(ItemSource(read.job, 17), music.sources[17]);
  ASSERT_NE(runs[0]->Done(2), nullptr);
  EXPECT_EQ(runs[0]->Done(2)->item.code, -5);
  EXPECT_EQ(runs[0]->Done(4)->item.losses->front().line, "zwei Bögen");
  EXPECT_EQ(runs[0]->Done(5), nullptr);

  const Bytes whole = PlanRecord(plan, music.Modules());
  Bytes bytes = whole;
  const Bytes item = RecordOf({.index = 1, .item = {.code = 0}});
  bytes.insert(bytes.end(), item.begin(), item.end());
  for (std::size_t size = 0; size <= bytes.size(); ++size) {
    const auto part = ReadJournal(ByteView(bytes).first(size), music.Modules());
    EXPECT_EQ(part.has_value(), size >= whole.size()) << size;
    if (part) {
      EXPECT_THAT(part->items, SizeIs(size == bytes.size() ? 1 : 0));
    }
  }
  for (std::size_t at = 0; at < bytes.size(); at += 3) {
    Bytes damaged = bytes;
    damaged[at] ^= 0x20;
    const auto part = ReadJournal(damaged, music.Modules());
    EXPECT_TRUE(!part || part->items.empty()) << at;
  }
}

TEST(RunJournal, AStopEndsItAndTheEndOfTheProgramKeepsIt) {
  for (const bool closing : {false, true}) {
    Music music;
    music.place.Write("in0/5.mid", "block");
    const auto state = music.job.run.Shared();
    RunSetup setup;
    setup.job = music.job;
    setup.journals = music.Journals();
    setup.destination = music.rules;
    const auto host = std::make_shared<test::RecordingHost>();
    ts5::Run run(std::move(setup), music.module, state, host);
    std::jthread worker([&] {
      music.module.run(run);
      run.Finish();
    });
    // It hangs at item 10; all before it are done.
    while (state->currentItem < 10) std::this_thread::sleep_for(std::chrono::milliseconds(1));
    if (closing) state->closing = true;
    state->cancelRequest = kUserStop;
    worker.join();
    const auto runs = FindInterruptedRuns(music.Journals(), music.Modules());
    ASSERT_THAT(runs, SizeIs(closing ? 1 : 0));
    if (!closing) continue;
    EXPECT_EQ(runs[0]->DoneCount(), 10U);
    EXPECT_THAT(InterruptedText(*runs[0]), testing::HasSubstr("10 von 40"));
    music.place.Write("in0/5.mid", "ok");
    EXPECT_EQ(music.Go(runs[0]).items.size(), 40U);
  }
}

TEST(RunJournal, WithoutAPlaceForItRunsGoWithoutIt) {
  const Music music;
  music.place.Write("runs", "a file where the directory should be");
  EXPECT_EQ(music.Go().items.size(), 40U);
}

}  // namespace
}  // namespace ts5
