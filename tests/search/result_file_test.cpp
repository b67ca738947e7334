#include "search/result_file.h"

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "platform/base/text.h"
#include "search/hit_texts.h"
#include "search/result_lines.h"
#include "search/search_results.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using ::testing::ElementsAre;
using ::testing::HasSubstr;
using ::testing::StartsWith;

SearchHit Hit(std::string file, std::int32_t track, std::int32_t bar, std::int32_t time,
              std::int32_t voice = 0) {
  SearchHit hit;
  hit.file = std::move(file);
  hit.track = track;
  hit.bar = bar;
  hit.time = time;
  hit.voice = voice;
  return hit;
}

SearchRecord Record(SearchKind kind = SearchKind::Midi) {
  SearchRecord record;
  record.kind = kind;
  record.notes = 5;
  record.melodyName = "Grüße";
  record.start = {2026, 8, 5, 7, 3, 9};
  record.end = {2026, 8, 5, 7, 4, 10};
  record.statistics = {12, 3, 7};
  return record;
}

std::string Times(std::size_t count, char c) {
  return std::string(count, c);
}

std::string WithoutReturns(std::string text) {
  std::erase(text, '\r');
  return text;
}

std::string AllOf(const ResultLines& lines) {
  return lines.Text(0, lines.count);
}

Outcome Commit(StagedFile& file) {
  return file.Commit();
}

TEST(ShortenedPathTest, KeepsFortySevenCharacters) {
  const std::string exact = "/" + Times(42, 'a') + ".mid";
  ASSERT_EQ(exact.size(), 47u);
  struct Case {
    std::string path, expected;
  };
  const Case cases[] = {
      {exact, exact},
      {"/" + Times(43, 'a') + ".mid", "/" + Times(41, 'a') + "~.mid"},
      {R"(C:\Musik\Midi\)" + Times(30, 'x') + ".mid", R"(C:\...\Midi\)" + Times(30, 'x') + ".mid"},
      {R"(C:\Musik\Midi\)" + Times(33, 'x') + ".mid", R"(C:\...\...\)" + Times(31, 'x') + "~.mid"},
      {"/home/anna/Musik/Chor/Sommer/Lieder und Tänze.mid",
       "/.../.../Musik/Chor/Sommer/Lieder und Tänze.mid"},
      {"/a/" + Times(60, 'x') + ".extension", "/.../" + Times(41, 'x') + "~"},
      {"/a/" + Times(60, 'x') + ".exten", "/.../" + Times(35, 'x') + "~.exten"},
      {Times(60, 'x'), Times(46, 'x') + "~"},
      {"//" + Times(60, 'x'), "//" + Times(44, 'x') + "~"},
  };
  for (const Case& c : cases) {
    const std::string shortened = ShortenedPath(Windows1252FromUtf8(c.path));
    EXPECT_EQ(Utf8FromWindows1252(shortened), c.expected);
    EXPECT_LE(shortened.size(), kMaxShortPath);
  }
}

TEST(HitLineTest, IsByteExact) {
  EXPECT_EQ(HitLine(SearchKind::Midi, Hit("C:\\x.mid", 0, 4, 65999)),
            "C:\\x.mid" + Times(40, ' ') + "Spur 1     Takt 5     Zeit 01:05\r\n");
  EXPECT_EQ(HitLine(SearchKind::Midi, Hit("/Tänze/ž–日.mid", 99, 999, 3599999)),
            "/T\xE4nze/\x9E\x96?.mid" + Times(48 - 14, ' ') + "Spur 100   Takt 1000  Zeit 59:59\r\n");
  EXPECT_EQ(HitLine(SearchKind::Score, Hit("/a.stv", 1, -1, 3, 2)),
            "/a.stv" + Times(43, ' ') + "Zei2/Sti3   Takt 0     Schlag 4 \r\n");
  EXPECT_EQ(HitLine(SearchKind::Midi, Hit("/a\nb\r.mid", 0, 0, 0)).substr(0, 10), "/a?b?.mid ");
  EXPECT_EQ(HitLine(SearchKind::Midi, Hit("/a", 2147483647, 2147483647, 2147483647)).size(),
            48u + 15 + 1 + 15 + 1 + 13);
}

TEST(HitColumnsTest, CountFromOne) {
  const SearchHit midi = Hit("/m/lied.mid", 0, 0, 5999);
  EXPECT_THAT(HitColumns(SearchKind::Midi, midi, false), ElementsAre("lied.mid", "1", "1", "00:05"));
  EXPECT_THAT(HitColumns(SearchKind::Midi, midi, true), ElementsAre("/m/lied.mid", "1", "1", "00:05"));
  const SearchHit score = Hit("/m/lied.stv", 0, 2, 3);
  EXPECT_THAT(HitColumns(SearchKind::Score, score, false), ElementsAre("lied.stv", "1/1", "3", "4"));
  EXPECT_THAT(PrintedHit(SearchKind::Score, score, false),
              ElementsAre("lied.stv", "Zeile 01/Stimme 01", "Takt 0003", "Schlag 04"));
  EXPECT_THAT(PrintedHit(SearchKind::Midi, midi, false),
              ElementsAre("lied.mid", "Spur 0001", "Takt 0001", "Zeit 00:05"));
  EXPECT_THAT(HitColumnTitles(SearchKind::Score), ElementsAre("Datei", "Zeile/Stimme", "Takt", "Schlag"));
}

TEST(ResultFileTest, OneSearchIsByteExact) {
  const test::TemporaryDirectory directory;
  const std::string path = directory.File("treffer.txt");
  auto writer = ResultFileWriter::Create(path, false, Record());
  ASSERT_THAT(writer, IsOk());
  EXPECT_THAT(writer->WriteHit(Hit("C:\\x.mid", 1, 2, 1000)), IsOk());
  EXPECT_THAT(writer->Finish(Record(), Commit), IsOk());
  const std::string expected = Times(75, '=') + "sts5=\r\n" +  //
                               "Suchergebnisse betreffend die Melodie \"Gr\xFC\xDF"
                               "e\"\r\n" +  //
                               Times(80, '=') +
                               "\r\n" +                                                                 //
                               "Durchgef\xFChrt: 05/08/2026 07:03:09\r\n" +                             //
                               Times(80, '-') + "\r\n" +                                                //
                               "C:\\x.mid" + Times(40, ' ') + "Spur 2     Takt 3     Zeit 00:01\r\n" +  //
                               Times(80, '-') + "\r\n" +                                                //
                               "Erfolgreich beendet 07:04:10\r\n" + Times(80, '-') + "\r\n" +           //
                               "Statistik: 15 Dateien durchsucht\r\n" +                                 //
                               "           3 Dateien nicht geeignet\r\n" +                              //
                               "           7 Melodie(n) gefunden\r\n" + Times(80, '=') + "\r\n";
  EXPECT_EQ(test::Content(path), expected);
  const std::string shown = WithoutReturns(Utf8FromWindows1252(expected));
  EXPECT_EQ(AllOf(LoadResultFile(path).value()), shown);

  SearchResults screen;
  screen.Begin(Record(), OldSearchResults::Delete, {});
  ASSERT_THAT(screen.Add(Hit("C:\\x.mid", 1, 2, 1000)), IsOk());
  EXPECT_EQ(AllOf(LinesOf(screen)), shown);
}

TEST(ResultFileTest, AppendsBehindTheOldSearch) {
  const test::TemporaryDirectory directory;
  const std::string path = directory.Write("treffer.txt", ResultTagLine());
  SearchRecord record = Record();
  record.melodyName.clear();
  record.ending = SearchEnd::Cancelled;
  auto writer = ResultFileWriter::Create(path, true, record);
  ASSERT_THAT(writer, IsOk());
  EXPECT_EQ(test::Content(path), ResultTagLine());  // until it is finished
  EXPECT_THAT(writer->Finish(record, Commit), IsOk());
  const std::string content = test::Content(path);
  EXPECT_THAT(content, StartsWith(std::string(ResultTagLine()) + std::string(ResultTagLine()) +
                                  "Suchergebnisse betreffend die Melodie \"unbekannt\"\r\n"));
  EXPECT_THAT(content, HasSubstr("Abgebrochen durch Anwender 07:04:10"));
  EXPECT_THAT(LoadResultFile(path), IsOk());
}

// Whatever follows the first line is shown as it is; only what no line of results ever is gets cut.
TEST(ResultFileTest, ShowsTheFileAsItIs) {
  const test::TemporaryDirectory directory;
  const std::string tag(ResultTagLine());
  const std::string shownTag = WithoutReturns(tag);
  struct Case {
    std::string behind, shown;
  };
  const Case cases[] = {{"", ""},
                        {"\x80 frei", "€ frei\n"},
                        {"\n\r\n\n", "\n\n\n"},
                        {"a\rb\r\r\n", "a\rb\r\n"},
                        {std::string("\0x", 2), std::string("\0x\n", 3)},
                        {Times(100'000, 'x') + "\ny", Times(kMaxLineLength, 'x') + "\ny\n"}};
  for (const Case& c : cases) {
    const auto lines = LoadResultFile(directory.Write("a", tag + c.behind));
    ASSERT_THAT(lines, IsOk());
    EXPECT_EQ(AllOf(*lines), shownTag + c.shown);
    EXPECT_LE(lines->longest, kMaxLineLength);
  }
}

TEST(ResultFileTest, RefusesWhatIsNone) {
  const test::TemporaryDirectory directory;
  const std::string tag(ResultTagLine());
  EXPECT_THAT(LoadResultFile(directory.Write("a", "")), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(LoadResultFile(directory.Write("b", tag.substr(0, 81))), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(LoadResultFile(directory.Write("c", "x" + tag)), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(LoadResultFile(directory.File("fehlt")), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(LoadResultFile(directory.Path()), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(LoadResultFile(directory.Write("d", tag), [] { return true; }), FailsWith(Outcome::Cancelled));
  EXPECT_EQ(ResultFileFailureText(Outcome::WrongFormat),
            "Diese Datei ist keine reguläre sTS-Ergebnisdatei. Wählen Sie eine andere.");
  EXPECT_THAT(ResultFileWriter::Create(directory.File("fehlt/x.txt"), false, Record()),
              FailsWith(Outcome::TargetFailed));
}

TEST(ResultFileTest, AFullDiskLeavesTheOldFile) {
  auto writer = ResultFileWriter::Create("/dev/full/x.txt", false, Record());
  EXPECT_THAT(writer, FailsWith(Outcome::TargetFailed));
  const test::TemporaryDirectory directory;
  const std::string path = directory.Write("alt.txt", "alt");
  {
    auto unfinished = ResultFileWriter::Create(path, false, Record());
    ASSERT_THAT(unfinished, IsOk());
    EXPECT_THAT(unfinished->WriteHit(Hit("/x.mid", 0, 0, 0)), IsOk());
  }
  EXPECT_EQ(test::Content(path), "alt");
  EXPECT_EQ(test::Listing(directory.Path()), "alt.txt");
}

TEST(SearchResultsTest, OldHitsGoByTheSetting) {
  struct Case {
    OldSearchResults policy;
    bool answer;
    SearchKind kind;
    std::size_t left;
    int asked;
  };
  const Case cases[] = {{OldSearchResults::Delete, false, SearchKind::Midi, 0, 0},
                        {OldSearchResults::Extend, false, SearchKind::Midi, 2, 0},
                        {OldSearchResults::Ask, false, SearchKind::Midi, 2, 1},
                        {OldSearchResults::Ask, true, SearchKind::Midi, 0, 1},
                        {OldSearchResults::Extend, false, SearchKind::Score, 0, 0}};
  for (const Case& c : cases) {
    SearchResults results;
    int asked = 0;
    const auto ask = [&] {
      ++asked;
      return c.answer;
    };
    results.Begin(Record(), OldSearchResults::Ask, ask);
    EXPECT_EQ(asked, 0) << "nothing to ask about";
    ASSERT_THAT(results.Add(Hit("/a.mid", 0, 0, 0)), IsOk());
    ASSERT_THAT(results.Add(Hit("/a.mid", 1, 0, 61000)), IsOk());
    results.Begin(Record(c.kind), c.policy, ask);
    EXPECT_EQ(results.Size(), c.left);
    EXPECT_EQ(asked, c.asked);
  }
}

TEST(SearchResultsTest, KeepsFilesApartAndCopiesRows) {
  SearchResults results;
  results.Begin(Record(), OldSearchResults::Delete, {});
  for (int i = 0; i < 1000; ++i) {
    ASSERT_THAT(results.Add(Hit("/m/" + std::to_string(i / 10) + ".mid", i % 10, i, 1000 * i)), IsOk());
  }
  EXPECT_EQ(results.Hit(999), Hit("/m/99.mid", 9, 999, 999000));
  EXPECT_EQ(results.Hit(10), Hit("/m/1.mid", 0, 10, 10000));
  // A hit keeps the number of notes of the melody it was found with.
  SearchRecord next = Record();
  next.notes = 12;
  results.Begin(next, OldSearchResults::Extend, {});
  ASSERT_THAT(results.Add(Hit("/m/x.mid", 0, 0, 0)), IsOk());
  EXPECT_EQ(results.Notes(999), Record().notes);
  EXPECT_EQ(results.Notes(1000), 12u);
  const std::vector<std::size_t> rows = {0, 61};
  EXPECT_EQ(results.CopyText(rows, false), "0.mid\t1\t1\t00:00\n6.mid\t2\t62\t01:01\n");
}

}  // namespace
}  // namespace ts5
