#include "search/track_matcher.h"

#include <gmock/gmock.h>

#include <random>
#include <utility>

#include "reference_matcher.h"
#include "support/matchers.h"
#include "track_builder.h"

namespace ts5 {
namespace {

using test::TrackBuilder;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr std::uint16_t kDivision = 240;  // a tick of the file is a tick of the melody

struct Found {
  Outcome code = Outcome::Success;
  std::uint64_t count = 0;
  std::vector<SearchHit> hits;
};

struct Setting {
  std::vector<PreparedNote> melody;
  SearchOptions options;
  TimeSignatureMap signatures = {{}};
  std::uint16_t division = kDivision;
  std::uint32_t tempo = 120;
};

template <typename Search>
auto WithContext(const Setting& setting, const HitSink& sink, Search search) {
  const std::string file = "/m/x.mid";
  const std::function<bool()> never;
  return search(TrackContext{{&setting.melody, 1},
                             setting.options,
                             setting.signatures,
                             setting.division,
                             setting.tempo,
                             file,
                             sink,
                             never});
}

Found Find(const Bytes& track, const Setting& setting) {
  Found found;
  const HitSink sink = [&](const SearchHit& hit) {
    found.hits.push_back(hit);
    return Outcome::Success;
  };
  const SearchOutcome outcome =
      WithContext(setting, sink, [&](const TrackContext& c) { return SearchMidiTrack(track, 3, c); });
  found.code = outcome.code;
  found.count = outcome.hits;
  return found;
}

std::size_t Count(const Bytes& track, const Setting& setting) {
  const Found found = Find(track, setting);
  EXPECT_EQ(found.code, Outcome::Success);
  EXPECT_EQ(found.count, found.hits.size());
  return found.hits.size();
}

SearchOptions Options(RhythmMode rhythm, PitchMode pitch, Tolerance tolerance = Tolerance::None) {
  SearchOptions options;
  options.rhythm = rhythm;
  options.pitch = pitch;
  options.tolerance = tolerance;
  return options;
}

// c d e in quarters and a half note, as prepared for kDivision.
const std::vector<PreparedNote> kMelody = {{60, 240}, {62, 240}, {64, 480}};

Bytes Played(std::vector<std::pair<std::uint32_t, int>> notes, std::uint32_t end = 960) {
  TrackBuilder track;
  for (const auto& [delta, key] : notes) track.Note(delta, key);
  return track.End(end);
}

TEST(PrepareMelodyTest, ScalesAndJoinsTheRestBehindANote) {
  const std::vector<MelodyElement> elements = {
      {1061, 240}, {kRestCode, 120}, {kRestCode, 60}, {-11062, 30}, {64, 32767}};
  EXPECT_THAT(PrepareMelody(elements, 240),
              ElementsAre(PreparedNote{61, 360}, PreparedNote{62, 30}, PreparedNote{64, 32767}));
  EXPECT_THAT(PrepareMelody(elements, 96),
              ElementsAre(PreparedNote{61, 144}, PreparedNote{62, 12}, PreparedNote{64, 13106}));
  // 32767 x 960 / 240 does not fit in 16 bits.
  EXPECT_THAT(PrepareMelody({{64, 32767}}, 960),
              ElementsAre(PreparedNote{64, static_cast<std::uint16_t>(131068)}));
  EXPECT_THAT(PrepareMelody({{kRestCode, 240}}, 96), IsEmpty());
}

TEST(FirstNoteMatchesTest, OctavesEndWithTheKeys) {
  EXPECT_TRUE(FirstNoteMatches(PitchMode::AnyOctave, 60, 120));
  EXPECT_FALSE(FirstNoteMatches(PitchMode::AnyOctave, 60, 132));
}

TEST(HitTimeTest, IsTruncated) {
  EXPECT_EQ(HitTime(1920, 192, 100), 5999);
  EXPECT_EQ(HitTime(960, 480, 120), 1000);
  EXPECT_EQ(HitTime(960, 0, 120), 0);
  EXPECT_EQ(HitTime(~std::uint64_t{0}, 1, 3), 2147483647);
}

TEST(TrackMatcherTest, ToleranceEdges) {
  struct Case {
    Tolerance tolerance;
    std::uint32_t distance;
    bool found;
  };
  // 10 % of 240 allows 23 ticks, 20 % 47, 30 % 71: the products are formed with a hundredth in single
  // precision.
  const Case cases[] = {
      {Tolerance::None, 240, true},   {Tolerance::None, 239, false},   {Tolerance::None, 241, false},
      {Tolerance::Low, 217, true},    {Tolerance::Low, 216, false},    {Tolerance::Low, 263, true},
      {Tolerance::Low, 264, false},   {Tolerance::Medium, 193, true},  {Tolerance::Medium, 192, false},
      {Tolerance::Medium, 287, true}, {Tolerance::Medium, 288, false}, {Tolerance::High, 169, true},
      {Tolerance::High, 168, false},  {Tolerance::High, 311, true},    {Tolerance::High, 312, false}};
  for (const Case& c : cases) {
    const Setting setting = {kMelody, Options(RhythmMode::Exact, PitchMode::Absolute, c.tolerance)};
    EXPECT_EQ(Count(Played({{0, 60}, {c.distance, 62}, {240, 64}}), setting), c.found) << c.distance;
    EXPECT_EQ(Count(Played({{0, 60}, {240, 62}, {c.distance, 64}}), setting), c.found) << c.distance;
  }
}

TEST(TrackMatcherTest, RelativeRhythmIsOfSinglePrecision) {
  const auto count = [](const Bytes& track, const std::vector<PreparedNote>& melody) {
    return Count(track, {melody, Options(RhythmMode::Relative, PitchMode::Absolute)});
  };
  EXPECT_EQ(count(Played({{0, 60}, {480, 62}, {480, 64}}), kMelody), 1u);
  EXPECT_EQ(count(Played({{0, 60}, {480, 62}, {240, 64}}), kMelody), 0u);
  // 100 / 30 is a little too small: 30 ticks are scaled to 99, and nothing is tolerated.
  const std::vector<PreparedNote> hundred = {{60, 100}, {62, 100}};
  EXPECT_EQ(count(Played({{0, 60}, {30, 62}}), hundred), 0u);
  EXPECT_EQ(count(Played({{0, 60}, {25, 62}}), hundred), 1u);
}

// The gap between two onsets differs from the duration only inside a chord: the duration goes to the next
// onset more than 10 ticks behind.
TEST(TrackMatcherTest, OnsetsInsideChords) {
  const SearchOptions high = Options(RhythmMode::Exact, PitchMode::Absolute, Tolerance::High);
  const Setting twelve = {{{60, 12}, {62, 12}, {64, 12}}, high};
  // Durations 12 and 12. 30 % of 12 allow 3 ticks: a gap of 10 or 9 fits, one of 8 does not.
  EXPECT_EQ(Count(Played({{0, 60}, {10, 62}, {2, 64}, {10, 65}}), twelve), 1u);
  EXPECT_EQ(Count(Played({{0, 60}, {9, 62}, {3, 64}, {9, 65}}), twelve), 1u);
  EXPECT_EQ(Count(Played({{0, 60}, {8, 62}, {4, 64}, {8, 65}}), twelve), 0u);
  // At the end of the track every duration is 10. Of a gap 30 % of 10 are 3 ticks, formed in double precision
  // only; of a duration they are 2, because its hundredth is single precision.
  const Setting ten = {{{60, 10}, {60, 10}, {60, 10}}, high};
  EXPECT_EQ(Count(Played({{0, 60}, {7, 60}, {3, 60}}, 0), ten), 1u);
  EXPECT_EQ(Count(Played({{0, 60}, {6, 60}, {4, 60}}, 0), ten), 0u);
  const Setting seven = {{{60, 7}, {60, 10}, {60, 10}}, high};
  EXPECT_EQ(Count(Played({{0, 60}, {7, 60}, {3, 60}}, 0), seven), 0u);
}

TEST(TrackMatcherTest, LongMelodiesAreFound) {
  std::vector<PreparedNote> melody;
  std::vector<std::pair<std::uint32_t, int>> notes;
  for (int i = 0; i < 500; ++i) {
    melody.push_back({40 + i * 7 % 50, 240});
    notes.emplace_back(i == 0 ? 0 : 240, 40 + i * 7 % 50);
  }
  const SearchOptions exact = Options(RhythmMode::Exact, PitchMode::Absolute);
  EXPECT_EQ(Count(Played(notes), {melody, exact}), 1u);
  melody[498].key += 1;
  EXPECT_EQ(Count(Played(notes), {melody, exact}), 0u);
  EXPECT_EQ(Count(Played(notes), {{}, exact}), 0u);
}

// Ticks of a track do not end at 32 bits.
TEST(TrackMatcherTest, LongSilencesAreMeasured) {
  TrackBuilder track;
  track.Note(0, 60).Note(240, 62);
  for (int i = 0; i < 40; ++i) track.Message(kMaxVarLen, 0xB0, {7, 100});
  track.Note(240, 64).Note(0x4000, 60).Note(240, 62).Note(240, 64);
  const Bytes bytes = track.End(240);
  Setting setting = {kMelody, Options(RhythmMode::Exact, PitchMode::Absolute)};
  setting.tempo = 60'000'000;
  setting.signatures = {{}};
  EXPECT_EQ(Count(bytes, setting), 1u);
  setting.options.rhythm = RhythmMode::Any;
  const Found any = Find(bytes, setting);
  ASSERT_EQ(any.hits.size(), 2u);
  const std::uint64_t second = 480 + 40 * std::uint64_t{kMaxVarLen} + 0x4000;
  EXPECT_EQ(any.hits[1].bar, static_cast<std::int32_t>(second / 960));
}

TEST(TrackMatcherTest, ChordsRestartsAndOverlaps) {
  const Setting exact = {kMelody, Options(RhythmMode::Exact, PitchMode::Absolute)};
  struct Case {
    const char* what;
    Bytes track;
    Setting setting;
    std::vector<std::int32_t> times;  // milliseconds; 500 for 240 ticks
  };
  const std::vector<PreparedNote> aba = {{60, 240}, {62, 240}, {60, 240}};
  const Case cases[] = {
      {"a chord note before the melody note", Played({{0, 48}, {0, 60}, {240, 62}, {240, 64}}), exact, {0}},
      {"11 ticks behind is no chord note", Played({{0, 60}, {11, 60}, {240, 62}, {240, 64}}), exact, {22}},
      {"10 ticks behind is one", Played({{0, 60}, {10, 60}, {240, 62}, {240, 64}}), exact, {20}},
      {"hits do not overlap",
       Played({{0, 60}, {240, 62}, {240, 60}, {240, 62}, {240, 60}}),
       {aba, Options(RhythmMode::Exact, PitchMode::Absolute)},
       {0}},
      {"the next hit follows at once",
       Played({{0, 60}, {240, 62}, {240, 60}, {240, 60}, {240, 62}, {240, 60}}),
       {aba, Options(RhythmMode::Exact, PitchMode::Absolute)},
       {0, 1500}},
      {"one note",
       Played({{0, 60}, {5, 60}, {5, 61}}),
       {{{60, 1}}, Options(RhythmMode::Exact, PitchMode::Absolute)},
       {0, 10}},
  };
  for (const Case& c : cases) {
    std::vector<std::int32_t> times;
    for (const SearchHit& hit : Find(c.track, c.setting).hits) times.push_back(hit.time);
    EXPECT_EQ(times, c.times) << c.what;
  }
}

TEST(TrackMatcherTest, DrumsEndTheTrackUnlessTheyAreWanted) {
  TrackBuilder track;
  track.Note(0, 60)
      .Note(240, 62)
      .Note(240, 64)
      .Message(240, 0xC9, {0})
      .Note(0, 60)
      .Note(240, 62)
      .Note(240, 64);
  const Bytes bytes = track.End(10);
  Setting setting = {kMelody, Options(RhythmMode::Exact, PitchMode::Absolute)};
  EXPECT_EQ(Count(bytes, setting), 1u);
  setting.options.drumTrack = true;
  EXPECT_EQ(Count(bytes, setting), 2u);
  // The onset behind the last melodic note may be a drum.
  TrackBuilder onset;
  onset.Note(0, 60).Note(240, 62, 100, 9).Note(240, 64);
  setting = {{{60, 240}}, Options(RhythmMode::Any, PitchMode::Absolute)};
  EXPECT_EQ(Count(onset.End(), setting), 1u);
}

TEST(TrackMatcherTest, BarsFollowTheTimeSignatures) {
  const std::vector<PreparedNote> one = {{60, 240}};
  Setting setting = {one, Options(RhythmMode::Any, PitchMode::Absolute)};
  setting.signatures = {{0, 0, 4, 4}, {1920, 2, 3, 4}, {1920 + 1440, 4, 6, 8}};
  const Found found = Find(
      Played({{0, 60}, {959, 60}, {1, 60}, {959, 60}, {1, 60}, {720, 60}, {720, 60}, {719, 60}, {1, 60}}),
      setting);
  std::vector<std::int32_t> bars;
  for (const SearchHit& hit : found.hits) bars.push_back(hit.bar);
  EXPECT_THAT(bars, ElementsAre(0, 0, 1, 1, 2, 3, 4, 4, 5));
  EXPECT_EQ(found.hits[0].track, 3);
  EXPECT_EQ(found.hits[0].file, "/m/x.mid");
}

TEST(TrackMatcherTest, DamageEndsTheTrack) {
  const Setting any = {{{60, 240}}, Options(RhythmMode::Any, PitchMode::Absolute)};
  struct Case {
    const char* what;
    Bytes track;
    std::size_t sent;
  };
  const Case cases[] = {
      {"no end of track", TrackBuilder().Note(0, 60).Note(20, 60).Unfinished(), 1},
      {"nothing at all", {}, 0},
      {"a length without end",
       TrackBuilder().Note(0, 60).Note(20, 61).Raw(0, {0xFF, 0x01, 0x80}).Unfinished(), 1},
      {"a length beyond the end", TrackBuilder().Note(0, 61).Raw(0, {0xF0, 0x7F, 0x01}).Unfinished(), 0},
  };
  for (const Case& c : cases) {
    const Found found = Find(c.track, any);
    EXPECT_EQ(found.code, Outcome::DamagedMidi) << c.what;
    EXPECT_EQ(found.count, 0u) << c.what;
    EXPECT_EQ(found.hits.size(), c.sent) << c.what;
  }
  // Behind the drums nobody looks.
  TrackBuilder drums;
  drums.Note(0, 60).Note(20, 61).Message(0, 0xC9, {1});
  EXPECT_EQ(Find(drums.Unfinished(), any).code, Outcome::Success);
}

TEST(TrackMatcherTest, TheSinkAndTheUserEndTheSearch) {
  const Bytes track = Played({{0, 60}, {20, 60}, {20, 60}});
  const Setting setting = {{{60, 240}}, Options(RhythmMode::Any, PitchMode::Absolute)};
  int calls = 0;
  const HitSink full = [&](const SearchHit&) {
    return ++calls == 2 ? Outcome::OutOfMemory : Outcome::Success;
  };
  const SearchOutcome outcome =
      WithContext(setting, full, [&](const TrackContext& c) { return SearchMidiTrack(track, 0, c); });
  EXPECT_EQ(outcome.code, Outcome::OutOfMemory);
  EXPECT_EQ(calls, 2);

  const std::string file;
  const std::function<bool()> stop = [] { return true; };
  const TrackContext stopped = {
      {&setting.melody, 1}, setting.options, setting.signatures, 240, 120, file, full, stop};
  EXPECT_EQ(SearchMidiTrack(track, 0, stopped).code, Outcome::Cancelled);
}

// Dense chords and long silent stretches would make a look ahead from every note quadratic: an hour for
// these.
TEST(TrackMatcherTest, HostileTracksTakeLinearTime) {
  TrackBuilder chords;
  for (int i = 0; i < 1'000'000; ++i) chords.Note(0, 60);
  TrackBuilder silence;
  for (int i = 0; i < 1000; ++i) silence.Note(0, 60);
  for (int i = 0; i < 1'000'000; ++i) silence.Message(0, 0xB0, {7, 100});
  for (const Bytes& track : {chords.End(), silence.End()}) {
    for (const RhythmMode rhythm : {RhythmMode::Exact, RhythmMode::Any}) {
      std::vector<PreparedNote> melody(500, PreparedNote{60, 240});
      EXPECT_EQ(Find(track, {melody, Options(rhythm, PitchMode::Relative)}).code, Outcome::Success);
    }
  }
}

// Random tracks of few keys and distances near the melody's durations, so that matches begin, break and
// succeed often; chords, drums, other events, running status and damage between.
Bytes RandomTrack(std::mt19937& random, std::size_t events) {
  const auto pick = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
  static constexpr std::array<std::uint32_t, 12> kDeltas = {0, 0, 5, 10, 11, 24, 30, 48, 60, 120, 130, 240};
  static constexpr std::array<std::uint32_t, 6> kLongDeltas = {128,      0x3FFF,    0x4000,
                                                               0x1FFFFF, 0x7FFFFFF, kMaxVarLen};
  const int chords = pick(3);
  TrackBuilder track;
  for (std::size_t i = 0; i < events; ++i) {
    std::uint32_t delta = pick(3) < chords ? 0 : kDeltas[static_cast<std::size_t>(pick(11))];
    if (pick(99) == 0) delta = kLongDeltas[static_cast<std::size_t>(pick(5))];
    switch (pick(19)) {
      case 0:
        track.Raw(delta, {0xFF, 0x01, 0x01, 0x90});
        break;
      case 1:
        track.Message(delta, 0xC0, {pick(127)});
        break;
      case 2:
        track.Message(delta, 0xB0, {7, pick(127)});
        break;
      case 3:
        track.Message(delta, 0x80, {60 + pick(4), 64});
        break;
      case 4:
        track.Note(delta, 60 + pick(4), 0);
        break;
      case 5:
        track.Note(delta, 60 + pick(4), 100, pick(200) == 0 ? 9 : 1);
        break;
      default:
        track.Note(delta, 60 + pick(4) * 2 + (pick(9) == 0 ? 12 : 0), 100);
        break;
    }
  }
  Bytes bytes = pick(9) == 0 ? track.Unfinished() : track.End(static_cast<std::uint32_t>(pick(300)));
  if (pick(19) == 0 && !bytes.empty()) bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
  return bytes;
}

TEST(TrackMatcherTest, AgreesWithTheReference) {
  std::mt19937 random(20260815);
  const auto pick = [&](int most) { return static_cast<int>(random() % static_cast<unsigned>(most + 1)); };
  std::size_t hits = 0;
  std::size_t damaged = 0;
  for (int round = 0; round < 6000; ++round) {
    Setting setting;
    setting.division = static_cast<std::uint16_t>(24 + pick(480));
    setting.tempo = static_cast<std::uint32_t>(20 + pick(300));
    setting.options = Options(static_cast<RhythmMode>(pick(2)), static_cast<PitchMode>(pick(3)),
                              static_cast<Tolerance>(pick(3)));
    setting.options.drumTrack = pick(1) == 1;
    setting.signatures = {{0, 0, 4, 4}, {static_cast<std::uint64_t>(pick(2000)), 1, 3, 8}};
    const int length = pick(3) == 0 ? 1 + pick(20) : 1 + pick(3);
    for (int i = 0; i < length; ++i) {
      setting.melody.push_back(
          {60 + pick(4) * 2, static_cast<std::uint16_t>(pick(4) == 0 ? 10 + pick(200) : 120)});
    }
    // Some longer than a block of the stream.
    const Bytes track = RandomTrack(random, round % 50 == 0 ? 5000 : static_cast<std::size_t>(pick(200)));

    const HitSink none;
    const auto expected =
        WithContext(setting, none, [&](const TrackContext& c) { return test::ReferenceSearch(track, 3, c); });
    const Found found = Find(track, setting);
    ASSERT_EQ(found.code, expected.code) << round;
    ASSERT_EQ(found.hits, expected.hits) << round;
    ASSERT_EQ(found.count, expected.code == Outcome::Success ? expected.hits.size() : 0u) << round;
    // Searched with others in one walk it is found as often, and in the same order.
    Setting other = setting;
    other.melody = {{62, 120}, {64, 120}};
    const std::vector<PreparedMelody> melodies{other.melody, setting.melody, {}, setting.melody};
    std::vector<SearchHit> together[4];
    const HitSink sink = [&](SearchHit hit) {
      const auto melody = static_cast<std::size_t>(std::exchange(hit.melody, 0));
      together[melody].push_back(std::move(hit));
      return Outcome::Success;
    };
    const std::string file = "/m/x.mid";
    const std::function<bool()> never;
    (void)SearchMidiTrack(
        track, 3,
        {melodies, setting.options, setting.signatures, setting.division, setting.tempo, file, sink, never});
    if (found.code == Outcome::Success) {
      ASSERT_EQ(together[0], Find(track, other).hits) << round;
      ASSERT_EQ(together[1], found.hits) << round;
      ASSERT_EQ(together[3], found.hits) << round;
    }
    hits += found.hits.size();
    damaged += expected.code == Outcome::DamagedMidi ? 1 : 0;
  }
  EXPECT_GT(hits, 5000u);  // the comparison has something to compare
  EXPECT_GT(damaged, 300u);
}

}  // namespace
}  // namespace ts5
