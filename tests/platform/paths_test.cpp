#include "platform/files/paths.h"

#include <gtest/gtest.h>

namespace ts5 {
namespace {

TEST(Paths, TakeNamesApart) {
  struct Case {
    std::string_view path, directory, name, extension, without;
  };
  const Case cases[] = {
      {"/a/b/c.mid", "/a/b", "c.mid", "mid", "/a/b/c"},
      {"/c.mid", "/", "c.mid", "mid", "/c"},
      {"c:\\c.mid", "c:\\", "c.mid", "mid", "c:\\c"},
      {"c:\\Noten\\c.MID", "c:\\Noten", "c.MID", "MID", "c:\\Noten\\c"},
      {"c:c.mid", "", "c:c.mid", "mid", "c:c"},
      {"c.mid", "", "c.mid", "mid", "c"},
      {"/a.b/c", "/a.b", "c", "", "/a.b/c"},  // the dot belongs to the directory
      {"a.b\\c", "a.b", "c", "", "a.b\\c"},
      {"/a/c.", "/a", "c.", "", "/a/c"},
      {"/a//b/", "/a//b", "", "", "/a//b/"},
      {"/a/x.tar.gz", "/a", "x.tar.gz", "gz", "/a/x.tar"},
      {"", "", "", "", ""},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(DirectoryOf(c.path), c.directory) << c.path;
    EXPECT_EQ(FileNameOf(c.path), c.name) << c.path;
    EXPECT_EQ(ExtensionOf(c.path), c.extension) << c.path;
    EXPECT_EQ(WithoutExtension(c.path), c.without) << c.path;
  }
  EXPECT_TRUE(HasExtension("/a/c."));
  EXPECT_FALSE(HasExtension("/a.b/c"));
}

TEST(Paths, PutNamesTogether) {
  EXPECT_EQ(WithExtension("/a.b/c", "wav"), "/a.b/c.wav");
  EXPECT_EQ(WithExtension("/a/c.mid", ".wav"), "/a/c.wav");
  EXPECT_EQ(WithExtension("/a/c.mid", ""), "/a/c");
  EXPECT_EQ(JoinPath("/a", "b"), "/a/b");
  EXPECT_EQ(JoinPath("/", "b"), "/b");
  EXPECT_EQ(JoinPath("", "b"), "b");
  EXPECT_EQ(JoinPath("c:\\a", "b"), "c:\\a\\b");
  EXPECT_EQ(JoinPath("/a", "/b"), "/b");
  EXPECT_EQ(JoinPath("/a", "d:\\b"), "d:\\b");
}

TEST(Paths, Normalise) {
  const std::pair<std::string_view, std::string_view> cases[] = {
      {"/a//b/./c/", "/a/b/c"},
      {"/a/../../b", "/b"},  // nothing is above the root
      {"/", "/"},
      {"c:\\a\\..\\b/", "c:\\b"},
      {"c:/", "c:\\"},
      {"a\\b\\", "a/b"},
      {"../a/..", ".."},
      {"a/..", "."},
      {"/musik/AC\\DC.mid", "/musik/AC\\DC.mid"},  // a name of this system
      {"", ""},
  };
  for (const auto& [path, expected] : cases) EXPECT_EQ(NormalisedPath(path), expected) << path;
}

TEST(Paths, TheLimitCountsCharactersAndNeverCuts) {
  std::string longest = "/";
  for (std::size_t i = 1; i < kMaxPathCharacters; ++i) longest += "ä";
  EXPECT_TRUE(IsUsablePath(longest));
  EXPECT_FALSE(IsUsablePath(longest + "x"));
  EXPECT_FALSE(IsUsablePath("/a\xE4.mid"));
  EXPECT_FALSE(IsUsablePath(std::string("/a\0b", 4)));
  EXPECT_FALSE(IsUsablePath(""));
}

}  // namespace
}  // namespace ts5
