// Files that were cut, patched or made to hurt: every road through the room ends with a result or a code that
// belongs to it, in time and in memory that has to do with the file.
#include <gmock/gmock.h>

#include <set>
#include <string>

#include "midi/conductor.h"
#include "midi/format_change.h"
#include "midi/midi_containers.h"
#include "midi/midi_converter.h"
#include "midi/time_base.h"
#include "midi_bytes.h"
#include "platform/files/files.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;

// A conversion of it must be a MIDI file whose tracks can be walked.
void ExpectWhole(const Result<Bytes>& result, const std::set<Outcome>& codes, const char* road) {
  if (!result) {
    EXPECT_TRUE(codes.contains(result.error())) << road << ' ' << ToString(result.error());
    return;
  }
  const MidiFileInfo info = DetectMidiKind(*result);
  EXPECT_NE(info.kind, MidiFileKind::None) << road;
  EXPECT_THAT(MidiTracks(MidiBytesOf(*result), info.header.trackCount), IsOk()) << road;
}

void TakeEveryRoad(ByteView file) {
  const MidiFileInfo info = DetectMidiKind(file);
  if (const auto tracks = MidiTracks(MidiBytesOf(file), info.header.trackCount); tracks && !tracks->empty()) {
    (void)ScanConductorTrack(tracks->front(), info.header.division);
  }
  (void)ReadRiffInfo(file);
  using enum Outcome;
  ExpectWhole(ChangeTimeBase(file, 480), {WrongFormat, ReadFailed}, "time base");
  if (info.kind == MidiFileKind::None) return;
  const RiffFileInfo riff{};
  if (const auto wrapped = SmfToRiff(file, riff)) {
    EXPECT_NE(DetectMidiKind(*wrapped).kind, MidiFileKind::None);  // goes over as it is, damage and all
  }
  ExpectWhole(RiffToSmf(file), {WrongFormat, ReadFailed}, "out of RIFF");
  ExpectWhole(SequencerToRiff(file, riff), {WrongFormat, ReadFailed}, "sequencer to RIFF");
  ExpectWhole(MergeTracksToFormat0(file), {DamagedMidi, ReadFailed}, "merge");
  ExpectWhole(SplitChannelsToFormat1(file), {DamagedMidi, ReadFailed}, "split");
}

const Bytes kSmall =
    Join({Header(1, 2, 96), Track("00 FF 58 04 03 02 18 08 81 40 FF 51 03 07 A1 20 00 FF 2F 00"),
          Track("00 C0 05 0A 90 3C 40 60 3C 00 05 F0 02 7E F7 05 FF 01 01 41 00 FF 2F 00")});

TEST(HostileFilesTest, CutAnywhere) {
  const Bytes files[] = {kSmall, *SmfToRiff(kSmall, {}),
                         Join({Header(1, 2, 96, "RDL3"), Bytes(kSmall.begin() + 14, kSmall.end())})};
  for (const Bytes& file : files) {
    for (std::size_t size = 0; size < file.size(); ++size) {
      const Bytes cut(file.begin(), file.begin() + static_cast<std::ptrdiff_t>(size));
      TakeEveryRoad(cut);
    }
  }
  for (std::size_t size = 0; size < kSmall.size(); ++size) {
    const ByteView cut = ByteView(kSmall).first(size);
    EXPECT_THAT(MergeTracksToFormat0(cut), FailsWith(Outcome::ReadFailed)) << size;
    EXPECT_THAT(ChangeTimeBase(cut, 480),
                testing::AnyOf(FailsWith(Outcome::ReadFailed), FailsWith(Outcome::WrongFormat)))
        << size;
  }
}

TEST(HostileFilesTest, EveryByteChanged) {
  for (const Bytes& file : {kSmall, *WrapInRiff(kSmall)}) {
    for (std::size_t at = 0; at < file.size(); ++at) {
      for (unsigned value = 0; value < 256; ++value) {
        Bytes patched = file;
        patched[at] = static_cast<std::uint8_t>(value);
        TakeEveryRoad(patched);
      }
    }
  }
}

TEST(HostileFilesTest, EndlessQuantities) {
  Bytes endless(16U << 20, 0xFF);
  endless[0] = 0;
  EXPECT_THAT(MergeTracksToFormat0(Join({Header(1, 1, 96), Track(endless)})),
              FailsWith(Outcome::DamagedMidi));
  // Long, but with an end: a delta of sixteen million bytes that means 1.
  std::fill(endless.begin(), endless.end() - 7, std::uint8_t{0x80});
  std::ranges::copy(Hex("01 C0 01 00 FF 2F 00"), endless.end() - 7);
  EXPECT_EQ(Dump(ByteView(*MergeTracksToFormat0(Join({Header(1, 1, 96), Track(endless)}))).subspan(22)),
            "01 C0 01 00 FF 2F 00");
}

TEST(HostileFilesTest, TicksBeyondAllMeasure) {
  // Half a million of the longest deltas: their sum does not fit 32 bits by far.
  ByteWriter events;
  for (int i = 0; i < 500000; ++i) events.Append(Hex("8F FF FF FF 7F C0 01"));
  events.Append(Hex("00 FF 2F 00"));
  const Bytes file = Join({Header(1, 1, 1), Track(events.View())});
  EXPECT_THAT(MergeTracksToFormat0(file), FailsWith(Outcome::DamagedMidi));
  EXPECT_THAT(ChangeTimeBase(file, 768), FailsWith(Outcome::WrongFormat));
  const auto conductor = ScanConductorTrack(ByteView(file).subspan(22), 1);
  ASSERT_THAT(conductor, IsOk());
  EXPECT_EQ(BarOf(conductor->signatures, 1, 500000ULL * 0xFFFFFFFF), 500000ULL * 0xFFFFFFFF / 4);
}

TEST(HostileFilesTest, LyingHeaders) {
  const Bytes track = Track("00 C0 01 00 FF 2F 00");
  EXPECT_THAT(MergeTracksToFormat0(Join({Header(1, 0xFFFF, 96), track})), FailsWith(Outcome::ReadFailed));
  EXPECT_THAT(MergeTracksToFormat0(Join({Header(1, 1, 96), Hex("4D54726B FFFFFFFF 00 FF 2F 00")})),
              FailsWith(Outcome::ReadFailed));
  // Fewer tracks than there are: the others lie behind the end.
  const auto merged = MergeTracksToFormat0(Join({Header(1, 1, 96), track, track}));
  ASSERT_THAT(merged, IsOk());
  EXPECT_EQ(Dump(*merged), Dump(Join({Header(0, 1, 96), track})));
  EXPECT_EQ(Dump(*MergeTracksToFormat0(Header(1, 0, 96))),
            Dump(Join({Header(0, 1, 96), Track("00 FF 2F 00")})));
}

// Real files with bytes changed all over: cut down to those that are cheap to walk often.
TEST(HostileFilesTest, RealFilesWithScatteredDamage) {
  std::uint32_t random = 1;
  for (const char* name : {"made_gymnopedie.rmi", "music21_test18.mid", "jazzsoft_test-karaoke-kar.mid"}) {
    const Bytes file = *ReadFile(DataPath(std::string("midi/") + name));
    for (int round = 0; round < 300; ++round) {
      Bytes damaged = file;
      for (int i = 0; i < 4; ++i) {
        random = random * 1664525 + 1013904223;
        damaged[random % damaged.size()] = static_cast<std::uint8_t>(random >> 24);
      }
      TakeEveryRoad(damaged);
    }
  }
}

}  // namespace
}  // namespace ts5
