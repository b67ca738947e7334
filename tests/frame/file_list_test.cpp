#include "frame/file_list.h"

#include <gmock/gmock.h>

#include <numeric>
#include <random>

namespace ts5 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

FreeFileList Burner() {
  FreeFileList list;
  for (const auto& [name, seconds] :
       {std::pair{"a.wav", 10U}, {"b.wav", 20U}, {"c.wav", 30U}, {"d.wav", 40U}}) {
    list.Append(EntryFromPath(name, seconds, 2));
  }
  return list;
}

std::string NamesOf(const FreeFileList& list) {
  std::string names;
  for (const FileListEntry& entry : list.Entries()) names += entry.path.substr(0, 1);
  return names;
}

TEST(FreeFileList, RemovingKeepsOrderTotalSelectionAndFocus) {
  FreeFileList list = Burner();
  EXPECT_EQ(list.Total(), 108U);
  list.Select({3, 1, 1, 99});
  EXPECT_THAT(list.Selection(), ElementsAre(1, 3));
  list.SetFocus(2);
  list.Remove({2, 0, 2, 77});
  EXPECT_EQ(NamesOf(list), "bd");
  EXPECT_EQ(list.Total(), 64U);
  EXPECT_THAT(list.Selection(), ElementsAre(0, 1));
  EXPECT_EQ(list.Focus(), 0U);
  list.Remove({1});
  EXPECT_EQ(list.Focus(), 0U) << "behind the last entry the focus goes to the last";
  list.Remove({0});
  EXPECT_EQ(list, FreeFileList{});
}

TEST(FreeFileList, MovingTakesTimesSelectionAndFocusAlong) {
  FreeFileList list = Burner();
  list.Select({1});
  list.SetFocus(1);
  EXPECT_TRUE(list.MoveUp());
  EXPECT_EQ(NamesOf(list), "bacd");
  EXPECT_EQ(list[0].duration, 20U);
  EXPECT_THAT(list.Selection(), ElementsAre(0));
  EXPECT_EQ(list.Focus(), 0U);
  EXPECT_FALSE(list.MoveUp());

  list.SetFocus(3);
  EXPECT_FALSE(list.MoveDown());
  EXPECT_TRUE(list.MoveUp());
  EXPECT_EQ(NamesOf(list), "badc");
  EXPECT_THAT(list.Selection(), ElementsAre(0)) << "an entry that did not move keeps its selection";

  list.Select({2, 3});
  list.SetFocus(2);
  EXPECT_TRUE(list.MoveDown());
  EXPECT_THAT(list.Selection(), ElementsAre(2, 3)) << "both stay selected";
  EXPECT_EQ(list.Total(), 108U);

  FreeFileList empty;
  EXPECT_FALSE(empty.MoveUp());
  EXPECT_FALSE(empty.MoveDown());
}

TEST(FreeFileList, StoredEntriesKeepTheirTimes) {
  const FileListEntry entry{"/m/a*b|c.wav", false, 185, 2};
  EXPECT_EQ(StoredEntry(entry, true), "/m/a*b|c.wav*185|2");
  EXPECT_EQ(StoredEntry(entry, false), "/m/a*b|c.wav");
  EXPECT_EQ(ParseStoredEntry("/m/a*b|c.wav*185|2"), entry);

  const struct {
    const char* text;
    FileListEntry entry;
  } kCases[] = {
      {"/m/a.wav", {"/m/a.wav", false, 0, 0}},
      {"/m/a.wav*185", {"/m/a.wav", false, 0, 0}},
      {"P C\\Track 3*60|0", {"P C\\Track 3", true, 60, 0}},
      {"/m/a.wav*-5|-1", {"/m/a.wav", false, 0, 0}},
      {"/m/a.wav*x|", {"/m/a.wav", false, 0, 0}},
      {"/m/a.wav*99999999999999999999|7", {"/m/a.wav", false, 2147483647, 7}},
      {"*|", {"", false, 0, 0}},
      {"", {"", false, 0, 0}},
  };
  for (const auto& test : kCases) EXPECT_EQ(ParseStoredEntry(test.text), test.entry) << test.text;
}

// The total is the sum of all times whatever is done to the list, and the selection stays valid.
TEST(FreeFileList, TotalAndSelectionSurviveAnyOrderOfOperations) {
  std::minstd_rand random(7);
  FreeFileList list;
  for (int step = 0; step < 3000; ++step) {
    const auto any = [&] { return list.Empty() ? std::size_t{0} : random() % (list.Size() + 1); };
    switch (random() % 8) {
      case 0:
      case 1:
      case 2:
        list.Append(EntryFromPath("x", static_cast<std::uint32_t>(random() % 4000000000U), 3));
        break;
      case 3:
        list.Remove({any(), any()});
        break;
      case 4:
        (void)list.MoveUp();
        break;
      case 5:
        (void)list.MoveDown();
        break;
      case 6:
        list.Select({any(), any(), any()});
        break;
      default:
        if (const std::size_t index = any(); index < list.Size()) list.SetTimes(index, 1, 1);
        list.SetFocus(any());
    }
    std::uint64_t total = 0;
    for (const FileListEntry& entry : list.Entries()) total += std::uint64_t{entry.duration} + entry.pause;
    ASSERT_EQ(list.Total(), total);
    ASSERT_TRUE(std::ranges::is_sorted(list.Selection()));
    ASSERT_TRUE(list.Selection().empty() || list.Selection().back() < list.Size());
  }
  list.SelectAll();
  list.Remove(list.Selection());
  EXPECT_EQ(list.Total(), 0U);
  EXPECT_THAT(list.Selection(), IsEmpty());
}

TEST(FreeFileList, TakesAnotherOrder) {
  FreeFileList list;
  for (const char* path : {"/a", "/b", "/c"}) list.Append({.path = path});
  list.Select({0, 1});
  list.SetFocus(1);
  for (const std::vector<std::size_t>& wrong :
       std::vector<std::vector<std::size_t>>{{0, 1}, {0, 0, 1}, {0, 1, 3}, {0, 1, 2, 3}})
    EXPECT_FALSE(list.Reorder(wrong));
  EXPECT_TRUE(list.Reorder({2, 0, 1}));
  EXPECT_EQ(list[0].path + list[1].path + list[2].path, "/c/a/b");
  EXPECT_EQ(list.Selection(), (std::vector<std::size_t>{1, 2}));
  EXPECT_EQ(list.Focus(), 2U);
}

TEST(DirectorySelection, NamesFilesFromTheDirectoryOn) {
  const DirectorySelection selection{.path = "/m"};
  EXPECT_EQ(selection.NameOf("/m/a.mid"), "a.mid");
  EXPECT_EQ(selection.NameOf("/m/Chor/a.mid"), "Chor/a.mid");
  EXPECT_EQ(selection.NameOf("/musik/a.mid"), "a.mid");
  EXPECT_EQ((DirectorySelection{.path = "/"}).NameOf("/a/b.mid"), "a/b.mid");
}

}  // namespace
}  // namespace ts5
