// A power cut between any two calls of the disk, while a run makes its files.
#include "support/power_cut.h"

#include <gtest/gtest.h>

#include "run_support.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::CopyModule;
using test::ListJob;
using test::PowerCut;
using test::RunJob;
using test::TemporaryDirectory;
using testing::IsEmpty;

struct CutCase {
  const char* name;
  unsigned workers;
  bool targetsThere;  // and replaced
  bool sourcesReplaced;
};

TEST(PowerCut, LeavesOldOrNewAndNeverLosesASource) {
  constexpr int kItems = 40;
  for (const CutCase& c :
       {CutCase{"new, one by one", 1, false, false}, CutCase{"new, together", 2, false, false},
        CutCase{"replaced, together", 2, true, false}, CutCase{"sources replaced", 2, false, true}}) {
    const TemporaryDirectory place;
    PowerCut disk;
    std::vector<std::string> sources;
    for (int i = 0; i < kItems; ++i) {
      const std::string base = "d" + std::to_string(i % 2) + "/" + std::to_string(i);
      sources.push_back(place.Write(base + (c.sourcesReplaced ? ".out" : ".mid"), "ok"));
      if (c.targetsThere) place.Write(base + ".out", "old");
      disk.Watch(sources.back());
      disk.Watch(place.File(base + ".out"));
    }
    FilterModule module = CopyModule();
    std::atomic<int> others = 0;
    module.run = [&](ts5::Run& run) {
      RunItems(run, {.independent = c.workers > 1,
                     .convert =
                         [&](ItemWork& work) {
                           // The first one comes last, so that all the others wait to be put in place.
                           while (c.workers > 1 && work.source == sources[0] && others < kItems - 1)
                             std::this_thread::yield();
                           const Outcome copied = test::Copy(work);
                           ++others;
                           return copied;
                         },
                     .workers = c.workers});
    };
    Job job = ListJob(sources, module);
    test::KeepFormat(job, c.sourcesReplaced);
    {
      const OtherDiskCalls instead(disk);
      const RunResult result =
          RunJob(job, module, {.useSuffix = !c.sourcesReplaced, .overwrite = OverwritePolicy::Replace});
      EXPECT_EQ(result.counts[0], std::uint32_t{kItems}) << c.name;
    }
    EXPECT_THAT(disk.Harm(), IsEmpty()) << c.name;
    EXPECT_GT(disk.Calls(), 4 * kItems) << c.name;
    for (int i = 0; i < kItems; ++i) {
      const std::string target = place.File("d" + std::to_string(i % 2) + "/" + std::to_string(i) + ".out");
      EXPECT_EQ(test::Content(target), "ok copied") << c.name;
    }
    // All contents at once, then each of the two directories.
    EXPECT_EQ(disk.Flushes(), c.workers > 1 ? 3 : 2 * kItems) << c.name;
  }
}

TEST(PowerCut, AMoveToAnotherDiskKeepsOneOfTheTwo) {
  const TemporaryDirectory place;
  const std::string from = place.Write("a/x", "content");
  const std::string to = place.Write("b/y", "");
  ASSERT_THAT(RemoveFile(to), test::IsOk());
  PowerCut disk;
  disk.refusals = 1;
  disk.WatchMove(from, to);
  disk.Watch(to);
  const OtherDiskCalls instead(disk);
  EXPECT_THAT(RenameFile(from, to), test::IsOk());
  EXPECT_THAT(disk.Harm(), IsEmpty());
  EXPECT_EQ(test::Content(to), "content");
  EXPECT_FALSE(FileExists(from));
}

}  // namespace
}  // namespace ts5
