#include "batch/command_line.h"

#include <gmock/gmock.h>

namespace ts5::batch {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Optional;

struct Sample : ClonableParameters<Sample> {
  bool flag = false;
  std::int32_t number = 5;
  std::string text;
};

std::vector<ParameterField> Fields() {
  FieldTable<Sample> table;
  table.Flag("Flag", &Sample::flag).Integer("Number", &Sample::number, 0, 14).Text("Text", &Sample::text, 8);
  return table.Build();
}

TEST(CommandLine, SetTakesStoredNamesWithoutRegardToCase) {
  Sample sample;
  const std::vector<std::string> settings{"FLAG=1", "number= 14", "Text=a=b c", "Number=3"};
  EXPECT_EQ(ApplySettings(Fields(), sample, settings), std::nullopt);
  EXPECT_TRUE(sample.flag);
  EXPECT_EQ(sample.number, 3);
  EXPECT_EQ(sample.text, "a=b c");
}

TEST(CommandLine, SetSaysWhatIsPossibleInstead) {
  struct Case {
    std::string setting;
    std::string part;  // of the message
  };
  const std::vector<Case> cases{
      {"Number", "NAME=WERT"},         {"=5", "NAME=WERT"},      {"Nummer=5", "Flag, Number, Text"},
      {"Number=15", "0..14"},          {"Number=fünf", "0..14"}, {"Number=", "0..14"},
      {"Text=neun Zeichen", "max. 8"}, {"Flag=ja", "0|1"},
  };
  for (const Case& c : cases) {
    Sample sample;
    const std::vector<std::string> settings{c.setting};
    EXPECT_THAT(ApplySettings(Fields(), sample, settings), Optional(HasSubstr(c.part))) << c.setting;
    EXPECT_EQ(sample.number, 5) << c.setting;
    EXPECT_EQ(sample.text, "") << c.setting;
  }
  Sample sample;
  EXPECT_NE(ApplySettings({}, sample, std::vector<std::string>{"Number=1"}), std::nullopt);
}

TEST(CommandLine, HexBytes) {
  EXPECT_EQ(ParseHexBytes("0a ff,00"), std::string("\x0a\xff\x00", 3));
  EXPECT_EQ(ParseHexBytes("0AFF"), "\x0a\xff");
  EXPECT_EQ(ParseHexBytes(""), "");
  for (const char* wrong : {"0", "0a f", "0g", "-1", "0x0a", "+1"})
    EXPECT_EQ(ParseHexBytes(wrong), std::nullopt) << wrong;
}

TEST(CommandLine, OnlyAClearYesIsYes) {
  for (const char* yes : {"j", "J", " ja ", "Ja\r", "yes"}) EXPECT_TRUE(MeansYes(yes)) << yes;
  for (const char* no : {"", "n", "nein", "jein", "1", "jj"}) EXPECT_FALSE(MeansYes(no)) << no;
}

}  // namespace
}  // namespace ts5::batch
