#include "artworker/layout_file.h"

#include <gmock/gmock.h>

#include <functional>
#include <string>
#include <vector>

#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::artworker {
namespace {

using test::FailsWith;
using testing::HasSubstr;

// A layout with one element of each kind, every field off its default.
ArtworkLayout Sample() {
  ArtworkLayout layout = NewLayout();
  layout.paper = PaperFormat::Custom;
  layout.Object(ArtworkObjectId::Inlay) = {{300, 200}, false, 150, 99, {150, 118}};
  TextField text;
  SetText(text, "Größe\nzwei\tdrei");
  text.colour = 0x0000FF;
  text.lineSpacing = 75;
  text.spaceMode = SpaceMode::Whole;
  text.fixedFont = true;
  text.orientation = Turn::Half;
  text.horizontal = Across::Justified;
  text.vertical = Down::Bottom;
  text.font = {"Times New Roman", 2, 700, -31, 3, 4, 5, 34, 1, 0, 1};
  text.fill = {30, 2};
  layout.elements = {
      {ArtworkObjectId::Label, text, true, 0x112233, 5, 10, true, {1, -2, 300, 400}},
      {ArtworkObjectId::Inlay, Ellipse{{40, 1}}, false, 0, 0, 0, false, {0, 0, 50, 60}},
      {ArtworkObjectId::Booklet,
       Image{{0, 3}, kMirrorVertical, "/home/ä/Bild.png"},
       false,
       9,
       50,
       150,
       true,
       {}},
      {ArtworkObjectId::Booklet, UnknownContent{7}, true, 1, 2, 3, false, {5, 6, 7, 8}},
  };
  return layout;
}

std::string FileOf(const ArtworkLayout& layout) {
  return std::string(AsText(LayoutProfile(layout).Serialise()));
}

Result<ArtworkLayout> Read(const std::string& file) {
  return LayoutFromProfile(*Profile::Parse(AsBytes(file)));
}

std::string Replaced(std::string text, const std::string& what, const std::string& by) {
  const std::size_t at = text.find(what);
  EXPECT_NE(at, std::string::npos) << what;
  return at == std::string::npos ? text : text.replace(at, what.size(), by);
}

TEST(LayoutFile, IsWrittenByteForByte) {
  ArtworkLayout layout = NewLayout();
  TextField text;
  SetText(text, " a\xC3\xA4\n\tb");
  layout.elements = {{ArtworkObjectId::Inlay, text, false, 255, 1, 2, true, {10, 20, 30, 40}}};
  EXPECT_EQ(
      FileOf(layout),
      "[sd4 Layout File]\r\n=======" + std::string(46, '=') +
          "\r\n"
          "Stop!!=Diese Datei wurde automatisch erzeugt und darf AUF KEINEN FALL editiert werden !!\r\n"
          "Papierformat=1\r\nElementNum=1\r\n"
          "[Label]\r\nPapersize=210 297\r\nPortrait=1\r\nPosition=105 148\r\nSize=117 40\r\n"
          "[Inlay]\r\nPapersize=210 297\r\nPortrait=1\r\nPosition=105 148\r\nSize=150 118\r\n"
          "[Booklet]\r\nPapersize=297 210\r\nPortrait=0\r\nPosition=148 105\r\nSize=242 120\r\n"
          "[Element "
          "1]\r\nElemObjID=16002\r\nElemID=1\r\nElemFixed=0\r\nElemBorderColor=255\r\nElemBorderWidth=1\r\n"
          "ElemBorderGap=2\r\nElemBorderRound?=1\r\nElemDimension=10 20 30 40\r\n"
          "ElemTextLength=8\r\nElemTextText=\" a\xE4\xA8\xA1"
          "b\"\r\n"
          "ElemTextColor=0\r\nElemTextLinefeed=50\r\nElemTextSpaceMode=1\r\nElemTextFixedFont=0\r\n"
          "ElemTextOrientation=0\r\nElemTextPlacement=1\r\nElemTextVPosition=1\r\n"
          "ElemTextFontName=Arial\r\nElemTextFontCharset=0\r\nElemTextFontWeight=400\r\nElemTextFontHeight="
          "-16\r\n"
          "ElemTextFontOutPrecision=0\r\nElemTextFontClipPrecision=0\r\nElemTextFontQuality=0\r\n"
          "ElemTextFontPitchFamily=0\r\nElemTextFontItalic=0\r\nElemTextFontUnderline=0\r\n"
          "ElemTextFontStrikeout=0\r\nElemTextBGTransparency=100\r\nElemTextBGIndex=0\r\n");
}

TEST(LayoutRecord, IsPackedByteForByte) {
  ArtworkLayout layout = NewLayout();
  TextField text;
  SetText(text, "x\ny");
  text.font.face = std::string(40, 'F');
  layout.elements = {{ArtworkObjectId::Label, text, true, 0x0A0B0C, 1, 2, true, {-1, 2, 3, 4}},
                     {ArtworkObjectId::Inlay, Ellipse{{5, 6}}, false, 0, 0, 0, false, {}},
                     {ArtworkObjectId::Booklet, Image{{7, 8}, 3, "b.png"}, false, 0, 0, 0, false, {}}};
  const Bytes record = LayoutRecord(layout);
  constexpr std::size_t kText = 83 + 38;
  constexpr std::size_t kEllipse = kText + 4 + 5 + 25 + 32 + 24;
  ASSERT_EQ(record.size(), kEllipse + 38 + 8 + 38 + 12 + 260);
  const auto bytes = [&](std::size_t at, std::size_t count) {
    return Bytes(&record[at], &record[at] + count);
  };
  EXPECT_EQ(bytes(0, 17), (Bytes{1, 0, 0, 0, 3, 0, 0, 0, 210, 0, 0, 0, 41, 1, 0, 0, 1}));
  EXPECT_EQ(bytes(58, 9), (Bytes{41, 1, 0, 0, 210, 0, 0, 0, 0}));
  EXPECT_EQ(bytes(83, 22),
            (Bytes{0x81, 0x3E, 0, 0, 1, 0, 0, 0, 1, 0x0C, 0x0B, 0x0A, 0, 1, 0, 0, 0, 2, 0, 0, 0, 1}));
  EXPECT_EQ(bytes(kText - 16, 4), (Bytes{0xFF, 0xFF, 0xFF, 0xFF}));
  EXPECT_EQ(bytes(kText, 9), (Bytes{5, 0, 0, 0, 'x', 0xA8, 'y', 0, 0}));  // padded to the length as typed
  EXPECT_EQ(bytes(kText + 34, 32), Bytes(32, 'F'));
  EXPECT_EQ(bytes(kEllipse + 38, 8), (Bytes{5, 0, 0, 0, 6, 0, 0, 0}));
  EXPECT_EQ(bytes(record.size() - 264, 10), (Bytes{3, 0, 0, 0, 'b', '.', 'p', 'n', 'g', 0}));
}

TEST(LayoutForms, BringTheWholeLayoutBack) {
  const ArtworkLayout sample = Sample();
  EXPECT_EQ(*Read(FileOf(sample)), sample);
  Bytes record = LayoutRecord(sample);
  EXPECT_EQ(*LayoutFromRecord(record), sample);
  EXPECT_EQ(LayoutRecord(*LayoutFromRecord(record)), record);
  record.push_back(1);
  EXPECT_EQ(*LayoutFromRecord(record), sample);  // what follows is somebody else's
}

TEST(LayoutForms, KeepTextsWhateverStandsAtTheirEnds) {
  for (const char* const typed : {"", " ", "\"Titel\"", "'", "\n", "a\n", "\tb ", "100 %=ä;["}) {
    ArtworkLayout layout = NewLayout();
    TextField text;
    SetText(text, typed);
    layout.elements = {{ArtworkObjectId::Label, text, false, 0, 0, 0, false, {}}};
    EXPECT_EQ(*Read(FileOf(layout)), layout) << typed;
    EXPECT_EQ(*LayoutFromRecord(LayoutRecord(layout)), layout) << typed;
  }
}

TEST(LayoutFile, MissingValuesCountAsTheyMustOrEndTheLoading) {
  const std::string file = FileOf(Sample());
  const auto without = [&](const std::string& key) {
    const std::size_t at = file.find(key + "=");
    EXPECT_NE(at, std::string::npos) << key;
    return Replaced(file, file.substr(at, file.find('\n', at) + 1 - at), "");
  };
  for (const char* const key : {"Stop!!",
                                "Papierformat",
                                "Papersize",
                                "Position",
                                "Size",
                                "ElemObjID",
                                "ElemID",
                                "ElemBorderColor",
                                "ElemBorderWidth",
                                "ElemBorderGap",
                                "ElemDimension",
                                "ElemTextLength",
                                "ElemTextText",
                                "ElemTextColor",
                                "ElemTextOrientation",
                                "ElemTextFontName",
                                "ElemTextFontWeight",
                                "ElemTextFontHeight",
                                "ElemTextBGTransparency",
                                "ElemTextBGIndex",
                                "ElemEllipseFillTransparency",
                                "ElemEllipseFillIndex",
                                "ElemImageFillTransparency",
                                "ElemImageFillIndex"})
    EXPECT_THAT(Read(without(key)), FailsWith(Outcome::SourceFailed)) << key;

  EXPECT_TRUE(Read(without("ElementNum"))->elements.empty());
  EXPECT_TRUE(Read(without("Portrait"))->objects[0].portrait);
  struct Case {
    const char* key;
    std::function<std::int64_t(const TextField&)> value;
    std::int64_t expected;
  };
  for (const Case& c : std::vector<Case>{
           {"ElemTextLinefeed", [](const TextField& t) { return t.lineSpacing; }, 0},
           {"ElemTextSpaceMode", [](const TextField& t) { return static_cast<int>(t.spaceMode); }, 1},
           {"ElemTextFixedFont", [](const TextField& t) { return t.fixedFont ? 1 : 0; }, 0},
           {"ElemTextPlacement", [](const TextField& t) { return static_cast<int>(t.horizontal); }, 1},
           {"ElemTextVPosition", [](const TextField& t) { return static_cast<int>(t.vertical); }, 1},
           {"ElemTextFontCharset", [](const TextField& t) { return t.font.charset; }, 0},
           {"ElemTextFontQuality", [](const TextField& t) { return t.font.quality; }, 255},
           {"ElemTextFontItalic", [](const TextField& t) { return t.font.italic; }, 255}})
    EXPECT_EQ(c.value(std::get<TextField>(Read(without(c.key))->elements[0].content)), c.expected) << c.key;
  EXPECT_FALSE(Read(without("ElemFixed"))->elements[0].fixed);
  EXPECT_TRUE(Read(Replaced(without("ElemBorderRound?"), "x", "x"))->elements[0].roundCorners);
  EXPECT_EQ(std::get<Image>(Read(without("ElemImageMirror"))->elements[2].content).mirror, 0);
  EXPECT_EQ(std::get<Image>(Read(without("ElemImageFilename"))->elements[2].content).file, "");
}

TEST(LayoutForms, ValuesOutsideTheirRangeEndTheLoading) {
  const std::string file = FileOf(Sample());
  for (const auto& [good, bad] : std::vector<std::pair<std::string, std::string>>{
           {"Papierformat=3", "Papierformat=4"},
           {"Papierformat=3", "Papierformat=A4"},
           {"ElementNum=4", "ElementNum=-1"},
           {"ElementNum=4", "ElementNum=2147483647"},
           {"ElementNum=4", "ElementNum=10001"},
           {"ElementNum=4", "ElementNum=4294967296"},
           {"Papersize=300 200", "Papersize=300"},
           {"Papersize=300 200", "Papersize=0 -1"},
           {"ElemObjID=16001", "ElemObjID=16004"},
           {"ElemBorderWidth=5", "ElemBorderWidth=51"},
           {"ElemBorderGap=10", "ElemBorderGap=151"},
           {"ElemBorderColor=1122867", "ElemBorderColor=16777216"},
           {"ElemFixed=1", "ElemFixed=ja"},
           {"ElemTextFontCharset=2", "ElemTextFontCharset=256"},
           {"ElemTextSpaceMode=2", "ElemTextSpaceMode=3"},
           {"ElemTextOrientation=2", "ElemTextOrientation=-1"},
           {"ElemTextBGTransparency=30", "ElemTextBGTransparency=101"},
           {"ElemTextLength=17", "ElemTextLength=-5"},
           {"ElemTextLength=17", "ElemTextLength=2147483647"},
           {"ElemImageMirror=2", "ElemImageMirror=4"},
           {"ElemDimension=1 -2 300 400", "ElemDimension=1 -2 300"}})
    EXPECT_THAT(Read(Replaced(file, good, bad)), FailsWith(Outcome::SourceFailed)) << bad;

  const Bytes record = LayoutRecord(Sample());
  for (std::size_t size = 0; size < record.size(); ++size)
    EXPECT_THAT(LayoutFromRecord(ByteView(record).first(size)), FailsWith(Outcome::SourceFailed)) << size;
  Bytes many = record;
  many[7] = 0x7F;  // two thousand million elements
  EXPECT_THAT(LayoutFromRecord(many), FailsWith(Outcome::SourceFailed));
}

TEST(LayoutFile, IsSavedAndLoadedOrRefused) {
  const test::TemporaryDirectory directory;
  const std::string path = directory.File("a.awl");
  ASSERT_EQ(SaveLayout(Sample(), path), Outcome::Success);
  EXPECT_EQ(*LoadLayout(path), Sample());
  EXPECT_EQ(SaveLayout(Sample(), directory.File("fehlt/a.awl")), Outcome::WriteFailed);
  EXPECT_THAT(LoadLayout(directory.File("fehlt.awl")), FailsWith(Outcome::SourceFailed));
}

TEST(Layout, PaperAndMeasuresKeepTheirLimits) {
  ArtworkLayout layout = NewLayout();
  const auto set = [&](ArtworkObjectId id, Measure measure, std::int32_t value) {
    return SetMeasure(layout, id, measure, value);
  };
  using enum ArtworkObjectId;
  EXPECT_FALSE(set(Label, Measure::SheetWidth, 200));
  EXPECT_FALSE(set(Label, Measure::Width, 49));  // ten millimetres of ring are the least
  EXPECT_TRUE(set(Label, Measure::Width, 50));
  EXPECT_FALSE(set(Label, Measure::Height, 41));
  EXPECT_FALSE(set(Label, Measure::Width, 211));
  EXPECT_FALSE(set(Inlay, Measure::Height, 298));
  EXPECT_TRUE(set(Inlay, Measure::X, 210));
  EXPECT_FALSE(set(Inlay, Measure::Y, 298));
  EXPECT_EQ(layout.Object(Label).size, (Size{50, 40}));

  SetPaper(layout, PaperFormat::Custom);
  EXPECT_EQ(layout.Object(Booklet).sheet, (Size{297, 210}));
  EXPECT_TRUE(set(Booklet, Measure::SheetWidth, 320));
  SetPaper(layout, PaperFormat::A4);
  for (const ArtworkObject& object : layout.objects) EXPECT_EQ(object.sheet, (Size{210, 297}));
  SetPortrait(layout.Object(Booklet), false);
  EXPECT_EQ(layout.Object(Booklet).sheet, (Size{297, 210}));
}

}  // namespace
}  // namespace ts5::artworker
