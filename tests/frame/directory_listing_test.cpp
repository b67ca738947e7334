#include "frame/directory_listing.h"

#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>

#include "support/matchers.h"
#include "support/test_data.h"
#include "support/test_loop.h"

namespace ts5 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

struct Listed {
  ListingEnd end;
  std::vector<DirectoryItem> items;
  std::size_t batches = 0;

  std::vector<std::string> Names() const {
    std::vector<std::string> names;
    for (const DirectoryItem& item : items) names.push_back(item.name);
    return names;
  }
};

Listed List(const std::string& directory, const AudioCdQuery& audioCd = {},
            const std::stop_token& stop = {}) {
  Listed listed;
  listed.end = ListDirectory(directory, audioCd, stop, [&](std::vector<DirectoryItem> batch) {
    ++listed.batches;
    for (DirectoryItem& item : batch) listed.items.push_back(std::move(item));
  });
  return listed;
}

struct DirectoryListingTest : testing::Test {
  const test::TemporaryDirectory directory;
};

TEST_F(DirectoryListingTest, ListsTypeByTypeAndEachByName) {
  for (const char* name :
       {"b.ape", "Zug.MID", "alt.mid", "Ärger.mid", "b.rmi", "x.ASF", "y.wav", "z.stv", ".mid", "a.stvx",
        "Lied 10.wav", "lied 9.wav", "notes.txt", "readme", "b.mid.bak", "sub.mid/c.mid", "old.mpga"}) {
    directory.Write(name, "x");
  }
  std::filesystem::create_symlink(directory.File("y.wav"), directory.File("link.wav"));
  std::filesystem::create_symlink(directory.File("sub.mid"), directory.File("linked.mid"));

  const Listed listed = List(directory.Path());
  EXPECT_THAT(listed.end.outcome, test::IsOk());
  EXPECT_THAT(listed.Names(),
              ElementsAre("x.ASF", "lied 9.wav", "Lied 10.wav", "link.wav", "y.wav", ".mid", "alt.mid",
                          "Ärger.mid", "Zug.MID", "z.stv", "b.rmi", "b.ape", "a.stvx"));
  EXPECT_EQ(listed.items[5].type, FileTypeId::Midi);
}

TEST_F(DirectoryListingTest, ListsTheTracksOfAnAudioCd) {
  const Listed listed = List("/dev/sr0", [](const std::string& directory) {
    EXPECT_EQ(directory, "/dev/sr0");
    return AudioCd{{"PLEXTOR", "PX-1"}, {{1, 185}, {12, 60}}};
  });
  EXPECT_THAT(
      listed.items,
      ElementsAre(DirectoryItem{"Track 01", FileTypeId::CdTrack, true, 185, "PLEXTOR PX-1\\Track 01"},
                  DirectoryItem{"Track 12", FileTypeId::CdTrack, true, 60, "PLEXTOR PX-1\\Track 12"}));
}

TEST_F(DirectoryListingTest, SaysWhatCannotBeListed) {
  EXPECT_THAT(List(directory.File("missing")).end.outcome, test::FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(List(directory.Write("a.mid", "x")).end.outcome, test::FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(List(directory.Path(), [](const auto&) { return std::nullopt; }).Names(), ElementsAre("a.mid"));

  // Names that are no text and paths that are too long are counted, not shown.
  directory.Write("b\xFF.mid", "x");
  std::string deep = directory.Path();
  while (deep.size() < 200) deep += "/" + std::string(40, 'd');
  std::filesystem::create_directories(deep);
  EXPECT_EQ(List(directory.Path()).end.refused, 1U);
  const std::string longName(260 - deep.size(), 'n');
  test::TemporaryDirectory other;
  std::filesystem::copy_file(directory.File("a.mid"), deep + "/" + longName + ".mid");
  std::filesystem::copy_file(directory.File("a.mid"), deep + "/ok.mid");
  const Listed listed = List(deep);
  EXPECT_THAT(listed.Names(), ElementsAre("ok.mid"));
  EXPECT_EQ(listed.end.refused, 1U);

  if (geteuid() != 0) {
    ASSERT_EQ(chmod(deep.c_str(), 0), 0);
    EXPECT_THAT(List(deep).end.outcome, test::FailsWith(Outcome::SourceFailed));
    ASSERT_EQ(chmod(deep.c_str(), 0755), 0);
  }
}

TEST_F(DirectoryListingTest, StopsWhenAsked) {
  directory.Write("a.mid", "x");
  std::stop_source stop;
  stop.request_stop();
  const Listed listed = List(directory.Path(), {}, stop.get_token());
  EXPECT_THAT(listed.end.outcome, test::FailsWith(Outcome::Cancelled));
  EXPECT_THAT(listed.items, IsEmpty());
}

TEST_F(DirectoryListingTest, LargeDirectoriesComeInBatches) {
  constexpr int kFiles = 20000;
  const std::string first = directory.Write("00000.mid", "");
  for (int i = 1; i < kFiles; ++i) {
    ASSERT_EQ(link(first.c_str(), directory.File(std::to_string(100000 + i) + ".mid").c_str()), 0);
  }
  const Listed listed = List(directory.Path());
  EXPECT_EQ(listed.items.size(), static_cast<std::size_t>(kFiles));
  EXPECT_GE(listed.batches, 10U);
  EXPECT_TRUE(std::ranges::is_sorted(listed.items, {}, &DirectoryItem::name));
}

TEST_F(DirectoryListingTest, ATreeComesDirectoryByDirectory) {
  for (const char* name : {"z.mid", "Chor/b.mid", "Chor/Alt/a.mid", "Band/x.wav", "Band/x.mid",
                           "Leer/notes.txt", ".versteckt/h.mid"})
    directory.Write(name, "x");
  std::filesystem::create_directory_symlink(directory.Path(), directory.File("Chor/rund"));
  std::vector<std::string> names;
  const auto sink = [&](std::vector<DirectoryItem> items) {
    for (const DirectoryItem& item : items) names.push_back(item.name);
  };
  EXPECT_THAT(ListTree(directory.Path(), {}, {}, sink).outcome, test::IsOk());
  EXPECT_THAT(names, ElementsAre("z.mid", "Band/x.wav", "Band/x.mid", "Chor/b.mid", "Chor/Alt/a.mid"));
  names.clear();
  std::stop_source stop;
  const ListingEnd end =
      ListTree(directory.Path(), {}, stop.get_token(), [&](std::vector<DirectoryItem> items) {
        sink(std::move(items));
        stop.request_stop();
      });
  EXPECT_EQ(end.outcome, Outcome::Cancelled);
  EXPECT_THAT(names, ElementsAre("z.mid"));
}

DirectoryLister::Post PostTo(EventLoop& loop) {
  return [&loop](std::function<void()> event) { loop.Post(std::move(event)); };
}

TEST(DirectoryLister, RunsOneListingAtATime) {
  const test::TemporaryDirectory directory;
  directory.Write("a.mid", "x");
  test::TestLoop loop;
  DirectoryLister lister(PostTo(loop));
  std::vector<std::string> names;
  int ends = 0;
  const auto sink = [&](std::vector<DirectoryItem> batch) {
    for (const DirectoryItem& item : batch) names.push_back(item.name);
  };
  const auto end = [&](ListingEnd result) {
    EXPECT_THAT(result.outcome, test::IsOk());
    EXPECT_FALSE(lister.Running());
    ++ends;
  };
  EXPECT_TRUE(lister.Start(directory.Path(), false, sink, end));
  EXPECT_FALSE(lister.Start(directory.Path(), false, sink, end)) << "ignored while the first one runs";
  EXPECT_TRUE(loop.RunUntil([&] { return ends == 1; }));
  EXPECT_THAT(names, ElementsAre("a.mid"));
  EXPECT_TRUE(lister.Start(directory.Path(), false, sink, end));
  EXPECT_TRUE(loop.RunUntil([&] { return ends == 2; }));
}

// A disc that does not answer holds up neither Cancel nor the next listing, and what it says later is
// dropped.
TEST(DirectoryLister, CancelDoesNotWait) {
  const test::TemporaryDirectory directory;
  directory.Write("a.mid", "x");
  test::TestLoop loop;
  const auto hold = std::make_shared<std::mutex>();  // the thread that is let go still uses it
  std::unique_lock held(*hold);
  std::atomic<int> answered = 0;
  std::optional<DirectoryLister> lister(std::in_place, PostTo(loop),
                                        [&answered, hold](const std::string& path) {
                                          if (path != "/slow") return std::optional<AudioCd>{};
                                          const std::lock_guard wait(*hold);
                                          ++answered;
                                          return std::optional<AudioCd>{AudioCd{{}, {{1, 60}}}};
                                        });
  const auto never = [](auto) { FAIL() << "a cancelled listing has reported"; };
  bool ended = false;
  ASSERT_TRUE(lister->Start("/slow", false, never, never));
  lister->Cancel();
  EXPECT_FALSE(lister->Running());
  ASSERT_TRUE(lister->Start(
      directory.Path(), false, [](auto) {}, [&](ListingEnd) { ended = true; }));
  EXPECT_TRUE(loop.RunUntil([&] { return ended; }));

  ASSERT_TRUE(lister->Start(directory.Path(), false, never, never));
  lister.reset();
  held.unlock();
  while (answered == 0) std::this_thread::sleep_for(std::chrono::milliseconds(1));
  std::this_thread::sleep_for(std::chrono::milliseconds(20));
  loop.RunPending();
}

TEST(DirectoryTree, ShowsWhatCanBeExpanded) {
  const test::TemporaryDirectory directory;
  directory.Write("b/x.mid", "");
  directory.Write("B2/c/x.mid", "");
  directory.Write("a/x.mid", "");
  directory.Write(".hidden/x.mid", "");
  EXPECT_THAT(Subdirectories(directory.Path()), ElementsAre("a", "b", "B2"));
  EXPECT_TRUE(HasSubdirectories(directory.Path()));
  EXPECT_TRUE(HasSubdirectories(directory.File("B2")));
  EXPECT_FALSE(HasSubdirectories(directory.File("a")));
  EXPECT_FALSE(HasSubdirectories(directory.File("missing")));
  EXPECT_THAT(Subdirectories(directory.File("missing")), IsEmpty());
}

}  // namespace
}  // namespace ts5
