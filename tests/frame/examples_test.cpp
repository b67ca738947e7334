#include "frame/examples.h"

#include <gtest/gtest.h>

#include "support/test_data.h"

namespace ts5 {
namespace {

TEST(Examples, AreTheUsersOwnCopiesAndReplaceNothing) {
  const test::TemporaryDirectory place;
  place.Write("demo/Lied.mid", "a song");
  place.Write("demo/Partitur.stv", "a score");
  place.Write("demo/LICENCES.md", "no music");
  place.Write("demo/scores/Lied.txt", "no music either");
  place.Write("Musik/Stavora-Beispiele/Lied.mid", "the user's own");
  const auto folder = PutExamples(place.File("demo"), place.File("Musik"));
  ASSERT_TRUE(folder);
  EXPECT_EQ(*folder, place.File("Musik/Stavora-Beispiele"));
  EXPECT_EQ(test::Content(*folder + "/Lied.mid"), "the user's own");
  EXPECT_EQ(test::Content(*folder + "/Partitur.stv"), "a score");
  EXPECT_FALSE(PutExamples(place.File("gone"), place.File("Musik")));
  EXPECT_FALSE(PutExamples(place.File("demo"), place.File("demo/Lied.mid")));
}

}  // namespace
}  // namespace ts5
