#include <gmock/gmock.h>

#include <string>
#include <vector>

#include "midi/conductor.h"
#include "midi_bytes.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace test;

TEST(VarLenTest, IsWrittenInTheShortestFormAndReadInAny) {
  const struct {
    const char* bytes;
    std::uint32_t value;
    std::size_t size;
    bool shortest = false;  // of at most four bytes, as it is written
  } cases[] = {
      {"00", 0, 1, true},
      {"7F", 127, 1, true},
      {"81 00", 128, 2, true},
      {"FF 7F", 0x3FFF, 2, true},
      {"81 80 00", 0x4000, 3, true},
      {"FF FF 7F", 0x1FFFFF, 3, true},
      {"81 80 80 00", 0x200000, 4, true},
      {"FF FF FF 7F", kMaxVarLen, 4, true},
      {"80 80 80 80 05", 5, 5},  // longer than anyone writes, and still a number
      {"8F FF FF FF 7F", UINT32_MAX, 5},
      {"90 80 80 80 00", kVarLenTooLarge, 5},  // 2^32
      {"FF FF FF FF FF FF FF FF FF FF FF 7F 33", kVarLenTooLarge, 12},
      {"", 0, 0},
      {"80", 0, 0},
      {"FF FF FF FF FF", 0, 0},
  };
  for (const auto& c : cases) {
    const VarLen read = ReadVarLen(Hex(c.bytes));
    EXPECT_EQ(read.size, c.size) << c.bytes;
    EXPECT_EQ(read.value, c.value) << c.bytes;
    ByteWriter out;
    if (c.shortest) {
      EXPECT_TRUE(WriteVarLen(c.value, out));
      EXPECT_EQ(Dump(out.View()), c.bytes);
    }
  }
  ByteWriter out;
  EXPECT_FALSE(WriteVarLen(std::uint64_t{kMaxVarLen} + 1, out));
  EXPECT_FALSE(WriteVarLen(UINT64_MAX, out));
  EXPECT_EQ(out.Size(), 0U);
}

// Every case stands for a way to lose the beat in a track; "!" marks damage.
TEST(EventWalkerTest, WalksTracks) {
  const struct {
    const char* what;
    const char* track;
    const char* events;
  } cases[] = {
      {"running status", "00 90 3C 40 60 3C 00 00 FF 2F 00", "0:90 3C 40; 96:90 3C 00"},
      {"running status with one data byte", "00 C1 05 01 06 00 FF 2F 00", "0:C1 05; 1:C1 06"},
      {"running status across meta and system exclusive events",
       "00 91 3C 40 05 FF 01 02 41 42 05 F0 02 7E F7 05 F7 01 55 05 3C 00 00 FF 2F 00",
       "0:91 3C 40; 5:FF 01 02 41 42; 10:F0 02 7E F7; 15:F7 01 55; 20:91 3C 00"},
      {"every channel message",
       "00 80 01 02 00 91 01 02 00 A2 01 02 00 B3 01 02 00 C4 01 00 D5 01 00 E6 01 02 00 FF 2F 00",
       "0:80 01 02; 0:91 01 02; 0:A2 01 02; 0:B3 01 02; 0:C4 01; 0:D5 01; 0:E6 01 02"},
      {"deltas of one to six bytes",
       "7F 90 01 01 81 00 01 01 81 80 00 01 01 81 80 80 00 01 01 80 80 80 80 01 01 01 80 80 80 80 80 01 01 "
       "01 00 FF 2F 00",
       "127:90 01 01; 255:90 01 01; 16639:90 01 01; 2113791:90 01 01; 2113792:90 01 01; 2113793:90 01 01"},
      {"deltas beyond 32 bits add up", "FF FF FF FF 7F C0 01 FF FF FF FF 7F 02 00 FF 2F 00",
       "4294967295:C0 01; 8589934590:C0 02"},
      {"a long form of a length is kept", "00 FF 01 80 80 01 41 00 FF 2F 00", "0:FF 01 80 80 01 41"},
      {"nothing behind the end of track is read", "00 FF 2F 00 80", ""},
      {"an end of track without its length", "00 C0 01 00 FF 2F", "0:C0 01"},
      {"an end of track with data", "00 FF 2F 05", ""},
      {"data bytes as they stand", "00 90 90 FF 00 FF 2F 00", "0:90 90 FF"},
      {"an empty track", "", "!"},
      {"no end of track", "00 C0 01", "0:C0 01!"},
      {"a delta and nothing behind it", "00 C0 01 05", "0:C0 01!"},
      {"a delta without end", "00 C0 01 FF FF FF FF FF FF FF FF", "0:C0 01!"},
      {"no status yet", "00 3C 40 00 FF 2F 00", "!"},
      {"a meta event sets no running status", "00 FF 01 00 00 3C 40 00 FF 2F 00", "0:FF 01 00!"},
      {"a data byte is missing", "00 90 3C", "!"},
      {"a length beyond the track", "00 FF 01 05 41 42", "!"},
      {"a length beyond all measure", "00 F0 FF FF FF FF 7F 41 42 43 44 45 46", "!"},
      {"a length without end", "00 FF 01 80 80 80 80", "!"},
      {"a meta event without type", "00 FF", "!"},
      {"system common and real-time messages", "00 F8 00 FF 2F 00", "!"},
      {"song position", "00 F2 00 00 00 00 FF 2F 00", "!"},
  };
  for (const auto& c : cases) EXPECT_EQ(Events(c.track), c.events) << c.what;
}

TEST(EventWalkerTest, ACopyRemembersThePlace) {
  const Bytes track = Hex("00 90 3C 40 0A 3E 40 0A 40 40 00 FF 2F 00");
  MidiEventCursor cursor(track);
  MidiEvent event;
  ASSERT_TRUE(cursor.Next(event));
  MidiEventCursor back = cursor;
  while (cursor.Next(event)) {
  }
  EXPECT_TRUE(cursor.AtEndOfTrack());
  ASSERT_TRUE(back.Next(event));
  EXPECT_EQ(event.data1, 0x3E);
  EXPECT_EQ(event.status, 0x90);
  EXPECT_EQ(event.tick, 10U);
}

TEST(EventWalkerTest, TellsNotesAndMessagesApart) {
  const Bytes track = Hex("00 95 3C 40 00 95 3C 00 00 85 3C 40 00 C5 07 00 FF 01 00 00 FF 2F 00");
  std::string kinds;
  std::vector<std::uint32_t> messages;
  MidiEventCursor cursor(track);
  for (MidiEvent event; cursor.Next(event);) {
    kinds += event.IsNoteOn() ? 'n' : event.IsNoteOff() ? 'f' : event.IsChannelMessage() ? 'c' : 'x';
    if (event.IsChannelMessage()) messages.push_back(event.ShortMessage());
  }
  EXPECT_THAT(messages, testing::ElementsAre(0x403C95, 0x003C95, 0x403C85, 0x0007C5));
  EXPECT_EQ(kinds, "nffcx");
}

// A track cut anywhere gives the events that are whole, then says that it is damaged.
TEST(EventWalkerTest, CutAnywhere) {
  const Bytes track = Hex("00 90 3C 40 81 00 3C 00 05 FF 01 02 41 42 05 F0 02 7E F7 05 C0 01 00 FF 2F 00");
  const std::string whole = Events(ByteView(track));
  for (std::size_t size = 0; size + 1 < track.size(); ++size) {
    const Bytes cut(track.begin(), track.begin() + static_cast<std::ptrdiff_t>(size));  // its own memory
    std::string events = Events(ByteView(cut));
    ASSERT_TRUE(events.ends_with('!')) << size;
    events.pop_back();
    EXPECT_TRUE(whole.starts_with(events)) << size << ": " << events;
  }
}

std::string Map(const TimeSignatureMap& map) {
  std::string text;
  for (const auto& e : map) {
    text += (text.empty() ? "" : "; ") + std::to_string(e.tick) + ' ' + std::to_string(e.bars) + ' ' +
            std::to_string(e.numerator) + '/' + std::to_string(e.denominator);
  }
  return text;
}

TEST(ConductorTest, MapsTimeSignaturesAndTheFirstTempo) {
  const struct {
    const char* what;
    unsigned division;
    const char* track;
    const char* map;
    std::uint32_t tempo;  // 0: none
  } cases[] = {
      {"nothing", 96, "00 FF 2F 00", "0 0 4/4", 0},
      {"at tick 0", 96, "00 FF 58 04 03 02 18 08 00 FF 2F 00", "0 0 3/4", 0},
      {"after two bars of 4/4", 96, "86 00 FF 58 04 06 03 18 08 00 FF 2F 00", "0 0 4/4; 768 2 6/8", 0},
      // 6/8 at division 96 has bars of 288 ticks: 400 ticks on lies one bar and 112 ticks behind the change.
      {"in the middle of a bar", 96, "00 FF 58 04 06 03 18 08 83 10 FF 58 04 02 02 18 08 00 FF 2F 00",
       "0 0 6/8; 288 1 2/4", 0},
      {"inside the first bar", 96, "0A FF 58 04 03 02 18 08 00 FF 2F 00", "0 0 3/4", 0},
      {"the first tempo counts", 96, "00 FF 51 03 07 A1 20 00 FF 51 03 0F 42 40 00 FF 2F 00", "0 0 4/4", 120},
      {"tempos are rounded down", 96, "00 FF 51 03 08 66 3B 00 FF 2F 00", "0 0 4/4", 108},
      {"a tempo of 0 is none", 96, "00 FF 51 03 00 00 00 00 FF 51 03 0F 42 40 00 FF 2F 00", "0 0 4/4", 60},
      {"short data is none", 96, "00 FF 51 02 07 A1 00 FF 58 01 03 00 FF 2F 00", "0 0 4/4", 0},
      {"a numerator of 0", 96, "00 FF 58 04 00 02 18 08 00 FF 2F 00", "0 0 4/4", 0},
      {"a denominator of 2^255", 96, "00 FF 58 04 04 FF 18 08 00 FF 2F 00", "0 0 4/4", 0},
      {"a bar shorter than a tick", 24, "00 FF 58 04 04 07 18 08 00 FF 2F 00", "0 0 4/4", 0},
      {"division 0", 0, "60 FF 58 04 03 02 18 08 00 FF 2F 00", "0 0 4/4", 0},
  };
  for (const auto& c : cases) {
    const auto conductor = ScanConductorTrack(Hex(c.track), static_cast<std::uint16_t>(c.division));
    ASSERT_THAT(conductor, IsOk()) << c.what;
    EXPECT_EQ(Map(conductor->signatures), c.map) << c.what;
    EXPECT_EQ(conductor->tempo.value_or(0), c.tempo) << c.what;
  }
  EXPECT_THAT(ScanConductorTrack(Hex("00 FF 58 04 03"), 96), FailsWith(Outcome::DamagedMidi));
}

TEST(ConductorTest, CountsBarsAcrossChanges) {
  const TimeSignatureMap map = {{0, 0, 4, 4}, {768, 2, 6, 8}};
  const struct {
    std::uint64_t tick, bar;
  } cases[] = {{0, 0}, {383, 0}, {384, 1}, {767, 1}, {768, 2}, {1055, 2}, {1056, 3}, {768 + 288 * 10, 12}};
  for (const auto& c : cases) EXPECT_EQ(BarOf(map, 96, c.tick), c.bar) << c.tick;
  EXPECT_EQ(BarOf(map, 0, 5000), 2U);  // a file without a time base has no bars to count
}

}  // namespace
}  // namespace ts5
