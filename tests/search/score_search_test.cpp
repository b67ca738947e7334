// The melody search of scores: one rule at a time, and random scores against the plain reference.
#include "search/score_search.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <random>

#include "converters/score_formats.h"
#include "platform/files/files.h"
#include "score/score_log.h"
#include "score_reference.h"
#include "search/hit_texts.h"
#include "search/melody_text.h"
#include "search/score_items.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::int8_t kC = kMiddleC;

struct Found {
  SearchOutcome outcome;
  std::vector<SearchHit> hits;
};

Found Search(ByteView file, const MelodyQuery& query) {
  Found found;
  const HitSink sink = [&](const SearchHit& hit) {
    EXPECT_EQ(hit.file, "x.stv");
    found.hits.push_back(hit);
    found.hits.back().file.clear();
    return Outcome::Success;
  };
  found.outcome = SearchScoreImage(file, "x.stv", query, sink, {});
  EXPECT_EQ(found.outcome.hits, found.hits.size());
  return found;
}

MelodyQuery Query(std::string_view melody, RhythmMode rhythm = RhythmMode::Exact,
                  PitchMode pitch = PitchMode::Absolute) {
  MelodyQuery query;
  if (const auto read = MelodyFromNumbers(melody)) query.elements = read->elements;
  query.options.rhythm = rhythm;
  query.options.pitch = pitch;
  return query;
}

// "line/voice bar:beat first..last": what a hit shows, and its objects.
std::vector<std::string> Places(const ScoreDocument& score, const MelodyQuery& query) {
  const Found found = Search(WriteScore(score), query);
  EXPECT_EQ(found.outcome.code, Outcome::Success);
  std::vector<std::string> places;
  for (const SearchHit& hit : found.hits) {
    const HitRow row = HitColumns(SearchKind::Score, hit, false);
    places.push_back(
        row[1] + " " + row[2] + ":" + row[3] + " " +
        Format("%i.%i..%i.%i", hit.firstSystem, hit.firstObject, hit.lastSystem, hit.lastObject));
  }
  return places;
}

ScoreItem Note(std::uint8_t code, std::int8_t position) {
  return ChordItem(code, {test::Note(position)});
}
constexpr std::string_view kTune = "60:240,62:240,64:240";
const ScoreItem c = Note(2, kC);
const ScoreItem d = Note(2, kD);
const ScoreItem e = Note(2, kE);
const ScoreItem r = RestItem(2);

TEST(ScoreSearchTest, CountsBarsAndBeatsOfItems) {
  struct Case {
    const char* what;
    VoiceItems items;
    std::string_view melody;
    std::vector<std::string> places;
  };
  const Case cases[] = {
      {"from the start", {c, d, e}, kTune, {"1/1 1:1 0.0..0.2"}},
      {"clef and bar lines are objects", {ClefItem(0), r, c, d, e, BarItem()}, kTune, {"1/1 1:2 0.2..0.4"}},
      {"over a bar", {r, r, c, d, e}, kTune, {"1/1 1:3 0.2..0.4"}},
      {"bars without bar lines", {RestItem(0), RestItem(0), c, d, e}, kTune, {"1/1 3:1 0.2..0.4"}},
      {"rests of bars", {WholeBarRest(5), r, c, d, e}, kTune, {"1/1 6:2 0.2..0.4"}},
      {"twice, not overlapping", {c, c, c, c, c}, "60:240,60:240", {"1/1 1:1 0.0..0.1", "1/1 1:3 0.2..0.3"}},
      {"what breaks it may be its start", {c, d, c, d, e}, kTune, {"1/1 1:3 0.2..0.4"}},
      {"the note in a broken match is not tried", {c, c, d}, "60:240,60:240,62:240", {"1/1 1:1 0.0..0.2"}},
      {"an upbeat", {c, BarItem(), d, e}, kTune, {"1/1 0:4 0.0..0.3"}},
      {"an upbeat before a repeat", {r, c, BarItem(4), d, e}, kTune, {"1/1 0:4 0.1..0.4"}},
      {"behind an upbeat", {r, BarItem(), c, d, e}, kTune, {"1/1 1:1 0.2..0.4"}},
      {"a bar of its own length is no upbeat",
       {RestItem(0), BarItem(), c, d, e},
       kTune,
       {"1/1 2:1 0.2..0.4"}},
      {"a double bar does not end an upbeat", {r, BarItem(1), c, d, e}, kTune, {"1/1 1:2 0.2..0.4"}},
      {"only the first bar has one", {RestItem(0), r, BarItem(), c, d, e}, kTune, {"1/1 2:2 0.3..0.5"}},
      {"another time", {TimeItem(3, 3), r, r, c, d, e}, kTune, {"1/1 2:2 0.3..0.5"}},
      {"a time that cannot be", {TimeItem(3, 13), r, r, c, d, e}, kTune, {"1/1 1:3 0.3..0.5"}},
      {"tied notes are one",
       {Tied(Note(3, kC), false, true), Tied(Note(3, kC), true, false), d, e},
       kTune,
       {"1/1 1:1 0.0..0.3"}},
      {"three of them",
       {Tied(Note(3, kC), false, true), Tied(Note(4, kC), true, true), Tied(Note(4, kC), true, false), d, e},
       kTune,
       {"1/1 1:1 0.0..0.4"}},
      {"one flag does not tie", {Tied(Note(3, kC), false, true), Note(3, kC), d, e}, kTune, {}},
      {"nor another key", {Tied(Note(3, kC), false, true), Tied(Note(3, kD), true, false), d, e}, kTune, {}},
      {"rests in a row are one",
       {c, RestItem(3), RestItem(3), d},
       "60:240,r:240,62:240",
       {"1/1 1:1 0.0..0.3"}},
      {"rests are elements", {c, r, d}, "60:240,62:240", {}},
      {"which the melody must have", {c, d}, "60:240,r:240,62:240", {}},
      {"variants take no time",
       {c, ScoreItem{.kind = 7, .group = c.group}, d, e},
       kTune,
       {"1/1 1:1 0.0..0.3"}},
      {"other objects are passed over",
       {c, ScoreItem{.kind = 6}, d, ScoreItem{.kind = 9}, e},
       kTune,
       {"1/1 1:1 0.0..0.4"}},
      {"no notes", {r, BarItem()}, kTune, {}},
      {"no melody", {c}, "", {}},
  };
  for (const Case& row : cases)
    EXPECT_EQ(Places(OneVoice(row.items), Query(row.melody)), row.places) << row.what;
}

TEST(ScoreSearchTest, PitchAndRhythmFollowTheOptions) {
  struct Case {
    const char* what;
    VoiceItems items;
    MelodyQuery query;
    std::size_t hits;
  };
  constexpr auto kExact = RhythmMode::Exact;
  constexpr auto kRelative = RhythmMode::Relative;
  constexpr auto kAny = RhythmMode::Any;
  const VoiceItems halves = {Note(1, kC), Note(1, kD), Note(1, kE)};

  MelodyQuery tolerant = Query(kTune);
  tolerant.options.tolerance = Tolerance::High;
  const VoiceItems dotted = {ChordItem(2, {test::Note(kC)}, 1), Note(3, kD), e};
  const ScoreItem chord = ChordItem(2, {test::Note(kC), test::Note(kE)});
  const Case cases[] = {
      {"other values", halves, Query(kTune), 0},
      {"their relation", halves, Query(kTune, kRelative), 1},
      {"any rhythm", dotted, Query(kTune, kAny), 1},
      {"not their relation", dotted, Query(kTune, kRelative), 0},
      {"no tolerance", {ChordItem(2, {test::Note(kC)}), d, Note(3, kE)}, tolerant, 0},
      {"the last value counts", {c, d, Note(1, kE)}, Query(kTune), 0},

      // The first note by the last key of a chord, the next interval from its first key.
      {"a chord's last key", {chord, d}, Query("64:240,66:240"), 1},
      {"not its first", {chord, d}, Query("60:240,62:240"), 0},
      {"a chord behind a note", {d, chord}, Query("62:240,60:240"), 1},
      // Behind a rest the key counts as the distance from 0.
      {"behind a rest", {c, r, e}, Query("60:240,r:240,64:240"), 1},
      {"behind a rest in another key",
       {KeyItem(1), c, r, e},
       Query("60:240,r:240,64:240", kExact, PitchMode::Relative),
       0},

      {"a rest never starts one", {r, r}, Query("60:480", kExact, PitchMode::Ignore), 0},
  };
  for (const Case& row : cases)
    EXPECT_EQ(Places(OneVoice(row.items), row.query).size(), row.hits) << row.what;
}

// Two staves of which the lower one has two voices, in two systems; the second staff is a fifth lower.
ScoreDocument Ensemble() {
  ScoreDocument score;
  score.staves = {StaffNamed("A"), StaffNamed("B"), StaffNamed("C")};
  score.staves[0].spacing = 70;
  score.staves[1].spacing = 80;
  score.staves[1].transpose = -12;
  score.staves[2].usesNoteMap = true;
  score.systemSpacing = 1000;
  for (int i = 0; i < 2; ++i) {
    SystemItems system;
    system.staves = {{0, {3, 2}, {{r, c, d}}},
                     {1, {2, 2}, {{RestItem(1, 1)}, {Note(2, 0), Note(2, 1), Note(2, 2)}}}};
    score.systems.push_back(system);
  }
  score.systems[1].staves[0].voices[0] = {e, r, r};
  score.systems[1].staves.push_back({2, {}, {{c, d, e}}});
  return score;
}

TEST(ScoreSearchTest, LinesVoicesAndSystems) {
  const ScoreDocument score = Ensemble();
  MelodyQuery query = Query(kTune);
  EXPECT_THAT(Places(score, query), ElementsAre("1/1 1:2 0.1..1.0", "2/2 1:1 0.0..0.2", "2/2 2:1 1.0..1.2"));
  std::vector<int> positions;
  for (const SearchHit& hit : Search(WriteScore(score), query).hits)
    positions.push_back(hit.verticalPosition);
  EXPECT_THAT(positions, ElementsAre(0, 70, 70 + 80 + 1000 + 70));
  query.options.drumTrack = true;
  EXPECT_THAT(Places(score, query),
              ElementsAre("1/1 1:2 0.1..1.0", "2/2 1:1 0.0..0.2", "2/2 2:1 1.0..1.2", "3/1 1:1 1.0..1.2"));
  query.options.firstTrackOnly = true;
  EXPECT_THAT(Places(score, query), ElementsAre("1/1 1:2 0.1..1.0"));
  ScoreDocument drums = score;
  drums.staves[0].usesNoteMap = true;
  query.options.drumTrack = false;
  EXPECT_THAT(Places(drums, query), IsEmpty());

  // A signature inside a system counts from there in all staves, and only that of the first staff.
  ScoreDocument changing = OneVoice({c, c, c, c, TimeItem(2, 2), c, c, d, e});
  changing.staves.push_back(StaffNamed("B"));
  changing.systems[0].staves.push_back({1, {7, 3}, {{c, c, c, c, TimeItem(5, 2), c, c, c, d}}});
  EXPECT_THAT(Places(changing, Query("60:240,62:240")), ElementsAre("1/1 2:2 0.6..0.7", "2/1 3:1 0.7..0.8"));
}

TEST(ScoreSearchTest, DamageMakesAScoreUnsuitable) {
  const MelodyQuery query = Query(kTune);
  const Bytes file = WriteScore(Ensemble());
  for (std::size_t size = 0; size < file.size(); ++size) {
    const Found found = Search(ByteView(file).first(size), query);
    EXPECT_EQ(found.outcome.code, size < 6 ? Outcome::WrongFormat : Outcome::SourceFailed) << size;
    EXPECT_THAT(found.hits, IsEmpty()) << size;
  }
  ScoreDocument damaged = Ensemble();
  damaged.systems[1].staves[0].layout = 9;
  EXPECT_EQ(Search(WriteScore(damaged), query).outcome.code, Outcome::SourceFailed);

  const TemporaryDirectory directory;
  const HitSink none = [](const SearchHit&) { return Outcome::Success; };
  const auto code = [&](const std::string& path) { return SearchScoreFile(path, query, none, {}).code; };
  EXPECT_EQ(code(directory.File("fehlt.stv")), Outcome::SourceFailed);
  EXPECT_EQ(code(directory.Path()), Outcome::SourceFailed);
  EXPECT_EQ(code(directory.Write("leer.stv", "")), Outcome::WrongFormat);
  EXPECT_EQ(code(directory.Write("lied.stv", "MThd kein Satz")), Outcome::WrongFormat);
  EXPECT_EQ(code(directory.Write("alt.stv", "\x89\xE2\xB3\x74" + std::string(400, '\0'))),
            Outcome::WrongFormat);
  EXPECT_EQ(code(directory.Write("gut.stv", AsText(file))), Outcome::Success);
}

// A score of another format is searched as the score file that is made of it.
TEST(ScoreSearchTest, ADocumentHasTheItemsOfItsFile) {
  std::size_t items = 0;
  const auto check = [&](const std::string& path, converters::ScoreDetail detail) {
    SCOPED_TRACE(path);
    const auto file = ReadFile(path);
    ASSERT_TRUE(file);
    const auto image = converters::ScoreImageOf(*file);
    const auto score = converters::ReadAnyScore(*file, {}, detail);
    ASSERT_TRUE(image && score);
    const auto info = ReadScoreInfo(*image);
    ASSERT_TRUE(info);
    const auto lines = ReadScoreItems(score->document);
    ASSERT_TRUE(lines);
    EXPECT_EQ(*lines, ReadScoreItems(*image, *info).value());
    for (const ScoreLine& line : *lines) items += line[0].size();
  };
  for (const auto& entry : std::filesystem::directory_iterator(DataPath("musicxml")))
    check(entry.path().string(), converters::ScoreDetail::Notes);
  for (const std::string& path : DemoScores()) check(path, converters::ScoreDetail::Whole);
  EXPECT_GT(items, 1500U);
}

TEST(ScoreSearchTest, RestsAtTheEndsOfAMelodyDoNotCount) {
  MelodyQuery query;
  query.elements = {{kRestCode, 240}, {60, 240}, {62, 240}, {kRestCode, 960}};
  EXPECT_THAT(Places(OneVoice({r, c, d}), query), ElementsAre("1/1 1:2 0.1..0.2"));
  query.elements = {{kRestCode, 240}};
  EXPECT_THAT(Places(OneVoice({r, c, d}), query), IsEmpty());
}

TEST(ScoreSearchTest, SinkAndCancelEndAFile) {
  const Bytes file = WriteScore(Ensemble());
  const MelodyQuery query = Query(kTune);
  int sent = 0;
  const HitSink full = [&](const SearchHit&) {
    return ++sent == 2 ? Outcome::OutOfMemory : Outcome::Success;
  };
  EXPECT_EQ(SearchScoreImage(file, "", query, full, {}).code, Outcome::OutOfMemory);
  EXPECT_EQ(sent, 2);
  EXPECT_EQ(SearchScoreImage(file, "", query, full, [] { return true; }).code, Outcome::Cancelled);
  EXPECT_EQ(sent, 2);

  // Inside a system, while its records are read, while they are walked and while a voice is matched.
  VoiceItems many(20'000, r);
  for (std::size_t i = 0; i < many.size(); i += 2) many[i] = d;
  const Bytes large = WriteScore(OneVoice(many));
  for (const int polls : {1, 3, 6, 9, 12}) {
    int left = polls;
    EXPECT_EQ(SearchScoreImage(large, "", query, full, [&] { return --left <= 0; }).code, Outcome::Cancelled)
        << polls;
  }
}

// --- random scores

ScoreItem RandomItem(std::mt19937& random, bool firstVoice) {
  const auto below = [&random](int n) { return static_cast<int>(random() % static_cast<unsigned>(n)); };
  const auto byte = [&](int n) { return static_cast<std::uint8_t>(below(n)); };
  switch (below(16)) {
    case 0:
      return BarItem(byte(6));
    case 1:
      return RestItem(static_cast<std::uint8_t>(1 + below(3)));
    case 2:
      return below(8) == 0 ? WholeBarRest(static_cast<std::uint32_t>(1 + below(3))) : RestItem(2);
    case 3:
      return below(4) == 0 ? KeyItem(below(3) - 1) : BarItem();
    case 4:
      if (firstVoice && below(3) == 0) return ClefItem(byte(3), byte(3));
      break;
    case 5:
      if (firstVoice && below(3) == 0)
        return TimeItem(static_cast<std::uint16_t>(below(5)), static_cast<std::int16_t>(1 + below(13)));
      break;
    case 6:
      return ScoreItem{.kind = static_cast<std::uint8_t>(6 + below(3)), .group = c.group};
    default:
      break;
  }
  ScoreItem item = ChordItem(static_cast<std::uint8_t>(2 + below(2)),
                             {test::Note(static_cast<std::int8_t>(below(3) - 7))});
  if (below(6) == 0) item.group.notes.push_back(test::Note(static_cast<std::int8_t>(below(3) - 7)));
  if (below(12) == 0) item.group.tuplet.number = 3;
  if (below(12) == 0) item.group.flags = kGroupZeroDuration;
  item.group.tieOnward = below(4) == 0;
  item.group.tieFromBefore = below(3) == 0;
  return item;
}

ScoreDocument RandomScore(std::mt19937& random) {
  ScoreDocument score;
  score.staves = {StaffNamed("A"), StaffNamed("B"), StaffNamed("C")};
  score.staves[1].transpose = static_cast<std::int32_t>(random() % 3) * 12 - 12;
  score.staves[2].usesNoteMap = true;
  score.staves[0].spacing = 31;
  score.systemSpacing = 17;
  const int systems = 1 + static_cast<int>(random() % 3);
  for (int s = 0; s < systems; ++s) {
    SystemItems system;
    for (std::uint8_t layout = 0; layout < 3; ++layout) {
      if (layout > 0 && random() % 6 == 0) continue;
      StaffItems staff{layout, {static_cast<std::uint16_t>(2 + random() % 3), 2}, {}};
      const int voices = 1 + static_cast<int>(random() % 2);
      for (int v = 0; v < voices; ++v) {
        VoiceItems items;
        for (int i = 0; i < 25; ++i) items.push_back(RandomItem(random, v == 0));
        staff.voices.push_back(std::move(items));
      }
      system.staves.push_back(std::move(staff));
    }
    score.systems.push_back(std::move(system));
  }
  return score;
}

// A short melody out of few keys and values, now and then with a rest inside.
MelodyQuery RandomQuery(std::mt19937& random) {
  MelodyQuery query;
  const std::size_t count = 1 + random() % 4;
  for (std::size_t i = 0; i < count; ++i) {
    const bool rest = i > 0 && i + 1 < count && random() % 4 == 0;
    constexpr std::array<std::int16_t, 3> kKeys = {60, 62, 64};
    query.elements.push_back(
        {rest ? kRestCode : kKeys[random() % 3], static_cast<std::int16_t>(random() % 2 == 0 ? 240 : 120)});
  }
  query.options.rhythm = static_cast<RhythmMode>(random() % 3);
  query.options.pitch = static_cast<PitchMode>(random() % 4);
  query.options.firstTrackOnly = random() % 5 == 0;
  query.options.drumTrack = random() % 2 == 0;
  return query;
}

TEST(ScoreSearchTest, AgreesWithTheReference) {
  std::size_t hits = 0;
  for (unsigned seed = 0; seed < 400; ++seed) {
    std::mt19937 random(seed);
    const ScoreDocument score = RandomScore(random);
    const Bytes file = WriteScore(score);
    for (int i = 0; i < 12; ++i) {
      const MelodyQuery query = RandomQuery(random);
      const Found found = Search(file, query);
      ASSERT_EQ(found.outcome.code, Outcome::Success) << seed;
      ASSERT_EQ(found.hits, ReferenceScoreSearch(score, query)) << seed << ' ' << i;
      hits += found.hits.size();
    }
  }
  EXPECT_GT(hits, 1000U);
}

}  // namespace
}  // namespace ts5
