#include "frame/file_list_file.h"

#include <gmock/gmock.h>

#include <ctime>

#include "platform/base/text.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using testing::ElementsAre;

constexpr std::string_view kHead =
    "[sts5 Filelist]\r\n"
    "=====================================================\r\n"
    "Stop!!=Diese Datei wurde automatisch erzeugt und darf AUF KEINEN FALL editiert werden !!\r\n";

class FileListFile : public testing::Test {
 protected:
  // A list file with a Files line and these values.
  std::string ListOf(std::string_view count, const std::vector<std::string>& values) const {
    std::string text = std::string(kHead) + "Files=" + std::string(count) + "\r\n";
    for (std::size_t i = 0; i < values.size(); ++i) text += std::to_string(i + 1) + "=" + values[i] + "\r\n";
    return directory_.Write("list.sts", text);
  }
  Result<LoadedFileList> Load(const std::string& path, bool burner = false) const {
    return LoadFileList(path, burner, VolumeTable::Of(directory_.Path(), "", {}));
  }
  std::string File(std::string_view name) const { return directory_.Write(name, "x"); }

  test::TemporaryDirectory directory_;
};

TEST_F(FileListFile, IsWrittenLineByLine) {
  FreeFileList list;
  for (const char* path : {"/m/a.mid", "/m/Übung.mid", "/m/c.mid"}) list.Append(EntryFromPath(path, 185, 2));
  const std::string path =
      directory_.Write("list.sts", "an older list that is longer than the new one\r\n[x]\r\n1=2");
  ASSERT_THAT(SaveFileList(path, list, false), test::IsOk());
  EXPECT_EQ(test::Content(path), std::string(kHead) +
                                     "Files=3\r\n1=/m/a.mid\r\n2=/m/\xDC"
                                     "bung.mid\r\n3=/m/c.mid\r\n");
  ASSERT_THAT(SaveFileList(path, list, true), test::IsOk());
  EXPECT_EQ(test::Content(path), std::string(kHead) +
                                     "Files=3\r\n1=/m/a.mid*185|2\r\n2=/m/\xDC"
                                     "bung.mid*185|2\r\n3=/m/c.mid*185|2\r\n");
  EXPECT_THAT(SaveFileList(directory_.File("missing/list.sts"), list, false),
              test::FailsWith(Outcome::TargetFailed));
  EXPECT_EQ(FileListName("/m/liste"), "/m/liste.sts");
  EXPECT_EQ(FileListName("/m/Liste.STS"), "/m/Liste.STS");
}

TEST_F(FileListFile, KeepsEveryPathThereAndBack) {
  FreeFileList list;
  for (const char* name :
       {"Lied.MID", "Dvořák Ω.mid", "a*b|c.wav", "a*1|2.wav", "ohne", "with = sign.mid", "; x.mid"}) {
    list.Append(EntryFromPath(File(name), 3, 1));
  }
  const std::string path = directory_.File("list.sts");
  for (const bool burner : {false, true}) {
    ASSERT_THAT(SaveFileList(path, list, burner), test::IsOk());
    const auto loaded = Load(path, burner);
    ASSERT_THAT(loaded, test::IsOk());
    EXPECT_EQ(loaded->missing, 0U);
    ASSERT_EQ(loaded->entries.size(), list.Size());
    for (std::size_t i = 0; i < list.Size(); ++i) {
      EXPECT_EQ(loaded->entries[i].path, list[i].path);
      EXPECT_EQ(StoredEntry(loaded->entries[i], burner), StoredEntry(list[i], burner));
    }
  }
}

TEST_F(FileListFile, FindsUmlautsInWhateverEncoding) {
  const std::string song = File("lied äö.mid");
  const std::string both = File("Ã¤.mid");  // what the bytes of ä in UTF-8 are in Windows-1252
  File("ä.mid");
  const std::string utf8 = ListOf("2", {song, directory_.File("Ã¤.mid")});
  const std::string text = test::Content(utf8);
  for (const std::string& content :
       {text, "\xEF\xBB\xBF" + text, Windows1252FromUtf8(text), test::Utf16Bytes(Utf16FromUtf8(text))}) {
    const auto loaded = Load(directory_.Write("list.sts", content));
    ASSERT_TRUE(loaded);
    EXPECT_EQ(loaded->missing, 0U);
    ASSERT_EQ(loaded->entries.size(), 2U);
    EXPECT_EQ(loaded->entries[0].path, song);
    EXPECT_EQ(loaded->entries[1].path, both) << "what is found as it stands is not guessed at";
  }
}

TEST_F(FileListFile, LoadsBurnerTimes) {
  const std::string wave = File("a.wav");
  const auto loaded = Load(ListOf("3", {wave + "*185|2", wave + "*x|", wave + "*60"}), true);
  ASSERT_THAT(loaded, test::IsOk());
  EXPECT_THAT(loaded->entries,
              ElementsAre(FileListEntry{wave, false, 185, 2}, FileListEntry{wave, false, 0, 0},
                          FileListEntry{wave, false, 0, 0}));
  FreeFileList list;
  EXPECT_FALSE(TakeLoadedList(list, *loaded, true, true));
  EXPECT_EQ(list.Total(), 187U);
  EXPECT_FALSE(TakeLoadedList(list, *loaded, false, true));
  EXPECT_EQ(list.Size(), 6U);
  EXPECT_FALSE(TakeLoadedList(list, *loaded, true, true));
  EXPECT_EQ(list.Size(), 3U);
  EXPECT_EQ(list.Total(), 187U);
}

TEST_F(FileListFile, BurnerListHoldsNinetyNineEntries) {
  const std::vector<std::string> values(120, File("a.wav") + "*1|0");
  FreeFileList list;
  EXPECT_TRUE(TakeLoadedList(list, Load(ListOf("120", values), true).value(), true, true));
  EXPECT_EQ(list.Size(), kMaxBurnerEntries);
  EXPECT_FALSE(TakeLoadedList(list, Load(ListOf("120", values), false).value(), true, false));
  EXPECT_EQ(list.Size(), 120U);
}

TEST_F(FileListFile, CountsWhatIsMissing) {
  const std::string file = File("a.mid");
  (void)File("sub/b.mid");
  const std::string longName = directory_.Path() + "/" + std::string(300, 'x') + ".mid";
  const struct {
    const char* count;
    std::vector<std::string> values;
    std::size_t entries;
    std::uint64_t missing;
  } kCases[] = {
      {"3", {file, "/missing.mid", ""}, 1, 2},
      {"2", {file, file, file}, 2, 0},  // more keys than the count says
      {"5", {file}, 1, 4},              // holes
      {"0", {file}, 0, 0},
      {"2000000000", {file, file}, 2, 1999999998},
      {"1", {longName}, 0, 1},
      {"1", {directory_.Path()}, 0, 1},        // a directory is no file
      {"2", {"P C\\Track 3", "a.mid"}, 1, 1},  // a relative path is looked for beside the list
      {"2", {"sub/b.mid", "sub\\b.mid"}, 2, 0},
      {"2x", {file, file}, 2, 0},
      {"x", {file}, 0, 0},
  };
  for (const auto& test : kCases) {
    const auto loaded = Load(ListOf(test.count, test.values));
    ASSERT_THAT(loaded, test::IsOk()) << test.count;
    EXPECT_EQ(loaded->entries.size(), test.entries) << test.count;
    EXPECT_EQ(loaded->missing, test.missing) << test.count;
  }
}

TEST_F(FileListFile, ReadsCountAndValuesAsTheyStand) {
  const std::string file = File("a.mid");
  // Keys of other spellings are other keys; the first of two counts; other sections do not.
  const std::string path =
      directory_.Write("list.sts", "[other]\n1=/x\n[STS5 FILELIST]\nfiles=2\n01=/x\n+1=/x\n1 = \"" + file +
                                       "\" \n1=/x\n2=" + file + "\n");
  const auto loaded = Load(path);
  ASSERT_THAT(loaded, test::IsOk());
  EXPECT_EQ(loaded->entries.size(), 2U);
  EXPECT_EQ(loaded->entries[0].path, file);
}

TEST_F(FileListFile, RefusesWhatIsNoList) {
  EXPECT_THAT(Load(directory_.File("missing.sts")), test::FailsWith(Outcome::NotAFileList));
  EXPECT_THAT(Load(directory_.Path()), test::FailsWith(Outcome::NotAFileList));
  for (const std::string& text :
       {std::string(), std::string("\0\xFF\x7F", 3), std::string("[sts5 Filelist]\r\n1=/m/a.mid\r\n"),
        std::string("[sts5 Filelist]\r\nFiles=-1\r\n"), std::string("Files=1\r\n1=/m\r\n")}) {
    EXPECT_THAT(Load(directory_.Write("bad.sts", text)), test::FailsWith(Outcome::NotAFileList)) << text;
  }
  const std::string plain = ListOf("1", {File("a.wav")});
  EXPECT_THAT(Load(plain, true), test::FailsWith(Outcome::NotABurnerList));
  EXPECT_THAT(Load(ListOf("0", {}), true), test::FailsWith(Outcome::NotABurnerList));

  EXPECT_EQ(LoadMessage(Load(plain, true), plain)->text,
            "Die Dateiliste ist für einen Brenn-Job nicht geeignet.");
  EXPECT_EQ(
      LoadMessage(Load("/x.sts"), "/x.sts")->text,
      "Die freie Dateiliste \"/x.sts\" konnte nicht geladen werden.\nDie Datei \"/x.sts\" gibt es nicht.");
  const std::string other = directory_.Write("other.sts", "MThd");
  EXPECT_THAT(LoadMessage(Load(other), other)->text, testing::EndsWith("\" eine Midi-Datei."));
  EXPECT_EQ(LoadMessage(Load(ListOf("4", {File("a.wav")})), plain)->text,
            "3 Datei(en) konnten nicht geladen werden. Überprüfen Sie die Pfade.");
  EXPECT_FALSE(LoadMessage(Load(ListOf("1", {File("a.wav")})), plain).has_value());
}

// Eight times as many entries take about eight times as long, also when every one of them is spelled in
// another case.
TEST_F(FileListFile, LongListsTakeLinearTime) {
  const std::string file = File("Musik/Lied.mid");
  const auto ticksFor = [&](std::size_t entries) {
    FreeFileList list;
    for (std::size_t i = 0; i < entries / 2; ++i) {
      list.Append(EntryFromPath(file));
      list.Append(EntryFromPath("C:\\MUSIK\\..\\musik\\LIED.MID"));
    }
    const std::string path = directory_.File("list.sts");
    const std::clock_t start = std::clock();  // of the processor: other work on the machine does not count
    EXPECT_THAT(SaveFileList(path, list, false), test::IsOk());
    const auto loaded = Load(path);
    EXPECT_EQ(loaded->entries.size(), entries);
    return std::clock() - start;
  };
  EXPECT_LT(ticksFor(80'000), 24 * ticksFor(10'000));
}

}  // namespace
}  // namespace ts5
