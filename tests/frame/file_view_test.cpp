#include "frame/file_view.h"

#include <gmock/gmock.h>

#include "frame/file_rename.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

TEST(FileView, ColumnsOfEntries) {
  const struct {
    const char* path;
    const char* name;
    const char* directory;
  } kCases[] = {
      {"/home/u/Lied.mid", "Lied.mid", "/home/u"}, {"/Lied.mid", "Lied.mid", "/"},
      {"C:\\Lied.mid", "Lied.mid", "C:\\"},        {"C:\\m\\Lied.mid", "Lied.mid", "C:\\m"},
      {"P C\\Track 3", "Track 3", "P C"},
  };
  for (const auto& test : kCases) {
    const FileListEntry entry = EntryFromPath(test.path, 185, 2);
    EXPECT_EQ(ColumnText(entry, FileColumn::Name), test.name);
    EXPECT_EQ(ColumnText(entry, FileColumn::Directory), test.directory);
    EXPECT_EQ(ColumnText(entry, FileColumn::Time), "3:05");
    EXPECT_EQ(ColumnText(entry, FileColumn::Pause), "2");
  }
  EXPECT_EQ(TimeText(59), "0:59");
  EXPECT_EQ(TimeText(6000), "100:00");
}

TEST(FileView, DriveTexts) {
  EXPECT_EQ(DriveFailedText(1), "Laufwerk d: kann nicht geöffnet werden.");
  EXPECT_EQ(TreeRootText(0), "Verzeichnisse auf c:");
}

TEST(FileView, SwitchesBetweenDirectoryAndList) {
  EXPECT_EQ(SwitchedSourceDrive(2, "/m", 2, false), kListModeDrive);
  EXPECT_EQ(SwitchedSourceDrive(2, "", 0, false), kListModeDrive);
  EXPECT_EQ(SwitchedSourceDrive(kListModeDrive, "/m", 1, false), 1);
  EXPECT_EQ(SwitchedSourceDrive(kListModeDrive, "", 1, false), std::nullopt);
  EXPECT_EQ(SwitchedSourceDrive(2, "/m", 2, true), std::nullopt);
}

TEST(FileView, AsksBeforeFilesGo) {
  EXPECT_EQ(DeleteQuestion(true, 1, "a.mid"),
            "Wollen Sie die Datei \"a.mid\" wirklich aus der freien Dateiliste löschen?");
  EXPECT_EQ(DeleteQuestion(true, 3, ""),
            "Wollen Sie die ausgewählten 3 Dateien wirklich aus der freien Dateiliste löschen?");
  EXPECT_EQ(DeleteQuestion(false, 1, "100%s.mid"), "Wollen Sie die Datei \"100%s.mid\" wirklich löschen?");
  EXPECT_EQ(DeleteQuestion(false, 0, ""), "Wollen Sie die ausgewählten 0 Dateien wirklich löschen?");
}

TEST(FileRename, DecidesByTheNewName) {
  using enum RenamePlan::Kind;
  const struct {
    const char* path;
    std::string name;
    RenamePlan::Kind kind;
    const char* newPath;
  } kCases[] = {
      {"/m/a.mid", "b.mid", Rename, "/m/b.mid"},
      {"/a.mid", "b.mid", Rename, "/b.mid"},
      {"/m/a.mid", "A.MID", Nothing, ""},
      {"/m/a.mid", "", Nothing, ""},
      {"/m/a.mid", "b", Ask, "/m/b"},
      {"/m/a.mid", "b.txt", Ask, "/m/b.txt"},
      {"/m/a.mid", "b.cda", Ask, "/m/b.cda"},
      {"/m/a.mid", "../b.mid", Refused, ""},
      {"/m/a.mid", "/etc/b.mid", Refused, ""},
      {"/m/a.mid", "..", Refused, ""},
      {"/m/a.mid", std::string("b\0.mid", 6), Refused, ""},
      {"/m/a.mid", std::string(253, 'x') + ".mid", Refused, ""},
      {"P C\\Track 3", "Track 4", Nothing, ""},
  };
  for (const auto& test : kCases) {
    const RenamePlan plan = PlanRename(test.path, test.name);
    EXPECT_EQ(plan.kind, test.kind) << test.path << " to " << test.name;
    EXPECT_EQ(plan.newPath, test.newPath);
  }
}

TEST(FileRename, NeverGoesOverAnotherFile) {
  const test::TemporaryDirectory directory;
  FreeFileList list;
  list.Append(EntryFromPath(directory.Write("a.mid", "first")));
  const std::string other = directory.Write("b.mid", "second");
  EXPECT_THAT(RenameEntry(list, 0, other), test::FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(list[0].path, directory.File("a.mid"));
  EXPECT_EQ(test::Content(other), "second");
  EXPECT_THAT(RenameEntry(list, 0, directory.File("c.mid")), test::IsOk());
  EXPECT_EQ(list[0].path, directory.File("c.mid"));
  EXPECT_EQ(test::Content(list[0].path), "first");
  EXPECT_THAT(RenameEntry(list, 7, other), test::FailsWith(Outcome::SourceFailed));
}

}  // namespace
}  // namespace ts5
