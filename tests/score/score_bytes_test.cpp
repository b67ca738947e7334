// What the engine writes, to the byte: small scores worked out by hand, one feature each.
#include <gmock/gmock.h>

#include "platform/base/bytes.h"
#include "platform/base/text.h"
#include "score_log.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace test;

std::string Hex(ByteView bytes) {
  std::string text;
  for (const std::uint8_t byte : bytes) text += Format("%02X ", byte);
  return text;
}

Bytes MidiOf(const ScoreDocument& document) {
  PlaybackParameters parameters;
  const auto score = OpenAndScan(WriteScore(document), parameters);
  EXPECT_THAT(score, IsOk());
  const auto midi = ScoreToMidi(*score, parameters, {});
  EXPECT_THAT(midi, IsOk());
  return *midi;
}

TEST(ScoreMidiFile, IsExactToTheByte) {
  ScoreDocument document = OneVoice({ClefItem(0), KeyItem(-1), Quarter(), RestItem(1, 1), BarItem()}, 60);
  document.staves.push_back(StaffNamed("leer"));
  EXPECT_EQ(Hex(MidiOf(document)),
            "4D 54 68 64 00 00 00 06 00 01 00 02 01 E0 "
            "4D 54 72 6B 00 00 00 1E "
            "00 FF 51 03 0F 42 3F "     // 999 999 us
            "00 FF 58 04 04 02 18 08 "  // 4/4
            "00 FF 59 02 FF 00 "        // one flat
            "8F 00 FF 30 00 "           // the bar line, 1920 ticks on
            "00 FF 2F 00 "
            "4D 54 72 6B 00 00 00 1A "
            "00 C0 00 00 B0 07 64 00 FF 03 01 41 "
            "00 90 41 5A "     // F by the key
            "83 33 90 41 00 "  // 432 ticks, at the next step: 435
            "8B 4D FF 2F 00 ");
}

TEST(ScoreMidiFile, TellsTimesKeysAndTempos) {
  ScoreDocument document =
      OneVoice({KeyItem(2), Quarter(), BarItem(), TimeItem(3, 3), KeyItem(-3), RestItem(2, 1)}, 120);
  document.systems[0].staves[0].time = {1, 2};
  document.systems.push_back({90, {{0, {2, 1}, {{Quarter(), RestItem(2), RestItem(1)}}}}});
  const Bytes midi = MidiOf(document);
  EXPECT_EQ(Hex(ByteView(midi).subspan(14, 8 + 0x3D)),
            "4D 54 72 6B 00 00 00 3D "
            "00 FF 51 03 07 A1 1F "     // 120: 499 999 us
            "00 FF 58 04 01 02 18 08 "  // 1/4
            "00 FF 59 02 02 00 "        // two sharps
            "83 60 FF 30 00 "
            "00 FF 58 04 03 03 0C 08 "  // 3/8, 12 clocks a click
            "00 FF 59 02 FD 00 "        // three flats
            "85 50 FF 58 04 02 01 30 08 "
            "00 FF 51 03 0A 2C 2A "  // 90: 666 666 us
            "8F 00 FF 2F 00 ");
}

TEST(ScoreTracks, AreExactToTheByte) {
  struct Case {
    const char* what;
    VoiceItems items;
    const char* track;  // behind its set-up
  };
  const auto articulated = [](std::uint8_t code) {
    ScoreItem item = Quarter();
    item.group.articulation = code;
    return item;
  };
  const ScoreItem plain = Quarter();
  const Case cases[] = {
      // 432 - 50 % is 216, at the step 225; 432 - 40 % with velocity 118 at 270; velocity 127 and - 50 %
      {"articulation",
       {articulated(1), articulated(6), With(plain, TextDrawing("\xCF"))},
       "00 90 3C 5A 81 61 90 3C 00 81 7F 90 3C 76 82 0E 90 3C 00 81 52 90 3C 7F 81 61 90 3C 00 "
       "81 7F FF 2F 00 "},
      // three quarters of a bar before the first note; 1728 ticks of the whole note end at the step 1740
      {"an upbeat",
       {TimeItem(4, 2), plain, BarItem(), ChordItem(0, {Note(kD)})},
       "8B 20 90 3C 5A 83 33 90 3C 00 2D 90 3E 5A 8D 4C 90 3E 00 81 34 FF 2F 00 "},
      {"a chord",
       {ChordItem(2, {Note(kMiddleC), Note(kE)})},
       "00 90 3C 5A 00 90 40 5A 83 33 90 3C 00 00 90 40 00 2D FF 2F 00 "},
  };
  for (const Case& row : cases) {
    const Bytes midi = MidiOf(OneVoice(row.items));
    ByteReader in(midi);
    in.Skip(14 + 4);
    in.Skip(in.U32Be());
    EXPECT_EQ(in.Tag(), "MTrk") << row.what;
    const ByteView track = in.Take(in.U32Be());
    EXPECT_TRUE(in.Ok() && in.AtEnd()) << row.what;
    EXPECT_EQ(Hex(track), std::string("00 C0 00 00 B0 07 64 00 FF 03 01 41 ") + row.track) << row.what;
  }
}

TEST(ScoreTracks, VoicesHaveChannelsOfTheirOwn) {
  ScoreDocument document = OneVoice({Quarter()});
  document.systems[0].staves[0].voices.push_back({Quarter(kD)});
  document.staves[0].sound = 40;
  const Bytes midi = MidiOf(document);
  const ByteView track = ByteView(midi).last(40);
  EXPECT_EQ(Hex(track),
            "00 C0 28 00 B0 07 64 00 C1 28 00 B1 07 64 00 FF 03 01 41 "
            "00 90 3C 5A 00 91 3E 5A 83 33 90 3C 00 00 91 3E 00 2D FF 2F 00 ");
}

}  // namespace
}  // namespace ts5
