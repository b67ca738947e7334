// Real files against what two other readers found in them, and through every option set of the converter.
#include <gmock/gmock.h>

#include <algorithm>
#include <map>
#include <string>
#include <vector>

#include "midi/conductor.h"
#include "midi/merged_events.h"
#include "midi/midi_converter.h"
#include "midi_bytes.h"
#include "platform/files/files.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;

// Counts over all tracks. notes: Note On with velocity; events: all but the end-of-track events.
struct Facts {
  const char* name;
  int kind;
  unsigned format, tracks, division, notes, noteOffs, programs, controls, bends, sysEx, lyrics, texts, events;
  std::uint32_t tempo;     // microseconds a quarter note, first of all; 0: none
  std::uint64_t length;    // ticks
  const char* signatures;  // of the first track
};
constexpr Facts kFiles[] = {
    {"freedoom_d_bunny.mid", 14, 1, 12, 960, 1309, 1309, 11, 14, 0, 0, 0, 0, 3090, 500000, 120960, "0 3/4"},
    {"freedoom_d_dm24.mid", 13, 0, 1, 192, 2916, 2917, 9, 488, 4110, 0, 0, 1, 10446, 387096, 59138, "0 4/4"},
    {"freedoom_d_e2m7.mid", 14, 1, 11, 96, 3567, 3567, 52, 261, 54, 0, 0, 0, 7514, 550459, 44544,
     "0 6/8; 23040 7/4; 28416 6/8"},
    {"jazzsoft_test-all-gm-percussion.mid", 13, 0, 1, 96, 183, 183, 0, 0, 0, 1, 0, 63, 432, 0, 26352, ""},
    {"jazzsoft_test-c-major-scale.mid", 13, 0, 1, 96, 8, 8, 0, 0, 0, 0, 0, 11, 29, 0, 768, ""},
    {"jazzsoft_test-karaoke-kar.mid", 14, 1, 3, 100, 29, 29, 1, 0, 0, 0, 0, 28, 91, 666667, 1590, ""},
    {"jazzsoft_test-multichannel-chords-1.mid", 14, 1, 3, 96, 24, 24, 0, 0, 0, 0, 0, 10, 60, 0, 768, ""},
    {"jazzsoft_test-rpn-00-01-fine-tuning.mid", 13, 0, 1, 96, 25, 25, 0, 12, 0, 0, 0, 3, 67, 0, 2400, ""},
    {"jazzsoft_test-smpte-offset.mid", 13, 0, 1, 96, 8, 8, 0, 0, 0, 0, 0, 3, 22, 0, 768, ""},
    {"jazzsoft_test-sysex-gs-40-1x-15-drum-part-change.mid", 13, 0, 1, 96, 8, 8, 0, 0, 0, 3, 0, 4, 25, 0,
     1152, ""},
    {"jazzsoft_test-vlq-3-byte.mid", 13, 0, 1, 96, 8, 8, 0, 0, 0, 0, 0, 3, 21, 0, 768, ""},
    {"made_c_major_scale.rmi", 15, 0, 1, 96, 8, 8, 0, 0, 0, 0, 0, 11, 29, 0, 768, ""},
    {"made_c_major_scale_smpte25x40.mid", -1, 0, 1, 59176, 8, 8, 0, 0, 0, 0, 0, 11, 29, 0, 768, ""},
    {"made_gymnopedie.rdl", 16, 1, 3, 384, 282, 0, 0, 75, 0, 0, 0, 2, 650, 1000000, 54144, "0 3/4"},
    {"made_gymnopedie.rmi", 15, 1, 3, 384, 282, 0, 0, 75, 0, 0, 0, 2, 650, 1000000, 54144, "0 3/4"},
    {"music21_test10.mid", 13, 0, 1, 480, 16, 0, 0, 0, 0, 0, 0, 0, 41, 500000, 7320, "0 4/4"},
    {"music21_test18.mid", 14, 1, 2, 480, 34, 34, 0, 0, 0, 0, 34, 0, 106, 500000, 16800, "0 4/4"},
    {"mutopia_debussy-arabesque-no1.mid", 14, 1, 3, 384, 1448, 0, 0, 0, 0, 0, 0, 2, 2913, 416666, 162432,
     "0 4/4; 142848 2/4; 143616 4/4"},
    {"mutopia_maple-leaf-rag.mid", 14, 1, 3, 384, 2566, 0, 0, 0, 0, 0, 0, 2, 5145, 500000, 110592, "0 2/4"},
    {"mutopia_satie-gymnopedie-no1.mid", 14, 1, 3, 384, 282, 0, 0, 75, 0, 0, 0, 2, 650, 1000000, 54144,
     "0 3/4"},
};

Bytes FileOf(const Facts& facts) {
  return *ReadFile(DataPath(std::string("midi/") + facts.name));
}

TEST(RealFilesTest, HoldWhatOtherReadersFind) {
  for (const Facts& facts : kFiles) {
    const Bytes file = FileOf(facts);
    const MidiFileInfo info = DetectMidiKind(file);
    EXPECT_EQ(static_cast<int>(info.kind), facts.kind) << facts.name;
    EXPECT_EQ(info.header.format, facts.format) << facts.name;
    EXPECT_EQ(info.header.trackCount, facts.tracks) << facts.name;
    EXPECT_EQ(info.header.division, facts.division) << facts.name;

    const auto tracks = MidiTracks(MidiBytesOf(file), info.header.trackCount);
    ASSERT_THAT(tracks, IsOk()) << facts.name;
    std::map<unsigned, unsigned> statuses;  // by message type
    std::map<unsigned, unsigned> metas;
    unsigned events = 0, notes = 0, silent = 0;
    std::uint64_t length = 0;
    for (const ByteView track : *tracks) {
      MidiEventCursor cursor(track);
      for (MidiEvent event; cursor.Next(event); ++events) {
        ++statuses[event.status >= 0xF0 ? event.status : event.MessageType()];
        if (event.status == kMetaStatus) ++metas[event.metaType];
        notes += event.IsNoteOn();
        silent += event.MessageType() == 0x90 && event.IsNoteOff();
      }
      EXPECT_TRUE(cursor.AtEndOfTrack()) << facts.name;
      length = std::max(length, cursor.Tick());
    }
    EXPECT_EQ(notes, facts.notes) << facts.name;
    EXPECT_EQ(statuses[0x90], notes + silent) << facts.name;
    EXPECT_EQ(statuses[0x80], facts.noteOffs) << facts.name;
    EXPECT_EQ(statuses[0xC0], facts.programs) << facts.name;
    EXPECT_EQ(statuses[0xB0], facts.controls) << facts.name;
    EXPECT_EQ(statuses[0xE0], facts.bends) << facts.name;
    EXPECT_EQ(statuses[0xF0], facts.sysEx) << facts.name;
    EXPECT_EQ(metas[0x05], facts.lyrics) << facts.name;
    EXPECT_EQ(metas[0x01], facts.texts) << facts.name;
    EXPECT_EQ(events, facts.events) << facts.name;
    EXPECT_EQ(length, facts.length) << facts.name;

    const auto conductor = ScanConductorTrack(tracks->front(), info.header.division);
    ASSERT_THAT(conductor, IsOk()) << facts.name;
    EXPECT_EQ(conductor->tempo.value_or(0), facts.tempo == 0 ? 0 : 60'000'000 / facts.tempo) << facts.name;
    std::string signatures;
    for (const auto& e : conductor->signatures) {
      signatures += (signatures.empty() ? "" : "; ") + std::to_string(e.tick) + ' ' +
                    std::to_string(e.numerator) + '/' + std::to_string(e.denominator);
    }
    EXPECT_EQ(signatures, *facts.signatures == 0 ? "0 4/4" : facts.signatures) << facts.name;
  }
}

struct Timed {
  std::uint64_t tick;
  std::size_t track;
  std::string bytes;
  unsigned place;  // MergeClass
};
using TimedTracks = std::vector<std::vector<Timed>>;

TimedTracks Read(ByteView file) {
  TimedTracks all;
  const auto tracks = MidiTracks(MidiBytesOf(file), DetectMidiKind(file).header.trackCount);
  if (!tracks) return all;
  for (const ByteView track : *tracks) {
    std::vector<Timed>& events = all.emplace_back();
    MidiEventCursor cursor(track);
    for (MidiEvent event; cursor.Next(event);) {
      std::string bytes(AsText(event.encoded));
      if (event.IsChannelMessage() && static_cast<std::uint8_t>(bytes[0]) < 0x80)
        bytes.insert(0, 1, static_cast<char>(event.status));
      events.push_back({event.tick, all.size() - 1, bytes, MergeClass(event)});
    }
    EXPECT_FALSE(cursor.Damaged());
  }
  return all;
}

// One after the other, always the first of those that are next: slow, and nothing to go wrong in it.
std::vector<Timed> Merged(TimedTracks tracks) {
  std::vector<Timed> merged;
  std::vector<std::size_t> next(tracks.size());
  while (true) {
    const Timed* best = nullptr;
    for (std::size_t t = 0; t < tracks.size(); ++t) {
      if (next[t] == tracks[t].size()) continue;
      const Timed& event = tracks[t][next[t]];
      if (best == nullptr || std::pair(event.tick, event.place) < std::pair(best->tick, best->place))
        best = &event;
    }
    if (best == nullptr) return merged;
    ++next[best->track];
    merged.push_back(*best);
  }
}

TimedTracks Split(const std::vector<Timed>& events) {
  TimedTracks tracks(17);
  for (const Timed& event : events) {
    const auto status = static_cast<std::uint8_t>(event.bytes[0]);
    tracks[status < 0xF0 ? 1U + (status & 0x0FU) : 0U].push_back(event);
  }
  std::erase_if(tracks, [&](const auto& track) { return &track != tracks.data() && track.empty(); });
  return tracks;
}

std::uint64_t Scaled(std::uint64_t tick, unsigned from, unsigned to) {
  const float factor = static_cast<float>(to) / static_cast<float>(from);
  return static_cast<std::uint64_t>(static_cast<float>(tick) * factor);
}

void ExpectSame(const TimedTracks& expected, const TimedTracks& found, const std::string& what) {
  ASSERT_EQ(expected.size(), found.size()) << what;
  for (std::size_t t = 0; t < expected.size(); ++t) {
    ASSERT_EQ(expected[t].size(), found[t].size()) << what;
    for (std::size_t e = 0; e < expected[t].size(); ++e) {
      ASSERT_EQ(expected[t][e].tick, found[t][e].tick) << what << ' ' << t << ' ' << e;
      ASSERT_EQ(expected[t][e].bytes, found[t][e].bytes) << what << ' ' << t << ' ' << e;
    }
  }
}

// Every file through all option sets, event for event.
TEST(RealFilesTest, KeepTheirMusicUnderAllOptions) {
  for (const Facts& facts : kFiles) {
    const Bytes file = FileOf(facts);
    const MidiFileInfo info = DetectMidiKind(file);
    for (unsigned bits = 0; bits < 32; ++bits) {
      ConverterParameters p;
      p.changeContainer = (bits & 1) != 0;
      p.toRiff = (bits & 2) != 0;
      p.changeFormat = (bits & 4) != 0;
      p.changeTimeBase = (bits & 8) != 0;
      p.timeBaseIndex = (bits & 16) != 0 ? 0 : 11;  // 48 or 480
      const std::string what = facts.name + std::string(" options ") + std::to_string(bits);
      const auto converted = ConvertMidi(file, info.kind, p, {});
      if (info.kind == MidiFileKind::None) {
        EXPECT_THAT(converted, FailsWith(Outcome::WrongFormat)) << what;
        continue;
      }
      ASSERT_THAT(converted, IsOk()) << what;
      EXPECT_EQ(converted->bytes.empty(), (converted->flags & ~(kFormatRefused | kSameTimeBase)) == 0)
          << what;
      if (converted->bytes.empty()) continue;

      TimedTracks expected = Read(file);
      if ((converted->flags & kToFormat0) != 0) expected = {Merged(expected)};
      if ((converted->flags & kToFormat1) != 0) expected = Split(Merged(expected));
      if ((converted->flags & kTimeBaseChanged) != 0) {
        for (auto& track : expected) {
          for (auto& event : track) event.tick = Scaled(event.tick, info.header.division, p.TimeBase());
        }
      }
      ExpectSame(expected, Read(converted->bytes), what);

      const MidiFileInfo result = DetectMidiKind(converted->bytes);
      EXPECT_EQ(ContainerOf(converted->bytes), TargetContainer(p, ContainerOf(file))) << what;
      EXPECT_EQ(result.header.division, p.changeTimeBase ? p.TimeBase() : info.header.division) << what;
      EXPECT_EQ(result.header.trackCount, expected.size()) << what;
    }
  }
}

}  // namespace
}  // namespace ts5
