// A run that is undone leaves everything as it was, or says what it leaves.
#include "frame/run_undo.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <filesystem>
#include <limits>
#include <span>
#include <thread>

#include "run_support.h"
#include "support/child.h"
#include "support/home.h"
#include "support/killing_disk.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::Content;
using test::CopyModule;
using test::Listing;
using test::RunJob;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

// Another file system: no second names there.
struct NoLinks : DiskCalls {
  int Link(const std::string&, const std::string&) override {
    errno = EXDEV;
    return -1;
  }
};
// And no room either.
struct NoRoom : NoLinks {
  ssize_t Write(int, ByteView, std::uint64_t) override {
    errno = ENOSPC;
    return -1;
  }
};

class Undoing : public testing::Test {
 protected:
  // Converts a.txt and b.txt, of which b.out is there already.
  RunResult Go(std::uint64_t most = kMostKept) {
    const FilterModule module = CopyModule(FilterId::MidiConverter, 2);
    const Job job = test::ListJob({place_.Write("m/a.txt", "ok a"), place_.Write("m/b.txt", "ok b")}, module);
    undo_ = std::make_unique<RunUndo>(place_.File("kept"), most);
    RunSetup setup;
    setup.undo = std::shared_ptr<RunUndo>(undo_.get(), [](RunUndo*) {});
    return RunJob(job, module, {.useSuffix = false}, std::make_shared<test::RecordingHost>(),
                  std::move(setup));
  }
  void WriteOld() const {
    place_.Write("m/b.out", "old b");
    std::filesystem::permissions(place_.File("m/b.out"), std::filesystem::perms(0640));
  }
  void GoOverOld() {
    WriteOld();
    (void)Go();
  }
  [[nodiscard]] std::string Old() const {
    struct stat status {};
    if (::stat(place_.File("m/b.out").c_str(), &status) != 0) return "none";
    return Content(place_.File("m/b.out")) + " " + std::to_string(status.st_mode & 0777);
  }

  // Another process clears what was kept.
  static bool BecomesEmpty(const std::string& directory) {
    const auto end = std::chrono::steady_clock::now() + std::chrono::seconds(30);
    while (!Listing(directory).empty() && std::chrono::steady_clock::now() < end)
      std::this_thread::sleep_for(std::chrono::milliseconds(2));
    return Listing(directory).empty();
  }

  const test::Home home_;
  const test::TemporaryDirectory place_;
  std::unique_ptr<RunUndo> undo_;
};

TEST_F(Undoing, BringsBackWhatWasReplaced) {
  for (const bool links : {true, false}) {
    SCOPED_TRACE(links);
    WriteOld();
    const std::string before = Old();
    NoLinks noLinks;
    const auto other = links ? nullptr : std::make_unique<OtherDiskCalls>(noLinks);
    EXPECT_EQ(Go().counts[0], 2U);
    EXPECT_EQ(Content(place_.File("m/b.out")), "ok b copied");
    EXPECT_EQ(undo_->Kept(), 5U);
    ASSERT_TRUE(undo_->Any());
    const UndoReport report = undo_->Undo();
    EXPECT_EQ(report.removed, 2U);
    EXPECT_EQ(report.restored, 1U);
    EXPECT_EQ(Listing(place_.File("m")), "a.txt b.out b.txt");
    EXPECT_EQ(Old(), before);
    EXPECT_EQ(UndoText(report), "2 Dateien liegen jetzt im Papierkorb.\n1 ersetzte Datei ist wieder da.");
    // Once more there is nothing to do.
    EXPECT_FALSE(undo_->Any());
    EXPECT_EQ(UndoText(undo_->Undo()), "Es gab nichts zurückzunehmen.");
    EXPECT_EQ(Old(), before);
    undo_.reset();
    EXPECT_TRUE(BecomesEmpty(place_.File("kept")));
  }
  EXPECT_EQ(std::ranges::count(Listing(home_.File("Trash/files")), ' '), 3) << "nothing is lost";
}

TEST_F(Undoing, LeavesWhatWasChangedSince) {
  GoOverOld();
  place_.Write("m/b.out", "edited");
  std::filesystem::remove(place_.File("m/a.out"));
  place_.Write("m/a.out", "of another program");
  const UndoReport report = undo_->Undo();
  EXPECT_THAT(report.changed, ElementsAre(place_.File("m/b.out"), place_.File("m/a.out")));
  EXPECT_EQ(Content(place_.File("m/b.out")), "edited");
  EXPECT_EQ(Content(place_.File("m/a.out")), "of another program");
  EXPECT_EQ(report.removed, 0U);
}

// Over its notes, as after the next start.
TEST_F(Undoing, DirectoriesThatTheRunMadeGoWhenNothingElseIsInThem) {
  const FilterModule module = CopyModule(FilterId::MidiConverter, 2);
  const Job job = test::ListJob({place_.Write("m/a/b/c/x.txt", "ok"), place_.Write("m/a/y.txt", "ok"),
                                 place_.Write("m/d/z.txt", "ok"), place_.Write("m/e/old.txt", "ok")},
                                module);
  std::filesystem::create_directories(place_.File("out/e"));
  RunSetup setup;
  setup.undo = std::make_shared<RunUndo>(place_.File("kept"), kMostKept);
  auto undo = setup.undo;
  const RunResult result = RunJob(
      job, module, {.sourceDirectory = false, .directory = place_.File("out"), .structure = place_.File("m")},
      std::make_shared<test::RecordingHost>(), std::move(setup));
  ASSERT_EQ(result.counts[0], 4U);
  place_.Write("out/d/own.txt", "of the user");
  ASSERT_TRUE(undo->KeepFor({.registry = place_.Write("registry", ""), .title = "Job"}));
  undo.reset();
  const auto kept = FindKeptUndo(place_.File("kept"), place_.File("registry"));
  ASSERT_THAT(kept, SizeIs(1));
  EXPECT_EQ(kept[0]->Undo().removed, 4U);
  EXPECT_EQ(Listing(place_.File("out")), "d e");
  EXPECT_EQ(Listing(place_.File("out/d")), "own.txt");
}

TEST_F(Undoing, WhatIsGoneIsNotMissed) {
  GoOverOld();
  std::filesystem::remove(place_.File("m/a.out"));
  std::filesystem::remove(place_.File("m/b.out"));
  const UndoReport report = undo_->Undo();
  EXPECT_EQ(report.removed, 0U);
  EXPECT_EQ(report.restored, 1U);
  EXPECT_EQ(Content(place_.File("m/b.out")), "old b");
}

TEST_F(Undoing, SaysWhatCouldNotBeKept) {
  NoRoom noRoom;
  for (const bool full : {true, false}) {
    SCOPED_TRACE(full);
    WriteOld();
    undo_ = std::make_unique<RunUndo>(place_.File("kept"), full ? kMostKept : 4);
    {
      const auto other = full ? std::make_unique<OtherDiskCalls>(noRoom) : nullptr;
      EXPECT_THAT(undo_->Keep(place_.File("m/b.out")), test::IsOk()) << "it is replaced all the same";
    }
    EXPECT_EQ(undo_->Kept(), 0U);
    place_.Write("m/b.out", "new");
    undo_->Made(place_.File("m/b.out"));
    EXPECT_EQ(undo_->NotKept(), 1U);
    const UndoReport report = undo_->Undo();
    EXPECT_THAT(report.notKept, ElementsAre(place_.File("m/b.out")));
    EXPECT_EQ(Content(place_.File("m/b.out")), "new") << "nothing would be in its place";
  }
}

TEST_F(Undoing, AFullDiskTakesNothingAway) {
  WriteOld();
  {
    NoLinks noLinks;
    const OtherDiskCalls other(noLinks);
    (void)Go();
  }
  {
    NoRoom noRoom;
    const OtherDiskCalls other(noRoom);
    const UndoReport report = undo_->Undo();
    EXPECT_THAT(report.failed, ElementsAre(place_.File("m/b.out")));
    EXPECT_EQ(Content(place_.File("m/b.out")), "ok b copied");
  }
  EXPECT_EQ(undo_->Undo().restored, 1U) << "once there is room";
  EXPECT_EQ(Content(place_.File("m/b.out")), "old b");
}

TEST_F(Undoing, WithoutAWastebasketAllStays) {
  GoOverOld();
  std::filesystem::remove_all(home_.File("Trash"));
  home_.Write("Trash", "no directory");
  EXPECT_THAT(undo_->Undo().failed, SizeIs(2));
  EXPECT_EQ(Content(place_.File("m/b.out")), "ok b copied");
  std::filesystem::remove(home_.File("Trash"));
  EXPECT_EQ(undo_->Undo().removed, 2U);
  EXPECT_EQ(Content(place_.File("m/b.out")), "old b");
}

TEST_F(Undoing, ATargetThatIsALinkStaysOne) {
  place_.Write("elsewhere/real.out", "old b");
  std::filesystem::create_directories(place_.File("m"));
  std::filesystem::create_symlink(place_.File("elsewhere/real.out"), place_.File("m/b.out"));
  (void)Go();
  EXPECT_EQ(Content(place_.File("elsewhere/real.out")), "ok b copied");
  EXPECT_EQ(undo_->Undo().restored, 1U);
  EXPECT_TRUE(std::filesystem::is_symlink(place_.File("m/b.out")));
  EXPECT_EQ(Content(place_.File("elsewhere/real.out")), "old b");
}

TEST_F(Undoing, AStopWhileCopyingReplacesNothing) {
  WriteOld();
  RunUndo undo(place_.File("kept"), kMostKept);
  NoLinks noLinks;
  const OtherDiskCalls other(noLinks);
  EXPECT_EQ(undo.Keep(place_.File("m/b.out"), [] { return true; }), Outcome::Cancelled);
  EXPECT_EQ(undo.Kept(), 0U);
}

TEST_F(Undoing, FoldersOfKilledProgramsAreCleared) {
  GoOverOld();
  place_.Write("kept/1-0/1", "of a killed program");
  EXPECT_TRUE(FinishAbandonedUndo(place_.File("kept")).Empty());
  EXPECT_THAT(Listing(place_.File("kept")), testing::Not(testing::HasSubstr("1-0 ")))
      << Listing(place_.File("kept"));
  EXPECT_FALSE(std::filesystem::exists(place_.File("kept/1-0")));
  EXPECT_EQ(undo_->Undo().restored, 1U) << "those of living ones stay";
}

// Whenever the program dies while it undoes a run, the next start brings back what was replaced. Where
// somebody has taken its place meanwhile, it lies in the wastebasket.
TEST_F(Undoing, OneThatWasCutIsFinished) {
  const auto inTrash = [this](const std::string& content) {
    return std::ranges::any_of(std::filesystem::directory_iterator(home_.File("Trash/files")),
                               [&](const auto& file) { return Content(file.path().string()) == content; });
  };
  for (const bool links : {true, false}) {
    int cuts = 0;
    int early = 0;
    int taken = 0;
    for (int calls = 0, status = -1; status != 0; ++calls) {
      SCOPED_TRACE(std::to_string(calls) + (links ? " links" : " copies"));
      std::filesystem::remove(place_.File("m/a.out"));
      std::filesystem::remove_all(home_.File("Trash/files"));
      WriteOld();
      const std::string before = Old();
      status = test::InChild([&] {
        test::KillingDisk killer(std::numeric_limits<int>::max(), links);
        const OtherDiskCalls other(killer);
        (void)Go();
        killer.left = calls + 1;
        return undo_->Undo().restored == 1;
      });
      if (status != 0) ++cuts;
      const bool moved = !std::filesystem::exists(place_.File("m/b.out"));
      if (moved && ++taken % 2 == 0) {
        place_.Write("m/b.out", "of another program");
        (void)FinishAbandonedUndo(place_.File("kept"));
        EXPECT_EQ(Content(place_.File("m/b.out")), "of another program");
        EXPECT_TRUE(inTrash("old b"));
      } else {
        (void)FinishAbandonedUndo(place_.File("kept"));
        const bool begun = Old() == before;
        if (!begun) ++early;
        EXPECT_EQ(std::filesystem::exists(place_.File("m/a.out")), !begun);
        EXPECT_EQ(Content(place_.File("m/b.out")), begun ? "old b" : "ok b copied");
      }
      EXPECT_TRUE(BecomesEmpty(place_.File("kept")));
    }
    EXPECT_GT(taken, 0);
    EXPECT_LT(early, cuts) << "nothing is moved before the notes are written";
  }
}

TEST_F(Undoing, TheEndOfTheProgramIsNoEndOfAnUndo) {
  GoOverOld();
  int asked = 0;
  EXPECT_EQ(undo_->Undo([&] { return asked++ > 0; }).removed, 1U);
  undo_.reset();
  const UndoReport rest = FinishAbandonedUndo(place_.File("kept"));
  EXPECT_EQ(rest.removed, 1U);
  EXPECT_EQ(Listing(place_.File("m")), "a.txt b.out b.txt");
  EXPECT_EQ(Content(place_.File("m/b.out")), "old b");
  EXPECT_TRUE(BecomesEmpty(place_.File("kept")));
}

TEST_F(Undoing, IsThereAfterTheNextStart) {
  const UndoOwner owner{place_.Write("registry", ""), 2, "Chor"};
  const std::string kept = place_.File("kept");
  for (const bool again : {true, false}) {
    WriteOld();
    (void)Go();
    EXPECT_TRUE(undo_->KeepFor(owner));
    EXPECT_THAT(FindKeptUndo(kept, owner.registry), IsEmpty()) << "while its program lives";
    undo_.reset();
    EXPECT_TRUE(FinishAbandonedUndo(kept).Empty());
    EXPECT_THAT(FindKeptUndo(kept, "/another"), IsEmpty());
    auto found = FindKeptUndo(kept, owner.registry);
    ASSERT_THAT(found, SizeIs(1));
    EXPECT_EQ(found[0]->Owner(), owner);
    EXPECT_EQ(found[0]->Kept(), 5U);
    // Another run of the job is the end of it.
    again ? (void)found[0]->Undo() : found[0]->Forget();
    EXPECT_EQ(Content(place_.File("m/b.out")), again ? "old b" : "ok b copied");
    found.clear();
    EXPECT_TRUE(BecomesEmpty(kept));
  }
  (void)Go();
  EXPECT_TRUE(undo_->KeepFor(owner));
  undo_.reset();
  std::filesystem::remove(owner.registry);
  EXPECT_TRUE(FinishAbandonedUndo(kept).Empty());
  EXPECT_TRUE(BecomesEmpty(kept)) << "nobody will ask for it";
}

// What could neither be brought back nor put into the wastebasket is kept for another try.
TEST_F(Undoing, WithoutAnyPlaceItStays) {
  struct NoWayBack : DiskCalls {
    int RenameKeeping(const std::string&, const std::string&) override {
      errno = EACCES;
      return -1;
    }
  } noWayBack;
  GoOverOld();
  {
    const OtherDiskCalls other(noWayBack);
    EXPECT_THAT(undo_->Undo().failed, ElementsAre(place_.File("m/b.out")));
  }
  std::filesystem::remove_all(home_.File("Trash"));
  home_.Write("Trash", "no directory");
  undo_.reset();
  std::filesystem::remove(home_.File("Trash"));
  EXPECT_EQ(FinishAbandonedUndo(place_.File("kept")).restored, 1U);
  EXPECT_EQ(Content(place_.File("m/b.out")), "old b");
}

TEST_F(Undoing, NotesFromOutsideMoveNothing) {
  const std::string kept = place_.Write("kept/1-0/1", "the user's");
  UndoItem item{.path = place_.File("m/x"), .made = {}, .kept = kept};
  const std::optional<UndoOwner> owners[] = {{}, UndoOwner{"/r", 2, "Chor"}};
  for (const auto& owner : owners) {
    item.path = place_.File("m/x");
    const Bytes notes = NotesOf(std::span(&item, 1), owner);
    const auto read = ReadNotes(notes, place_.File("kept/1-0"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->owner, owner);
    for (std::size_t size = 0; size < notes.size(); ++size)
      EXPECT_FALSE(ReadNotes(ByteView(notes).first(size), "/f")) << size;
    item.path = "x";
    EXPECT_FALSE(ReadNotes(NotesOf(std::span(&item, 1), owner), "/f"));
  }
  place_.Write("kept/1-0/notes", "nonsense");
  EXPECT_TRUE(FinishAbandonedUndo(place_.File("kept")).Empty());
  EXPECT_EQ(Content(kept), "the user's") << "nobody knows whose it is";
}

}  // namespace
}  // namespace ts5
