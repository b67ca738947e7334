// Note groups: durations, keys, marks, and every kind of invalid record.
#include <gmock/gmock.h>

#include "score/score_drawings.h"
#include "score/score_objects.h"
#include "score_log.h"

namespace ts5 {
namespace {

using namespace test;

TEST(GroupDurationRule, FollowsCodesDotsAndTuplets) {
  struct Case {
    std::uint8_t code;
    std::uint8_t dots;
    ScoreTuplet tuplet;
    std::uint32_t ticks;
  };
  const Case cases[] = {
      {0, 0, {}, 1920},
      {1, 1, {}, 1440},
      {2, 2, {}, 840},
      {2, 3, {}, 900},
      {8, 0, {}, 7},
      {8, 1, {}, 10},
      {9, 0, {}, 3840},
      {2, 0, {3, false, false}, 320},
      {2, 0, {2, true, false}, 360},
      {2, 0, {3, true, false}, 480},
      {2, 0, {5, false, false}, 384},
      {2, 0, {5, false, true}, 768},
      {4, 0, {7, false, false}, 68},
      {2, 0, {2, false, false}, 240},
  };
  for (const Case& row : cases) {
    ScoreGroup group;
    group.durationCode = row.code;
    group.dots = row.dots;
    group.tuplet = row.tuplet;
    EXPECT_EQ(GroupDuration(group, 480, {}), row.ticks) << int{row.code} << ' ' << int{row.tuplet.number};
  }
  ScoreGroup rest;
  rest.isRest = true;
  rest.dots = 2;
  rest.wholeBars = 3;
  EXPECT_EQ(GroupDuration(rest, 480, {3, 2}), 4320U);
  rest.wholeBars = UINT32_MAX;
  EXPECT_EQ(GroupDuration(rest, 480, {65535, 0}), static_cast<std::uint32_t>(INT32_MAX));
  rest.flags = kGroupZeroDuration;
  EXPECT_EQ(GroupDuration(rest, 480, {3, 2}), 0U);
}

TEST(NoteKeyRule, FollowsClefKeyAndAccidental) {
  struct Case {
    std::int8_t position;
    std::int8_t accidental;
    ScoreClef clef;
    int key;
    int midi;
  };
  const Case cases[] = {
      {-7, 0, {0, 0, 1}, 0, 60}, {-7, 0, {0, 0, 1}, 1, 67},  {-7, 0, {0, 0, 1}, -1, 65},
      {-7, 0, {0, 0, 0}, 0, 72}, {-7, 0, {0, 0, 2}, 0, 48},  {0, 0, {1, 0, 1}, 0, 60},
      {7, 0, {2, 0, 1}, 0, 60},  {-3, -1, {0, 0, 1}, 0, 66}, {-7, 2, {4, 0, 1}, 0, 62},
      {-42, 0, {0, 0, 1}, 0, 0}, {-64, 0, {2, 0, 2}, 0, 11}, {63, 2, {0, 0, 0}, 7, 123},
  };
  for (const Case& row : cases)
    EXPECT_EQ(NoteKey(Note(row.position, row.accidental), row.clef, row.key), row.midi)
        << int{row.position} << ' ' << row.key;
}

TEST(DrawnTexts, MeanArticulationsAndDynamics) {
  struct Case {
    std::string_view text;
    int articulation;
    int dynamic;
    bool marked;
  };
  const Case cases[] = {
      {"\xC8", 2, 0, false}, {"\xCE", 4, 0, false}, {"Z", 5, 0, false},     {"\xCB", 6, 0, false},
      {"\xCC", 7, 0, false}, {"\xCF", 8, 0, false}, {"k", 0, 0, true},      {"f", 0, 90, false},
      {"fp", 0, -1, false},  {"pq", 0, 10, false},  {"fff", 0, 127, false}, {"|", 0, -1, false},
      {"s", 0, -4, false},   {"sf", 0, -4, false},  {"zp", 0, -3, false},   {"{ff", 0, -2, false},
      {"sfff", 0, 0, false}, {"ab", 0, 0, false},
  };
  for (const Case& row : cases) {
    DrawnMarks marks;
    ApplyDrawnText(row.text, marks);
    EXPECT_EQ(marks.articulation, row.articulation) << row.text;
    EXPECT_EQ(marks.dynamic, row.dynamic) << row.text;
    EXPECT_EQ(marks.marked, row.marked) << row.text;
  }
}

// A chord's bytes behind its kind and empty parameters; the body is what a case changes.
bool Reads(std::initializer_list<int> bytes) {
  Bytes file;
  for (const int byte : bytes) file.push_back(static_cast<std::uint8_t>(byte));
  ScoreSource in{ByteView(file)};
  (void)ReadObject(in);
  return in.Ok() && in.Position() == file.size();
}

TEST(ObjectRecords, RefuseWhatNoScoreHolds) {
  EXPECT_TRUE(Reads({1, 0, 0, 2, 0, 1, 0x40, 0x10}));
  EXPECT_FALSE(Reads({1, 0, 0x80, 2, 0, 1, 0, 0x10}));        // group flag 7
  EXPECT_FALSE(Reads({1, 0, 0, 0x82, 0, 1, 0, 0x10}));        // duration flag 7
  EXPECT_FALSE(Reads({1, 0, 0, 0x22, 0x10, 0, 1, 0, 0x10}));  // tuplet 0
  EXPECT_FALSE(Reads({1, 0, 0, 2, 0, 0}));                    // no note
  EXPECT_FALSE(Reads({1, 0, 0, 2, 0, 1, 0, 0x17}));           // value 7
  EXPECT_FALSE(Reads({1, 0, 0, 2, 0, 1, 0, 0x28}));           // accidental 3
  EXPECT_TRUE(Reads({1, 0, 0, 2, 2, 255, 1, 0, 0x10}));
  EXPECT_FALSE(Reads({1, 0, 0, 2, 2, 2, 1, 0, 0x10}));  // side 2
  EXPECT_TRUE(Reads({1, 0, 0, 2, 4, 3, 9, 1, 0, 0x10}));
  EXPECT_FALSE(Reads({1, 0, 0, 2, 4, 2, 9, 1, 0, 0x10}));
  EXPECT_FALSE(Reads({1, 0, 0, 2, 8, 6, 0, 1, 0, 0x10}));  // grace form 6
  EXPECT_FALSE(Reads({1, 0, 0, 2, 8, 5, 9, 1, 0, 0x10}));  // articulation 9
  EXPECT_TRUE(Reads({0, 0, 0, 2, 5, 3, 4}));
  EXPECT_FALSE(Reads({0, 0, 0, 2, 8}));  // rest flags
  EXPECT_TRUE(Reads({2, 0, 0, 0xA4}));
  EXPECT_FALSE(Reads({2, 0, 0, 5}));     // clef form
  EXPECT_FALSE(Reads({2, 0, 0, 0xC0}));  // clef octave
  EXPECT_TRUE(Reads({3, 0, 0, 14}));
  EXPECT_FALSE(Reads({3, 0, 0, 15}));
  EXPECT_FALSE(Reads({5, 0, 0, 6}));
  EXPECT_TRUE(Reads({6, 1, 9, 16, 1, 2, 3}));
  EXPECT_TRUE(Reads({200, 0, 3}));
  EXPECT_TRUE(Reads({0, 0, 0, 0x42, 2, 16, 99, 0}));  // drawings without data
}

TEST(Drawings, OfEveryKindAreReadInFull) {
  for (std::uint8_t kind = 0; kind < 18; ++kind) {
    ScoreItem item = Quarter();
    DrawingItem drawing;
    drawing.kind = kind;
    drawing.nested = {TextDrawing("p"), HairpinDrawing(7, true)};
    item.drawings = {drawing, TextDrawing("h"), VoltaDrawing(1)};
    ScoreDocument score = OneVoice({item});
    const Bytes file = WriteScore(score);
    const auto info = ReadScoreInfo(file);
    ASSERT_TRUE(info);
    ScoreSource in(file, info->bodyOffset);
    (void)ReadSystemHeader(in);
    (void)ReadStaffHeader(in);
    (void)ReadVoiceHeader(in);
    const ScoreObject object = ReadObject(in);
    EXPECT_TRUE(in.Ok()) << int{kind};
    EXPECT_EQ(in.Position(), file.size()) << int{kind};
    EXPECT_EQ(object.group.marks.dynamic, 127);
    EXPECT_EQ(object.group.marks.firstEnding, 1);
    EXPECT_EQ(object.group.marks.hairpinSpan, kind < 2 ? 7 : 0);
  }
}

TEST(Drawings, NestedTooDeepAreRefused) {
  // An object whose drawings lie `lists` deep.
  const auto nested = [](int lists) {
    ScoreItem item = Quarter();
    item.drawings.emplace_back();
    for (int i = 2; i < lists; ++i) {
      DrawingItem outer;
      outer.nested = std::move(item.drawings);
      item.drawings.clear();
      item.drawings.push_back(std::move(outer));
    }
    return OneVoice({item});
  };
  EXPECT_EQ(Play(nested(kMaxDrawingDepth)).outcome, Outcome::Success);
  EXPECT_EQ(Play(nested(kMaxDrawingDepth + 1)).outcome, Outcome::DamagedScore);
}

TEST(TimeSignatures, HaveANumeratorOfOneByteOrTwo) {
  for (const Bytes& bytes : {Bytes{4, 0, 0, 6, 0, 0x84, 0xAA}, Bytes{4, 0, 0, 6, 0x84, 0xAA}}) {
    ScoreSource in{ByteView(bytes)};
    const ScoreObject object = ReadObject(in);
    EXPECT_TRUE(in.Ok());
    EXPECT_EQ(object.time.numerator, 6);
    EXPECT_EQ(object.time.power, 3);
    EXPECT_EQ(in.U8(), 0xAA) << "and nothing behind it is taken";
  }
}

TEST(ObjectParameters, HoldNumbers) {
  ByteWriter out;
  out.U8(9);
  for (const int byte : {1, 77, 0, 0, 2, 1, 5}) out.U8(static_cast<std::uint8_t>(byte));
  for (const int byte : {5, 9, 0, 0, 0x80, 0x3F, 0, 0, 0, 0xC0, 1}) out.U8(static_cast<std::uint8_t>(byte));
  EXPECT_THAT(ObjectValues(out.View()), testing::ElementsAre(1.0F, -2.0F));
}

}  // namespace
}  // namespace ts5
