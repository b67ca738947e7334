// What a list shows of its files, and in which order.
#include "frame/list_order.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <stdexcept>

#include "frame/facts_memory.h"
#include "frame/file_columns.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;
using testing::ElementsAre;
using testing::IsEmpty;

// Names of what is shown.
std::vector<std::string> Shown(
    const std::vector<FileListEntry>& entries, const ListOrder& order,
    const EntryFacts& facts = [](std::size_t) { return nullptr; }) {
  std::vector<std::string> names;
  for (const std::uint32_t entry : ShownEntries(entries, order, "/m", facts))
    names.push_back(entries[entry].path.substr(3));
  return names;
}

std::vector<FileListEntry> Entries(std::initializer_list<const char*> names) {
  std::vector<FileListEntry> entries;
  for (const char* name : names) entries.push_back({.path = std::string("/m/") + name});
  return entries;
}

TEST(ListOrder, NamesGoAsPeopleCount) {
  const auto entries =
      Entries({"Lied 10.mid", "lied 2.mid", "Zug.mid", "Ärger.mid", "Lied 002.mid", "a/Lied 1.mid"});
  EXPECT_EQ(Shown(entries, {}).front(), "Lied 10.mid") << "its own order";
  EXPECT_THAT(
      Shown(entries, {.column = FileColumn::Name}),
      ElementsAre("Ärger.mid", "a/Lied 1.mid", "lied 2.mid", "Lied 002.mid", "Lied 10.mid", "Zug.mid"));
  EXPECT_THAT(
      Shown(entries, {.column = FileColumn::Name, .descending = true}),
      ElementsAre("Zug.mid", "Lied 10.mid", "lied 2.mid", "Lied 002.mid", "a/Lied 1.mid", "Ärger.mid"))
      << "equal ones keep their order either way";
  EXPECT_EQ(CompareKeys("a99999999999999999999999b", "a100000000000000000000000b"), -1)
      << "no number is too long";
}

TEST(ListOrder, WhatHasNoSuchFactStandsAtTheEnd) {
  const auto entries = Entries({"a", "b", "c", "d"});
  const std::vector<FileFacts> facts{{.size = 5, .length = seconds(90)},
                                     {.size = 9, .key = "G-Dur"},
                                     {.size = 1, .length = seconds(9), .key = "C-Dur"}};
  const EntryFacts of = [&](std::size_t i) { return i < facts.size() ? &facts[i] : nullptr; };
  const auto by = [&](FileColumn column, bool descending) {
    return Shown(entries, {.column = column, .descending = descending}, of);
  };
  EXPECT_THAT(by(FileColumn::Length, false), ElementsAre("c", "a", "b", "d"));
  EXPECT_THAT(by(FileColumn::Length, true), ElementsAre("a", "c", "b", "d"));
  EXPECT_THAT(by(FileColumn::Size, true), ElementsAre("b", "a", "c", "d"));
  EXPECT_THAT(by(FileColumn::Key, true), ElementsAre("b", "c", "a", "d"));
}

TEST(ListOrder, TheFilterLooksBehindTheCommonDirectory) {
  const auto entries = Entries({"Chor/Alt 1.mid", "Chor/SOPRAN.mid", "Übung.mid"});
  EXPECT_THAT(Shown(entries, {.filter = "sopran"}), ElementsAre("Chor/SOPRAN.mid"));
  EXPECT_THAT(Shown(entries, {.filter = " 1  chor "}), ElementsAre("Chor/Alt 1.mid"));
  EXPECT_THAT(Shown(entries, {.filter = "übung"}), ElementsAre("Übung.mid"));
  EXPECT_THAT(Shown(entries, {.filter = "/m"}), IsEmpty());
  EXPECT_EQ(Shown(entries, {.filter = "  "}).size(), 3U);
}

TEST(ListOrder, IsKeptByName) {
  for (const char* stored : {"", "Name", "-Length", "Directory", "-Voices"})
    EXPECT_EQ(StoredSorting(SortingFrom(stored)), stored);
  EXPECT_TRUE(SortingFrom("-Unsinn").IsOwn());
  EXPECT_EQ(NamesOf(ColumnsFrom("Date Unsinn Length")), "Length Date");
  EXPECT_THAT(ColumnsFrom(NamesOf({})), IsEmpty());
  const ColumnWidths widths{{FileColumn::Name, 300}, {FileColumn::Length, 80}, {FileColumn::Key, 90}};
  const std::string stored = NamesOf({FileColumn::Length, FileColumn::Size}, widths);
  EXPECT_EQ(stored, "Length=80 Size Name=300") << "what is not shown has no width";
  EXPECT_EQ(ColumnsFrom(stored).size(), 2U);
  EXPECT_EQ(NamesOf(ColumnsFrom(stored), WidthsFrom(stored)), stored);
  EXPECT_THAT(WidthsFrom("Length=-1 Size=x Date= Key=99999999999 =5 Time=7 Unsinn=8"), IsEmpty());
}

TEST(FileColumns, SayWhatAFileHas) {
  const auto text = [](FileColumn column, const FileFacts& facts) {
    return FindFactColumn(column)->text(facts);
  };
  EXPECT_EQ(text(FileColumn::Length, {}), "");
  EXPECT_EQ(text(FileColumn::Length, {.length = milliseconds(185'999)}), "3:05");
  EXPECT_EQ(text(FileColumn::Length, {.length = seconds(3723)}), "1:02:03");
  const struct {
    std::uint64_t size;
    const char* text;
  } kSizes[] = {{0, "0 B"},          {999, "999 B"},      {1000, "1,0 kB"},      {9940, "9,9 kB"},
                {123'456, "123 kB"}, {999'500, "1,0 MB"}, {4'200'000, "4,2 MB"}, {5'000'000'000, "5,0 GB"}};
  for (const auto& test : kSizes) EXPECT_EQ(text(FileColumn::Size, {.size = test.size}), test.text);
  EXPECT_EQ(text(FileColumn::Key, {.key = "G-Dur", .keyChanges = true}), "G-Dur …");
  EXPECT_EQ(text(FileColumn::Tempo, {.tempo = 119.9}), "120");
  EXPECT_EQ(text(FileColumn::Voices, {.voices = 1}), "1 Stimme");
  EXPECT_EQ(text(FileColumn::Voices, {.voices = 4}), "4 Stimmen");
  EXPECT_EQ(text(FileColumn::Voices, {.channels = 2}), "Stereo");
  EXPECT_EQ(SumText(seconds(59)), "59 s");
  EXPECT_EQ(SumText(seconds(3599)), "1 h 0 min");
  EXPECT_EQ(SumText(std::chrono::minutes(252)), "4 h 12 min");
}

TEST(FileFacts, AreReadAgainWhenTheFileIsAnotherOne) {
  const test::TemporaryDirectory place;
  const std::string file = place.Write("a.mid", "abc");
  int reads = 0;
  const FactsReader reader = [&](const std::string&, FileFacts& facts, const CancelCheck&) {
    facts.voices = static_cast<std::uint32_t>(++reads);
  };
  const SharedFacts first = FactsOf(file, nullptr, reader);
  ASSERT_TRUE(first);
  EXPECT_EQ(first->size, 3U);
  EXPECT_EQ(FactsOf(file, first, reader), first);
  EXPECT_EQ(reads, 1);
  place.Write("a.mid", "abcd");
  EXPECT_EQ(FactsOf(file, first, reader)->voices, 2U);
  EXPECT_EQ(FactsOf(place.File("weg.mid"), first, reader), nullptr);
  // Size and date alone come without reading, and are not taken for all.
  const SharedFacts dated = FactsOf(file, nullptr, {});
  EXPECT_TRUE(dated->unread && dated->size == 4);
  EXPECT_EQ(FactsOf(file, dated, {}), dated);
  EXPECT_FALSE(FactsOf(file, dated, reader)->unread);
  const SharedFacts broken =
      FactsOf(file, nullptr, [](const std::string&, FileFacts& facts, const CancelCheck&) {
        facts.voices = 9;
        throw std::runtime_error("damaged");
      });
  EXPECT_EQ(*broken, (FileFacts{.size = 4, .written = broken->written}))
      << "size and date are told all the same";
}

TEST(FactsMemory, ForgetsWhatWasLongestUnused) {
  FactsMemory memory(2);
  const auto facts = [](std::uint64_t size) {
    return std::make_shared<const FileFacts>(FileFacts{.size = size});
  };
  memory.Remember("/a", facts(1));
  memory.Remember("/b", facts(2));
  EXPECT_EQ(memory.Find("/a")->size, 1U);
  memory.Remember("/c", facts(3));
  EXPECT_EQ(memory.Find("/b"), nullptr);
  EXPECT_EQ(memory.Find("/a")->size, 1U);
}

TEST(FactsMemory, ComesBackWholeOrNotAtAll) {
  FactsMemory memory;
  const FileFacts facts{.size = 1ULL << 40,
                        .written = -5,
                        .length = milliseconds(1234),
                        .key = "fis-Moll",
                        .metre = "6/8",
                        .tempo = 92.5,
                        .keyChanges = true,
                        .tempoChanges = true,
                        .voices = 7};
  memory.Remember("/m/Übung.mid", std::make_shared<const FileFacts>(facts));
  memory.Remember("/m/b.wav", std::make_shared<const FileFacts>(FileFacts{.size = 3, .channels = 2}));
  EXPECT_TRUE(memory.Changed());
  const Bytes packed = memory.Pack();
  EXPECT_FALSE(memory.Changed());

  FactsMemory other;
  other.Remember("/m/b.wav", std::make_shared<const FileFacts>(FileFacts{.size = 4}));
  other.Unpack(packed);
  EXPECT_EQ(*other.Find("/m/Übung.mid"), facts);
  EXPECT_EQ(other.Find("/m/b.wav")->size, 4U) << "what the session knows is newer";
  FactsMemory third;
  third.Remember("/m/b.wav", std::make_shared<const FileFacts>(FileFacts{.size = 5}));
  third.TakeIn(std::move(other));
  EXPECT_EQ(*third.Find("/m/Übung.mid"), facts);
  EXPECT_EQ(third.Find("/m/b.wav")->size, 5U);
  FactsMemory few;
  few.Unpack(memory.Pack(1));
  EXPECT_EQ(few.Size(), 1U);

  for (std::size_t at = 0; at < packed.size(); ++at) {
    Bytes damaged = packed;
    damaged[at] ^= 0x10;
    FactsMemory none;
    none.Unpack(damaged);
    none.Unpack(ByteView(packed).first(at));
    EXPECT_EQ(none.Size(), 0U) << at;
  }
}

}  // namespace
}  // namespace ts5
