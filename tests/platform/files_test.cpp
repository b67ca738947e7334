#include "platform/files/files.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/mount.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <fstream>

#include "platform/files/disk_calls.h"
#include "support/child.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

namespace fs = std::filesystem;
using test::Content;
using test::FailsWith;
using test::InChild;
using test::IsOk;
using test::Listing;
using test::TemporaryDirectory;

mode_t ModeOf(const std::string& path) {
  struct stat status {};
  return ::stat(path.c_str(), &status) == 0 ? status.st_mode & 07777 : 0;
}

TEST(Files, ReadWhole) {
  const TemporaryDirectory directory;
  const std::string path = directory.Write("a", "abc");
  EXPECT_EQ(AsText(*ReadFile(path)), "abc");
  EXPECT_THAT(ReadFile(path, 3), IsOk());
  EXPECT_THAT(ReadFile(path, 2), FailsWith(Outcome::ReadFailed));
  EXPECT_EQ(AsText(*ReadFileStart(path, 2)), "ab");
  EXPECT_EQ(AsText(*ReadFileStart(path, std::size_t{1} << 60)), "abc");
  EXPECT_GT(ReadFile("/proc/self/status")->size(), 100U) << "its size is said to be 0";

  ASSERT_EQ(::mkfifo(directory.File("pipe").c_str(), 0600), 0);
  for (const std::string& bad :
       {directory.Path(), directory.File("none"), directory.File("pipe"), path + "/x",
        std::string("/dev/zero"), path + std::string("\0x", 2), std::string()}) {
    EXPECT_THAT(ReadFile(bad), FailsWith(Outcome::SourceFailed)) << bad;
  }
}

struct StagedFileTest : testing::Test {
  const TemporaryDirectory directory;
};

TEST_F(StagedFileTest, ComesIntoBeingWholeOrNotAtAll) {
  const std::string target = directory.Write("a.mid", "old");
  {
    auto file = StagedFile::Create(target);
    ASSERT_THAT(file, IsOk());
    EXPECT_THAT(file->Write(AsBytes("new content")), IsOk());
    EXPECT_EQ(Content(target), "old");
  }
  EXPECT_EQ(Listing(directory.Path()), "a.mid");
  EXPECT_EQ(Content(target), "old");

  auto file = StagedFile::Create(target);
  ASSERT_THAT(file, IsOk());
  EXPECT_THAT(file->Write(AsBytes("....content")), IsOk());
  EXPECT_THAT(file->WriteAt(0, AsBytes("new ")), IsOk());
  StagedFile moved = std::move(*file);
  EXPECT_EQ(moved.Size(), 11U);
  EXPECT_THAT(moved.Commit(), IsOk());
  EXPECT_EQ(Content(target), "new content");
  EXPECT_EQ(Listing(directory.Path()), "a.mid");
  EXPECT_THAT(moved.Write(AsBytes("x")), FailsWith(Outcome::WriteFailed)) << "it is committed";
}

TEST_F(StagedFileTest, AFailedWriteIsNeverCommitted) {
  const std::string target = directory.Write("a", "old");
  auto file = StagedFile::Create(target);
  ASSERT_THAT(file, IsOk());
  EXPECT_THAT(file->Write(AsBytes("abc")), IsOk());
  EXPECT_THAT(file->WriteAt(2, AsBytes("xy")), FailsWith(Outcome::WriteFailed));
  EXPECT_THAT(file->Commit(), FailsWith(Outcome::WriteFailed));
  EXPECT_EQ(Content(target), "old");
}

TEST_F(StagedFileTest, ANameThatDoesNotReachTheDiskIsAFailure) {
  struct : DiskCalls {
    int FlushDirectory(const std::string& /*directory*/) override { return errno = error, -1; }
    int error = EIO;
  } disk;
  const OtherDiskCalls instead(disk);
  EXPECT_THAT(WriteFile(directory.File("a"), AsBytes("x")), FailsWith(Outcome::WriteFailed));
  disk.error = EINVAL;  // some file systems have nothing to flush
  EXPECT_THAT(WriteFile(directory.File("a"), AsBytes("x")), IsOk());
}

TEST_F(StagedFileTest, KeepsPermissionsAndLinks) {
  const std::string target = directory.Write("sub/a", "old");
  fs::permissions(target, fs::perms(0640));
  fs::create_symlink("sub/a", directory.File("link"));
  fs::create_symlink("sub/none", directory.File("dangling"));
  fs::create_symlink("loop", directory.File("loop"));

  EXPECT_THAT(WriteFile(directory.File("link"), AsBytes("new")), IsOk());
  EXPECT_TRUE(fs::is_symlink(directory.File("link")));
  EXPECT_EQ(Content(target), "new");
  EXPECT_EQ(ModeOf(target), 0640U);

  EXPECT_THAT(WriteFile(directory.File("dangling"), AsBytes("made")), IsOk());
  EXPECT_TRUE(fs::is_symlink(directory.File("dangling")));
  EXPECT_EQ(Content(directory.File("sub/none")), "made");
  EXPECT_THAT(WriteFile(directory.File("loop"), AsBytes("x")), FailsWith(Outcome::TargetFailed));

  const mode_t mask = ::umask(027);
  EXPECT_THAT(WriteFile(directory.File("fresh"), AsBytes("x")), IsOk());
  ::umask(mask);
  EXPECT_EQ(ModeOf(directory.File("fresh")), 0640U);
}

TEST_F(StagedFileTest, RefusesWhatIsNoFileOfTheUser) {
  const std::string file = directory.Write("file", "x");
  const std::string guarded = directory.Write("guarded", "x");
  fs::permissions(guarded, fs::perms(0444));
  for (const std::string& bad : {directory.Path(), directory.File("none/a"), file + "/a",
                                 std::string("/dev/null"), guarded, std::string(), directory.File("a/"),
                                 file + std::string("\0x", 2), directory.File(std::string(300, 'n'))}) {
    EXPECT_THAT(WriteFile(bad, AsBytes("y")), FailsWith(Outcome::TargetFailed)) << bad;
  }
  EXPECT_EQ(Content(guarded), "x");
  EXPECT_EQ(Listing(directory.Path()), "file guarded");
}

TEST_F(StagedFileTest, CommitAsSettlesTheNameLate) {
  auto file = StagedFile::Create(directory.File("a"));
  ASSERT_THAT(file, IsOk());
  EXPECT_THAT(file->Write(AsBytes("x")), IsOk());
  EXPECT_THAT(file->CommitAs(directory.File("b")), IsOk());
  EXPECT_EQ(Listing(directory.Path()), "b");

  auto late = StagedFile::Create(directory.File("c"));
  fs::create_directory(directory.File("c"));  // came in between
  EXPECT_THAT(late->Commit(), FailsWith(Outcome::TargetFailed));
}

TEST_F(StagedFileTest, CommitNewReplacesNothing) {
  directory.Write("file", "old");
  fs::create_symlink(directory.File("nowhere"), directory.File("link"));
  fs::create_directory(directory.File("dir"));
  auto file = StagedFile::Create(directory.File("a"));
  ASSERT_THAT(file, IsOk());
  EXPECT_THAT(file->Write(AsBytes("x")), IsOk());
  for (const char* taken : {"file", "link", "dir"})
    EXPECT_EQ(file->CommitNew(directory.File(taken)), false) << taken;
  EXPECT_EQ(file->CommitNew(directory.File("free")), true);
  EXPECT_THAT(file->CommitNew(directory.File("again")), FailsWith(Outcome::WriteFailed));
  EXPECT_EQ(Listing(directory.Path()), "dir file free link");
  EXPECT_EQ(Content(directory.File("file")) + Content(directory.File("free")), "oldx");
}

// A library or an encoder gets the path; some write into the file, others put one of their own there.
TEST_F(StagedFileTest, WhatOthersWriteThroughThePathIsCommitted) {
  for (const bool replaces : {false, true}) {
    const TemporaryDirectory directory;
    auto file = StagedFile::Create(directory.File("a"));
    ASSERT_THAT(file, IsOk());
    EXPECT_TRUE(file->IsEmpty());
    if (replaces) fs::remove(file->TemporaryPath());
    std::ofstream(file->TemporaryPath()) << "written";
    EXPECT_FALSE(file->IsEmpty());
    EXPECT_THAT(file->Commit(), IsOk());
    EXPECT_EQ(Content(directory.File("a")), "written");
  }
  auto gone = StagedFile::Create(directory.File("a"));
  fs::remove(gone->TemporaryPath());
  EXPECT_THAT(gone->Commit(), FailsWith(Outcome::WriteFailed));
}

TEST_F(StagedFileTest, WhatAKilledProgramLeftIsCleared) {
  directory.Write(".sTS5-0123", "too short");
  directory.Write(".sTS5-0123456789xy", "no number");
  ASSERT_EQ(InChild([&]() -> bool {
              auto left = StagedFile::Create(directory.File("a"));
              (void)left->Write(AsBytes("half"));
              std::ofstream(left->TemporaryPath() + ".mp3") << "half of an encoder's";
              ::_exit(left ? 0 : 1);
            }),
            0);
  {
    const auto mine = StagedFile::Create(directory.File("b"));
    EXPECT_EQ(ClearAbandonedFiles(directory.Path()), 2U);
    EXPECT_TRUE(FileExists(mine->TemporaryPath())) << "its owner is alive";
  }
  EXPECT_EQ(Listing(directory.Path()), ".sTS5-0123 .sTS5-0123456789xy");
  EXPECT_EQ(ClearAbandonedFiles(directory.File("none")), 0U);
}

TEST_F(StagedFileTest, AFullDiskLeavesTheTargetAsItWas) {
  const std::string target = directory.Write("a", "old");
  const Bytes big(1 << 20, 'x');
  EXPECT_EQ(InChild([&] {
              std::signal(SIGXFSZ, SIG_IGN);
              const rlimit limit{4096, 4096};
              return ::setrlimit(RLIMIT_FSIZE, &limit) == 0 && WriteFile(target, big) == Outcome::WriteFailed;
            }),
            0);
  EXPECT_EQ(Content(target), "old");
  EXPECT_EQ(Listing(directory.Path()), "a");
}

TEST_F(StagedFileTest, AFullFileSystemLeavesTheTargetAsItWas) {
  const std::string place = directory.File("small");
  fs::create_directory(place);
  if (::mount("tmpfs", place.c_str(), "tmpfs", 0, "size=64k,nr_inodes=5") != 0) GTEST_SKIP() << "needs mount";
  const std::string target = place + "/a";
  EXPECT_THAT(WriteFile(target, AsBytes("old")), IsOk());
  EXPECT_THAT(WriteFile(target, Bytes(1 << 20, 'x')), FailsWith(Outcome::WriteFailed));
  EXPECT_EQ(Content(target), "old");
  EXPECT_EQ(Listing(place), "a");

  // Not even a place for the name is left.
  for (const char* name : {"/1", "/2", "/3"}) (void)WriteFile(place + name, {});
  EXPECT_THAT(WriteFile(place + "/4", AsBytes("x")), FailsWith(Outcome::WriteFailed));

  // Moving onto a full file system loses nothing.
  const std::string big = directory.Write("big", std::string(1 << 20, 'x'));
  fs::remove(place + "/1");
  EXPECT_THAT(RenameFile(big, place + "/big"), FailsWith(Outcome::WriteFailed));
  EXPECT_EQ(fs::file_size(big), 1U << 20);

  const std::string small = directory.Write("small.mid", "MThd");
  EXPECT_THAT(RenameFile(small, place + "/a"), FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(Content(place + "/a"), "old");
  EXPECT_THAT(RenameFile(small, place + "/small.mid"), IsOk());
  EXPECT_EQ(Content(place + "/small.mid"), "MThd");
  EXPECT_FALSE(FileExists(small));
  ::umount(place.c_str());
}

TEST_F(StagedFileTest, WithoutPermissionNothingIsTouched) {
  const std::string target = directory.Write("closed/a", "old");
  const std::string foreign = directory.Write("open/b", "old");
  fs::permissions(directory.File("closed"), fs::perms(0755));
  fs::permissions(directory.File("open"), fs::perms(0777));
  fs::permissions(foreign, fs::perms(0644));
  fs::permissions(directory.Path(), fs::perms(0755));
  if (::geteuid() != 0) GTEST_SKIP() << "needs another user to become";
  EXPECT_EQ(InChild([&] {
              return ::setgid(65534) == 0 && ::setuid(65534) == 0 &&
                     WriteFile(target, AsBytes("new")) == Outcome::TargetFailed &&
                     WriteFile(foreign, AsBytes("new")) == Outcome::TargetFailed &&
                     RemoveFile(target) == Outcome::TargetFailed &&
                     RenameFile(target, directory.File("closed/b")) == Outcome::SourceFailed &&
                     RenameFile(target, directory.File("open/c")) == Outcome::SourceFailed;
            }),
            0);
  EXPECT_EQ(Content(target), "old");
  EXPECT_EQ(Content(foreign), "old");
  EXPECT_EQ(Listing(directory.File("open")), "b");
}

TEST(Files, RenameNeverReplaces) {
  const TemporaryDirectory directory;
  const std::string a = directory.Write("a", "A");
  const std::string b = directory.Write("b", "B");
  EXPECT_THAT(RenameFile(a, b), FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(Content(b), "B");
  EXPECT_THAT(RenameFile(a, directory.File("none/c")), FailsWith(Outcome::TargetFailed));
  EXPECT_THAT(RenameFile(directory.File("none"), directory.File("c")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(RenameFile(a, directory.File("c")), IsOk());
  EXPECT_EQ(Listing(directory.Path()), "b c");

  // A link whose name differs from its file's in case only must not replace it.
  fs::create_symlink("b", directory.File("B"));
  EXPECT_THAT(RenameFile(directory.File("B"), b), FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(Content(b), "B");
}

TEST(Files, SameFileByAnyName) {
  const TemporaryDirectory directory;
  const std::string a = directory.Write("a", "x");
  const std::string other = directory.Write("b", "x");
  fs::create_hard_link(a, directory.File("hard"));
  fs::create_symlink("a", directory.File("soft"));
  fs::create_directory(directory.File("sub"));
  for (const char* name : {"a", "hard", "soft", "./a", "sub/../a"}) {
    EXPECT_TRUE(IsSameFile(a, directory.File(name))) << name;
  }
  EXPECT_FALSE(IsSameFile(a, other));
  EXPECT_FALSE(IsSameFile(directory.File("none"), directory.File("none")));
}

TEST(Files, TemporaryFilesGoAway) {
  const TemporaryDirectory directory;
  {
    auto first = TemporaryFile::Create("sts", directory.Path(), "wav");
    auto second = TemporaryFile::Create("sts", directory.Path(), ".wav");
    ASSERT_THAT(first, IsOk());
    ASSERT_THAT(second, IsOk());
    EXPECT_TRUE(first->Path().starts_with(directory.File("sts")));
    EXPECT_TRUE(first->Path().ends_with(".wav"));
    EXPECT_NE(first->Path(), second->Path());
    EXPECT_EQ(ModeOf(first->Path()), 0600U);
    const TemporaryFile moved = std::move(*first);
    EXPECT_TRUE(FileExists(moved.Path()));
  }
  EXPECT_EQ(Listing(directory.Path()), "");
  EXPECT_THAT(TemporaryFile::Create("sts", directory.File("none")), FailsWith(Outcome::TargetFailed));
}

}  // namespace
}  // namespace ts5
