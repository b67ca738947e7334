#include "platform/store/profile.h"

#include <gtest/gtest.h>

#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using Names = std::vector<std::string>;

Profile From(std::string_view text) {
  return *Profile::Parse(AsBytes(text));
}
std::string TextOf(const Profile& profile) {
  return std::string(AsText(profile.Serialise()));
}

TEST(Profile, ReadsByTheRulesOfPrivateProfiles) {
  const Profile profile = From(
      "stray=1\r\n"
      "; [Alpha] in a comment\r\n"
      "[Alpha]\r\n"
      "name = plain text \r\n"
      ";name2=comment\r\n"
      "  ;name3=comment\r\n"
      "double=\"  kept  \"\r\n"
      "single='kept too'\r\n"
      "open=\"half\r\n"
      "one=\"\r\n"
      "two=a=b;c\r\n"
      "empty=\r\n"
      "bare\r\n"
      "NAME=second\r\n"
      "nested=\"'x'\"\r\n"
      "\xDC"
      "bung=sch\xF6n\r\n"
      "[not a section\r\n"
      "\t[ Beta ] rest\n"
      "n=12 Takte\n"
      "neg=-5\n"
      "words=zw\xF6lf\n"
      "[ALPHA]\n"
      "late=unseen");
  struct Case {
    std::string_view section, key, expected;
  };
  const Case cases[] = {
      {"alpha", "NAME", "plain text"},
      {"Alpha", "double", "  kept  "},
      {"Alpha", "single", "kept too"},
      {"Alpha", "open", "\"half"},
      {"Alpha", "one", "\""},
      {"Alpha", "two", "a=b;c"},
      {"Alpha", "empty", ""},
      {"Alpha", "bare", ""},
      {"Alpha", "nested", "'x'"},
      {"Alpha", "übung", "schön"},
      {" beta ", " n ", "12 Takte"},
      {"Alpha", "name2", "?"},
      {"Alpha", "name3", "?"},
      {"Alpha", "late", "?"},
      {"Alpha", "nam", "?"},
      {"", "stray", "?"},
      {"Gamma", "n", "?"},
  };
  for (const Case& c : cases) EXPECT_EQ(profile.ReadText(c.section, c.key, "?"), c.expected) << c.key;
  EXPECT_EQ(profile.ReadInteger("Beta", "n", -1), 12);
  EXPECT_EQ(profile.ReadInteger("Beta", "neg", -1), -5);
  EXPECT_EQ(profile.ReadInteger("Beta", "words", -1), 0);
  EXPECT_EQ(profile.ReadInteger("Beta", "none", -1), -1);
  EXPECT_EQ(profile.ReadInteger("Alpha", "empty", -1), -1);
  EXPECT_EQ(profile.Sections(), (Names{"Alpha", "Beta", "ALPHA"}));
  EXPECT_EQ(profile.Keys("Beta"), (Names{"n", "neg", "words"}));
}

TEST(Profile, ANewFileHasExactlyTheLinesInTheirOrder) {
  Profile profile;
  const std::string banner(46, '=');
  profile.Write("sts5 Filelist", "======", banner);
  profile.Write("sts5 Filelist", "Stop!!", "Nicht ändern !!");
  profile.Write("sts5 Filelist", "======", banner);
  profile.WriteInteger("sts5 Filelist", "Files", 1);
  profile.Write("sts5 Filelist", "1", "/home/anna/Grüße.mid*181|2");
  const std::string expected = "[sts5 Filelist]\r\n" + std::string(53, '=') +
                               "\r\nStop!!=Nicht \xE4ndern !!\r\nFiles=1\r\n1=/home/anna/Gr\xFC\xDF"
                               "e.mid*181|2\r\n";
  EXPECT_EQ(TextOf(profile), expected);
  EXPECT_EQ(From(expected).ReadText("STS5 filelist", "======"), banner);
}

TEST(Profile, WritingChangesOneLineAndKeepsTheRest) {
  const std::string text =
      "; Kopf\r\n\r\n[A]\r\n; Anmerkung\r\n  Eins = 1\r\nunsinn ohne Zeichen\r\nZwei=2\r\n\r\n[B]\r\nx=y";
  Profile profile = From(text);
  profile.Write("a", "EINS", "neu");
  profile.Write("a", "Drei", "3");
  profile.Write("C", "z", "  blank ");
  const std::string changed =
      "; Kopf\r\n\r\n[A]\r\n; Anmerkung\r\nEins=neu\r\nunsinn ohne "
      "Zeichen\r\nZwei=2\r\nDrei=3\r\n\r\n[B]\r\nx=y\r\n"
      "[C]\r\nz=  blank \r\n";
  EXPECT_EQ(TextOf(profile), changed);
  EXPECT_EQ(profile.ReadText("A", "drei"), "3");

  EXPECT_TRUE(profile.Erase("A", "zwei"));
  EXPECT_FALSE(profile.Erase("A", "zwei"));
  EXPECT_EQ(profile.ReadText("A", "drei"), "3") << "the lines behind have moved";
}

TEST(Profile, AKeyThatStandsTwiceShowsTheNextWhenTheFirstGoes) {
  Profile profile = From("[A]\nk=1\nk=2\n");
  EXPECT_TRUE(profile.Erase("A", "k"));
  EXPECT_EQ(profile.ReadText("A", "k"), "2");
}

TEST(Profile, NoValueBreaksOutOfItsLine) {
  Profile profile;
  profile.Write("A\r\n[B]", "k\n", std::string("v\r\n[C]\nx=1\0", 11));
  const Profile again = From(TextOf(profile));
  EXPECT_EQ(again.Sections().size(), 1U);
  EXPECT_EQ(TextOf(again), TextOf(profile));
}

TEST(Profile, Utf16FilesStayUtf16) {
  const std::u16string text = u"[A]\r\nDvořák=ж\r\n";
  for (const bool bigEndian : {false, true}) {
    const std::string bytes = test::Utf16Bytes(text, bigEndian);
    const Profile profile = From(bytes);
    EXPECT_EQ(profile.Find("a", "dvořák"), "ж");
    EXPECT_EQ(TextOf(profile), bytes);
    EXPECT_EQ(From(bytes + "x").Find("A", "Dvořák"), "ж") << "an odd byte at the end";
  }
}

TEST(Profile, Utf8FilesStayUtf8) {
  Profile profile = From("\xEF\xBB\xBF[A]\nDvořák=ж\n");
  EXPECT_EQ(profile.ReadText("a", "Dvořák"), "ж");
  profile.Write("A", "neu", "Ω");
  EXPECT_EQ(TextOf(profile), "\xEF\xBB\xBF[A]\r\nDvořák=ж\r\nneu=Ω\r\n");
}

TEST(Profile, Files) {
  const test::TemporaryDirectory directory;
  const std::string path = directory.File("a.sts");
  EXPECT_THAT(Profile::Load(path), FailsWith(Outcome::SourceFailed));
  EXPECT_THAT(From("[A]\nk=\xE4").Save(path), IsOk());
  EXPECT_EQ(test::Content(path), "[A]\r\nk=\xE4\r\n");
  EXPECT_EQ(Profile::Load(path)->ReadText("A", "k"), "ä");
  EXPECT_THAT(From("").Save(directory.File("none/a")), FailsWith(Outcome::TargetFailed));
}

// In the time of a test: a search through all for each would take minutes.
TEST(Profile, FortyThousandEntriesAreFound) {
  Profile profile;
  for (int i = 1; i <= 40'000; ++i) profile.Write("L", std::to_string(i), "/home/anna/Musik/x.mid");
  const Profile again = *Profile::Parse(profile.Serialise());
  int found = 0;
  for (int i = 1; i <= 40'000; ++i) found += again.Find("L", std::to_string(i)).has_value() ? 1 : 0;
  EXPECT_EQ(found, 40'000);
  EXPECT_THAT(Profile::Parse(Bytes(kMaxProfileLines, '\n')), FailsWith(Outcome::WrongFormat));
}

}  // namespace
}  // namespace ts5
