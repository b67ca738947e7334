// Format and time base by hand-made bytes.
#include <gmock/gmock.h>

#include <algorithm>
#include <string>
#include <utility>
#include <vector>

#include "midi/converter_fields.h"
#include "midi/format_change.h"
#include "midi/midi_containers.h"
#include "midi/midi_file.h"
#include "midi/time_base.h"
#include "midi_bytes.h"
#include "platform/base/text.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;

// The tracks of a plain file, one text each.
std::string TracksOf(ByteView file) {
  const auto tracks = MidiTracks(file, DetectMidiKind(file).header.trackCount);
  if (!tracks) return ToString(tracks.error());
  std::string text;
  for (const ByteView track : *tracks) text += '[' + Events(track) + ']';
  return text;
}

TEST(MergeTest, ByteForByte) {
  const Bytes file =
      Join({Header(1, 2, 480), Track("00 FF 58 04 03 02 18 08 83 60 FF 51 03 07 A1 20 00 FF 2F 00"),
            Track("00 C0 05 83 60 90 3C 40 60 3C 00 87 68 FF 2F 00")});
  const auto merged = MergeTracksToFormat0(file);
  ASSERT_THAT(merged, IsOk());
  EXPECT_EQ(
      Dump(*merged),
      Dump(Join({Header(0, 1, 480),
                 Track("00 FF 58 04 03 02 18 08 00 C0 05 83 60 FF 51 03 07 A1 20 00 90 3C 40 60 90 3C 00 "
                       "00 FF 2F 00")})));
}

// Each class before the next at the same tick, whichever of them stands in the first track.
TEST(MergeTest, EqualTicksGoByClass) {
  // Separated by bars.
  constexpr std::string_view kOrder =
      "FF 03 01 41|FF 02 01 41|FF 58 04 04 02 18 08|FF 59 02 00 00|FF 51 03 07 A1 20|FF 04 00|"
      "FF 54 05 0000000000|FF 7F 00|FF 01 00|FF 07 00|FF 00 02 0000|FF 06 00|FF 21 01 00|FF 05 00|"
      "FF 20 01 00|F0 01 F7|B5 20 01|C5 01|B5 07 64|95 3C 00|95 3C 40|D5 01|A5 3C 01|E5 00 40|"
      "F7 01 F8";
  const std::vector<std::string_view> classes = Split(kOrder, '|');
  const std::vector<std::string> order(classes.begin(), classes.end());
  for (std::size_t i = 0; i + 1 < order.size(); ++i) {
    for (std::size_t j = i + 1; j < order.size(); ++j) {
      const Bytes first = Track("05 " + order[i] + " 00 FF 2F 00");
      const Bytes second = Track("05 " + order[j] + " 00 FF 2F 00");
      const std::string expected = '[' + Events("05" + order[i] + "00" + order[j] + "00 FF 2F 00") + ']';
      EXPECT_EQ(TracksOf(*MergeTracksToFormat0(Join({Header(1, 2, 96), first, second}))), expected);
      EXPECT_EQ(TracksOf(*MergeTracksToFormat0(Join({Header(1, 2, 96), second, first}))), expected);
    }
  }
}

TEST(MergeTest, EqualClassesGoByTrack) {
  const struct {
    const char* what;
    std::vector<const char*> tracks;
    const char* merged;
  } cases[] = {
      {"bank select by both controllers",
       {"00 B0 20 01 00 FF 2F 00", "00 B1 00 02 00 FF 2F 00"},
       "[0:B0 20 01; 0:B1 00 02]"},
      {"note-offs of both kinds",
       {"05 91 3C 00 00 FF 2F 00", "05 80 3C 40 00 FF 2F 00"},
       "[5:91 3C 00; 5:80 3C 40]"},
      {"kinds without a place",
       {"00 FF 08 00 00 FF 2F 00", "00 FF 09 00 00 FF 2F 00", "00 F7 00 00 FF 2F 00"},
       "[0:FF 08 00; 0:FF 09 00; 0:F7 00]"},
      // The order inside a track stands: its tempo waits for the note before it.
      {"inside a track",
       {"00 90 3C 40 00 FF 51 03 07 A1 20 00 FF 2F 00", "00 E0 00 40 00 FF 2F 00"},
       "[0:90 3C 40; 0:FF 51 03 07 A1 20; 0:E0 00 40]"},
      {"a track that ended early",
       {"00 FF 2F 00", "60 C0 01 00 FF 2F 00", "30 C1 01 81 00 FF 2F 00"},
       "[48:C1 01; 96:C0 01]"},
      {"running status of several tracks",
       {"00 90 3C 40 0A 3C 00 00 FF 2F 00", "05 91 40 40 0A FF 01 01 41 00 40 00 00 FF 2F 00"},
       "[0:90 3C 40; 5:91 40 40; 10:90 3C 00; 15:FF 01 01 41; 15:91 40 00]"},
      {"nothing at all", {"60 FF 2F 00"}, "[]"},
  };
  for (const auto& c : cases) {
    Bytes file = Header(1, static_cast<unsigned>(c.tracks.size()), 96);
    for (const char* track : c.tracks) file = Join({file, Track(track)});
    EXPECT_EQ(TracksOf(*MergeTracksToFormat0(file)), c.merged) << c.what;
  }
}

// 65,535 tracks: a search through all of them for every event would take minutes.
TEST(MergeTest, ManyTracks) {
  Bytes file = Header(1, 0xFFFF, 96);
  const Bytes track = Track("00 90 3C 40 60 3C 00 00 FF 2F 00");
  file.reserve(file.size() + 0xFFFF * track.size());
  for (unsigned i = 0; i < 0xFFFF; ++i) file.insert(file.end(), track.begin(), track.end());
  const auto merged = MergeTracksToFormat0(file);
  ASSERT_THAT(merged, IsOk());
  EXPECT_EQ(merged->size(), 14U + 8U + 2U * 0xFFFFU * 4U + 4U);
}

TEST(SplitTest, ByteForByte) {
  const Bytes file =
      Join({Header(0, 1, 96),
            Track("00 FF 03 01 41 00 C3 05 0A 91 3C 40 0A F0 02 7E F7 0A 3C 00 83 60 93 40 40 00 FF 2F 00")});
  const auto split = SplitChannelsToFormat1(file);
  ASSERT_THAT(split, IsOk());
  EXPECT_EQ(Dump(*split), Dump(Join({Header(1, 3, 96), Track("00 FF 03 01 41 14 F0 02 7E F7 00 FF 2F 00"),
                                     Track("0A 91 3C 40 14 91 3C 00 00 FF 2F 00"),
                                     Track("00 C3 05 83 7E 93 40 40 00 FF 2F 00")})));
}

TEST(SplitTest, EveryChannelInOrder) {
  std::string events;
  for (int channel = 15; channel >= 0; --channel)
    events += "01 C" + Dump(Bytes{static_cast<std::uint8_t>(channel)}).substr(1) + " 07 ";
  const auto split = SplitChannelsToFormat1(Join({Header(0, 1, 96), Track(events + "00 FF 2F 00")}));
  ASSERT_THAT(split, IsOk());
  EXPECT_EQ(TracksOf(*split),
            "[][16:C0 07][15:C1 07][14:C2 07][13:C3 07][12:C4 07][11:C5 07][10:C6 07][9:C7 07][8:C8 07]"
            "[7:C9 07][6:CA 07][5:CB 07][4:CC 07][3:CD 07][2:CE 07][1:CF 07]");
}

TEST(SplitTest, HeadersThatLie) {
  const Bytes melody = Track("00 90 3C 40 60 3C 00 00 FF 2F 00");
  const Bytes bass = Track("30 91 30 40 00 FF 2F 00");
  // Format 0 with two tracks: both are kept.
  EXPECT_EQ(TracksOf(*SplitChannelsToFormat1(Join({Header(0, 2, 96), melody, bass}))),
            "[][0:90 3C 40; 96:90 3C 00][48:91 30 40]");
  EXPECT_EQ(TracksOf(*SplitChannelsToFormat1(Join({Header(0, 0, 96), melody}))),
            "[][0:90 3C 40; 96:90 3C 00]");
  EXPECT_EQ(TracksOf(*SplitChannelsToFormat1(Join({Header(1, 1, 96), bass}))), "[][48:91 30 40]");
  // Bytes behind the last track are none of its business.
  EXPECT_EQ(TracksOf(*SplitChannelsToFormat1(Join({Header(0, 1, 96), bass, Hex("4D54726B FF")}))),
            "[][48:91 30 40]");
}

TEST(FormatChangeTest, Refusals) {
  const Bytes track = Track("00 90 3C 40 00 FF 2F 00");
  // Two deltas that fit, in one stream of events one that does not.
  const Bytes far = Track("FF FF FF 7F FF 2F 00");
  const struct {
    const char* what;
    Bytes file;
    Outcome code;
  } cases[] = {
      {"another magic", Join({Header(1, 1, 96, "RDL3"), track}), Outcome::DamagedMidi},
      {"cut in the header", Hex("4D546864 0000"), Outcome::ReadFailed},
      {"another chunk", Join({Header(1, 2, 96), track, Hex("58464948 00000000")}), Outcome::DamagedMidi},
      {"a track too few", Join({Header(1, 2, 96), track}), Outcome::ReadFailed},
      {"a track cut short", Join({Header(1, 1, 96), Hex("4D54726B 0000000A 00 FF 2F 00")}),
       Outcome::ReadFailed},
      {"a track without end", Join({Header(1, 2, 96), track, Track("00 90 3C 40")}), Outcome::DamagedMidi},
      {"damage in the last track", Join({Header(1, 2, 96), track, Track("60 3C 40 00 FF 2F 00")}),
       Outcome::DamagedMidi},
      {"a delta that cannot be written", Join({Header(1, 1, 96), Track("90 80 80 80 00 C0 01 00 FF 2F 00")}),
       Outcome::DamagedMidi},
  };
  for (const auto& c : cases) {
    EXPECT_THAT(MergeTracksToFormat0(c.file), FailsWith(c.code)) << c.what;
    EXPECT_THAT(SplitChannelsToFormat1(c.file), FailsWith(c.code)) << c.what;
  }
  EXPECT_THAT(MergeTracksToFormat0(Join({Header(1, 1, 96), far})), IsOk());
}

// A file with a program change at each of the ticks, in another time base; the ticks of its events.
std::vector<std::uint64_t> Rescaled(const std::vector<std::uint64_t>& ticks, std::uint16_t from,
                                    std::uint16_t to) {
  ByteWriter events;
  std::uint64_t last = 0;
  for (const std::uint64_t tick : ticks) {
    EXPECT_TRUE(WriteVarLen(tick - std::exchange(last, tick), events));
    events.Append(Hex("C0 01"));
  }
  events.Append(Hex("00 FF 2F 00"));
  const auto changed = ChangeTimeBase(Join({Header(0, 1, from), Track(events.View())}), to);
  EXPECT_THAT(changed, IsOk());
  std::vector<std::uint64_t> found;
  MidiEventCursor cursor(ByteView(*changed).subspan(22));
  for (MidiEvent event; cursor.Next(event);) found.push_back(event.tick);
  return found;
}

TEST(TimeBaseTest, ByteForByte) {
  // 96 -> 480: every absolute time by five; running status, long forms and what stands in them are kept.
  const Bytes file = Join({Header(1, 2, 96), Track("00 FF 51 03 07 A1 20 60 FF 01 80 01 41 60 FF 2F 05"),
                           Track("0A 90 3C 40 60 3C 00 80 60 F0 02 7E F7 00 FF 2F 00")});
  EXPECT_EQ(Dump(*ChangeTimeBase(file, 480)),
            Dump(Join({Header(1, 2, 480), Track("00 FF 51 03 07 A1 20 83 60 FF 01 80 01 41 83 60 FF 2F 00"),
                       Track("32 90 3C 40 83 60 3C 00 83 60 F0 02 7E F7 00 FF 2F 00")})));
  // The container stays, without the settings behind its tracks.
  for (const char* magic : {"RDL3", "STVR"}) {
    const Bytes song = Join({Header(0, 1, 96, magic), Track("60 C0 01 00 FF 2F 00"), Bytes(8696)});
    EXPECT_EQ(Dump(*ChangeTimeBase(song, 192)),
              Dump(Join({Header(0, 1, 192, magic), Track("81 40 C0 01 00 FF 2F 00")})));
  }
}

TEST(TimeBaseTest, RoundsAbsoluteTimesTowardZero) {
  const struct {
    unsigned from, to;
    const char* track;
    const char* events;
  } cases[] = {
      // Events one to four ticks apart fall on one tick; the next ones do not drift.
      {480, 96, "04 C0 01 01 C0 02 04 C0 03 01 C0 04 83 56 C0 05 00 FF 2F 00",
       "0:C0 01; 1:C0 02; 1:C0 03; 2:C0 04; 96:C0 05"},
      {96, 144, "01 C0 01 01 C0 02 01 C0 03 00 FF 2F 00", "1:C0 01; 3:C0 02; 4:C0 03"},
      // Factors that single precision rounds down: the beats stay beats.
      {480, 336, "83 60 C0 01 83 60 C0 02 83 60 C0 03 00 FF 2F 00", "336:C0 01; 672:C0 02; 1008:C0 03"},
      {480, 168, "83 60 C0 01 83 60 C0 02 83 60 C0 03 00 FF 2F 00", "168:C0 01; 336:C0 02; 504:C0 03"},
      {1, 768, "01 C0 01 00 FF 2F 00", "768:C0 01"},
      {0x7FFF, 48, "FF FF FF 7F C0 01 00 FF 2F 00", "393227:C0 01"},
  };
  for (const auto& c : cases) {
    const auto changed =
        ChangeTimeBase(Join({Header(0, 1, c.from), Track(c.track)}), static_cast<std::uint16_t>(c.to));
    ASSERT_THAT(changed, IsOk());
    EXPECT_EQ(TracksOf(*changed), '[' + std::string(c.events) + ']') << c.from << " -> " << c.to;
    EXPECT_EQ(DetectMidiKind(*changed).header.division, c.to);
  }
}

// Pieces of many hours, or files with a far-away end: beyond what a float holds, to the tick and in order.
TEST(TimeBaseTest, FarTicksAreExact) {
  const std::vector<std::uint64_t> ticks = {3355443,  3355445,  5000001,  16777215,
                                            16777216, 16777217, 30000001, 45000001};
  const std::pair<std::uint16_t, std::uint16_t> cases[] = {
      {96, 480}, {480, 336}, {480, 96}, {120, 768}, {768, 48}};
  for (const auto& [from, to] : cases) {
    const auto changed = Rescaled(ticks, from, to);
    ASSERT_EQ(changed.size(), ticks.size());
    for (std::size_t i = 0; i < ticks.size(); ++i) {
      const std::uint64_t exact = ticks[i] * to / from;
      const bool far = std::max(ticks[i], exact) > 1U << 24;
      EXPECT_NEAR(static_cast<double>(changed[i]), static_cast<double>(exact), far ? 0 : 1)
          << ticks[i] << " * " << to << " / " << from;
    }
  }
}

TEST(TimeBaseTest, BeatsOfUsualTimeBasesStayBeats) {
  constexpr std::uint16_t kSources[] = {24, 48, 96, 120, 192, 240, 256, 384, 480, 768, 960, 1024};
  for (const std::uint16_t from : kSources) {
    for (const std::uint16_t to : kTimeBases) {
      std::vector<std::uint64_t> before(2000);
      std::vector<std::uint64_t> after(before.size());
      for (std::size_t beat = 0; beat < before.size(); ++beat) {
        before[beat] = (beat + 1) * from;
        after[beat] = (beat + 1) * to;
      }
      EXPECT_EQ(Rescaled(before, from, to), after) << from << " -> " << to;
    }
  }
}

TEST(TimeBaseTest, Refusals) {
  const Bytes track = Track("60 C0 01 00 FF 2F 00");
  const Bytes song = Join({Header(0, 1, 96), track});
  const struct {
    const char* what;
    Bytes file;
    unsigned division;
    Outcome code;
  } cases[] = {
      {"SMPTE division", Join({Header(0, 1, 0xE728), track}), 480, Outcome::WrongFormat},
      {"no division", Join({Header(0, 1, 0), track}), 480, Outcome::WrongFormat},
      {"to no division", song, 0, Outcome::WrongFormat},
      {"to SMPTE", song, 0xE728, Outcome::WrongFormat},
      {"no MIDI file", Hex("00"), 480, Outcome::WrongFormat},
      {"another chunk", Join({Header(0, 1, 96), Hex("58464948 00000000")}), 480, Outcome::WrongFormat},
      {"a track that the header does not count", Join({Header(0, 0, 96), track}), 480, Outcome::WrongFormat},
      {"cut short", Bytes(song.begin(), song.end() - 1), 480, Outcome::ReadFailed},
      {"a track without end", Join({Header(0, 1, 96), Track("60 C0 01")}), 480, Outcome::WrongFormat},
      {"a distance too long", Join({Header(0, 1, 96), Track("FF FF FF 7F C0 01 00 FF 2F 00")}), 480,
       Outcome::WrongFormat},
      {"an end too far", Join({Header(0, 1, 96), Track("00 C0 01 FF FF FF 7F FF 2F 00")}), 480,
       Outcome::WrongFormat},
      {"a RIFF form of something else", Join({Hex("52494646 00000000 57415645"), song}), 480,
       Outcome::WrongFormat},
  };
  for (const auto& c : cases) {
    const auto division = static_cast<std::uint16_t>(c.division);
    EXPECT_THAT(ChangeTimeBase(c.file, division), FailsWith(c.code)) << c.what;
  }
}

TEST(LongWorkTest, CanBeWatchedAndStopped) {
  ByteWriter events;
  for (int i = 0; i < 100000; ++i) events.Append(Hex("01 C0 01"));
  events.Append(Hex("00 FF 2F 00"));
  const Bytes file = Join({Header(0, 1, 96), Track(events.View())});
  const auto works = {+[](ByteView f, const WorkWatch& w) { return MergeTracksToFormat0(f, w); },
                      +[](ByteView f, const WorkWatch& w) { return SplitChannelsToFormat1(f, w); },
                      +[](ByteView f, const WorkWatch& w) { return ChangeTimeBase(f, 480, w); }};
  for (const auto work : works) {
    std::vector<double> progress;
    WorkWatch watch{{}, [&](double done) { progress.push_back(done); }};
    EXPECT_THAT(work(file, watch), IsOk());
    ASSERT_GT(progress.size(), 3U);
    EXPECT_TRUE(std::ranges::is_sorted(progress));
    EXPECT_THAT(progress.back(), testing::AllOf(testing::Gt(0.5), testing::Le(1.0)));
    watch.cancelled = [] { return true; };
    EXPECT_THAT(work(file, watch), FailsWith(Outcome::Cancelled));
  }
}

}  // namespace
}  // namespace ts5
