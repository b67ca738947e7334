// How titles are practised: the passage by bars, what is kept of it, and for how long.
#include "frame/practice.h"

#include <gtest/gtest.h>

#include <array>

#include "frame/practice_book.h"
#include "platform/files/files.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using std::chrono::nanoseconds;
using test::IsOk;

TEST(Practice, APassageIsOfWholeBars) {
  const std::array<nanoseconds, 3> bars{0s, 2s, 4s};
  EXPECT_EQ(PassageBegin(2500ms, bars), 2s);
  EXPECT_EQ(PassageBegin(4s, bars), 4s);
  EXPECT_EQ(PassageEnd(2500ms, 5s, bars), 4s);
  EXPECT_EQ(PassageEnd(4500ms, 5s, bars), 5s);
  EXPECT_EQ(PassageBegin(2500ms, {}), 2500ms);
  EXPECT_EQ(PassageEnd(2500ms, 5s, {}), 2500ms);
}

TEST(Practice, WhatDoesNotFitTheTitleIsLeftOut) {
  Practice practice;
  practice.speed = 1000;
  practice.shift = -99;
  practice.passage = PracticePassage{2s, 9s};
  practice.solo = {1, 7};
  const Practice limited = Limited(practice, 4s, 2);
  EXPECT_EQ(limited.solo, std::set<std::uint32_t>{1});
  EXPECT_EQ(limited.speed, kFastestPractice);
  EXPECT_EQ(limited.shift, -kFarthestShift);
  EXPECT_EQ(limited.passage, (PracticePassage{2s, 4s}));
  EXPECT_EQ(Limited(practice, 2s, 2).passage, std::nullopt) << "it lies behind the end";
}

TEST(Practice, SoloCountsMoreThanMute) {
  Practice practice;
  practice.muted = {1};
  EXPECT_TRUE(practice.Sounds(0));
  EXPECT_FALSE(practice.Sounds(1));
  practice.solo = {1};
  EXPECT_FALSE(practice.Sounds(0));
  EXPECT_TRUE(practice.Sounds(1));
}

TEST(Practice, TextsKeepAllAndAnyTextIsRead) {
  Practice practice;
  practice.passage = PracticePassage{12s, 15500ms};
  practice.speed = 75;
  practice.shift = -2;
  practice.muted = {1, 3};
  practice.solo = {2};
  EXPECT_EQ(PracticeText(practice), "A=12000 B=15500 speed=75 shift=-2 mute=1,3 solo=2");
  EXPECT_EQ(ParsePractice(PracticeText(practice)), practice);
  EXPECT_EQ(PracticeText({}), "");
  for (const char* damaged : {"A=5 B=4", "A=100", "B=9000", "A=-7 B=100", "speed= shift=x mute= solo=,,",
                              "A=99999999999999999999 B=1", "mute=-1,70000,x", "== = A", "speed"})
    EXPECT_EQ(ParsePractice(damaged), Practice{}) << damaged;
  EXPECT_EQ(ParsePractice("speed=9999999").speed, kFastestPractice);
}

TEST(PracticeBook, FilesAreKnownAgainAndTheOldestGo) {
  test::TemporaryDirectory folder;
  const std::string path = folder.File("neu/practice.ini");
  Practice slow;
  slow.speed = 50;
  PracticeBook book(path);
  book.Keep("/a/Lied = 1|2.mid", slow);
  book.Keep("/a/b.mid", slow);
  book.Keep("/a/b.mid", {});
  ASSERT_THAT(book.Save(), IsOk());
  PracticeBook again(path);
  EXPECT_EQ(again.Of("/a/Lied = 1|2.mid"), slow);
  EXPECT_EQ(again.Of("/a/b.mid"), Practice{}) << "played plainly again";
  for (std::size_t i = 0; i < kMostPractised; ++i) again.Keep(std::to_string(i), slow);
  ASSERT_THAT(again.Save(), IsOk());
  PracticeBook last(path);
  EXPECT_EQ(last.Of("/a/Lied = 1|2.mid"), Practice{});
  EXPECT_EQ(last.Of("0"), slow);
}

TEST(PracticeBook, AForeignFileIsNoBookAndAFolderThatTakesNothingIsSaid) {
  test::TemporaryDirectory folder;
  PracticeBook foreign(folder.Write("fremd.ini", "[sts5 Practice]\r\n1=speed=50|/a.mid\r\n"));
  EXPECT_EQ(foreign.Of("/a.mid"), Practice{});
  Practice slow;
  slow.speed = 50;
  PracticeBook nowhere(folder.File("fremd.ini/practice.ini"));
  nowhere.Keep("/a.mid", slow);
  EXPECT_TRUE(Failed(nowhere.Save()));
  EXPECT_EQ(nowhere.Of("/a.mid"), slow);
}

}  // namespace
}  // namespace ts5
