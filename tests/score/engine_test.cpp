// The score engine, one rule of the music at a time.
#include <gmock/gmock.h>

#include <array>

#include "score/play_order.h"
#include "score_log.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace test;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ScoreTiming, CountsInSteps) {
  EXPECT_EQ(StepTime(120), 156'250U);
  EXPECT_EQ(StepTime(65535), 286U);
  EXPECT_EQ(TempoMicroseconds(1), 0xFFFFFFU);  // what three bytes hold

  ScoreItem triplet = ChordItem(3, {Note(kMiddleC)});
  triplet.group.tuplet.number = 3;
  const Played played = Play(OneVoice({triplet, triplet, triplet, Quarter(kD)}));
  EXPECT_THAT(Strikes(played), ElementsAre("0 3C", "165 3C", "330 3C", "480 3E"));
  EXPECT_EQ(played.ticks, 960U);
  EXPECT_EQ(played.scan.time, 10'000'000U);
}

TEST(ScoreTiming, LastsAsLongAsItsTempoSays) {
  for (const std::uint32_t tempo : {47U, 126U, 240U, 65535U}) {
    const std::uint64_t minute = 600'000'000;
    const Played played = Play(OneVoice({WholeBarRest(30)}, tempo));
    EXPECT_EQ(played.scan.time, 120 * minute / tempo) << tempo;
  }
}

TEST(ScoreTiming, TempoOfASystemHoldsFromThere) {
  ScoreDocument document = OneVoice({Quarter(), BarItem()}, 0);
  document.systems[0].staves[0].time = {1, 2};
  document.systems.push_back(document.systems[0]);
  document.systems[1].tempo = 60;
  document.systems[1].staves[0].time = {3, 2};
  const Played played = Play(document);
  EXPECT_THAT(LinesWith(played.lines, " FF 5"),
              ElementsAre("480 0 FF 58 03 02 18 08", "480 0 FF 51 0F 42 3F"));
  EXPECT_THAT(Strikes(played), ElementsAre("0 3C", "480 3C"));
}

TEST(PlayedNotes, FollowTheArticulation) {
  PlaybackParameters parameters;
  // By the code of the articulation, of a quarter note.
  constexpr std::array<std::uint32_t, 9> kLengths = {432, 216, 475, 432, 130, 346, 260, 389, 216};
  constexpr std::array<int, 9> kVelocities = {90, 90, 90, 90, 99, 110, 118, 102, 127};
  for (std::uint8_t code = 0; code < 9; ++code) {
    EXPECT_EQ(PlayedLength(parameters, code, 480), kLengths[code]) << int{code};
    EXPECT_EQ(PlayedVelocity(parameters, code), kVelocities[code]) << int{code};
  }
  parameters.shortening = 50;
  EXPECT_EQ(PlayedLength(parameters, 0, 20), 15U);
  EXPECT_EQ(PlayedLength(parameters, 0, 7), 15U);
  parameters.articulations[static_cast<std::size_t>(Articulation::HardBeat)].velocity = 0;
  EXPECT_EQ(PlayedVelocity(parameters, 8), 90);
  parameters.articulation = false;
  EXPECT_EQ(PlayedVelocity(parameters, 5), 90);
  EXPECT_EQ(PlayedLength(parameters, 1, 480), 240U);
}

TEST(PlayedNotes, AreTiedAndKeptFull) {
  EXPECT_THAT(Play(OneVoice({Tied(Quarter(), false, true), Tied(Quarter(), true, false), Quarter(kD)})).lines,
              ElementsAre("0 1 90 3C 5A", "915 1 90 3C 00", "960 1 90 3E 5A", "1395 1 90 3E 00"));
  EXPECT_THAT(Play(OneVoice({Tied(Quarter(), false, true), RestItem(2), Quarter(kD)})).lines,
              ElementsAre("0 1 90 3C 5A", "495 1 90 3C 00", "960 1 90 3E 5A", "1395 1 90 3E 00"));
  EXPECT_THAT(Play(OneVoice({With(Quarter(), CurveDrawing(2)), Quarter(), Quarter()})).lines,
              ElementsAre("0 1 90 3C 5A", "480 1 90 3C 00", "480 1 90 3C 5A", "960 1 90 3C 00",
                          "960 1 90 3C 5A", "1395 1 90 3C 00"));
}

TEST(PlayedNotes, GraceSilentAndMarkedGroups) {
  EXPECT_THAT(Play(OneVoice({Grace(kD, 1), Quarter(), Quarter(kE)})).lines,
              ElementsAre("0 1 90 3E 5A", "30 1 90 3E 00", "30 1 90 3C 5A", "435 1 90 3C 00",
                          "480 1 90 40 5A", "915 1 90 40 00"));
  EXPECT_THAT(Strikes(Play(OneVoice({Grace(kD, 0), Quarter()}))), ElementsAre("0 3C"));
  EXPECT_THAT(Strikes(Play(OneVoice({Flagged(Quarter(), kGroupSilent), Quarter(kD)}))),
              ElementsAre("480 3E"));
  EXPECT_THAT(Play(OneVoice({With(Quarter(), TextDrawing("u"))})).lines,
              ElementsAre("0 1 FF 31", "0 1 90 3C 5A", "435 1 90 3C 00"));
}

TEST(PlayedNotes, OfADrumStaffGoThroughItsMap) {
  ScoreDocument document = OneVoice({Quarter()});
  document.staves[0].usesNoteMap = true;
  document.staves[0].noteMap.fill(38);
  document.staves[0].transpose = -60;
  EXPECT_THAT(Play(document).lines, ElementsAre("0 1 99 26 5A", "435 1 99 26 00"));
}

TEST(Channels, AreCountedPastTheDrums) {
  ScoreFileInfo info;
  std::vector<std::uint8_t> voices(26, 1);
  info.staves.resize(26);
  info.staves[1].usesNoteMap = true;
  std::vector<VoiceChannels> channels(1, kNoChannels);
  AssignChannels(info, voices, channels);
  std::vector<int> first;
  for (const VoiceChannels& staff : channels) first.push_back(staff[0]);
  EXPECT_THAT(
      first, ElementsAre(0, 9, 1, 2, 3, 4, 5, 6, 7, 8, 10, 11, 12, 13, 14, 15, 0, 1, 2, 3, 4, 5, 6, 7, 8, 9));
}

std::vector<std::string> Volumes(VoiceItems items, const PlaybackParameters& parameters = {}) {
  std::vector<std::string> found;
  for (const std::string& line : LinesWith(Play(OneVoice(std::move(items)), parameters).lines, " B0 07"))
    found.push_back(line.substr(0, line.find(' ')) + line.substr(line.size() - 3));
  return found;
}

TEST(Dynamics, MarksHairpinsAndAccentsSetTheVolume) {
  const ScoreItem plain = Quarter();
  const ScoreItem p = With(plain, TextDrawing("p"));
  EXPECT_THAT(Volumes({p, plain, With(plain, TextDrawing("f"))}), ElementsAre("0 2C", "960 5A"));
  EXPECT_THAT(Volumes({With(p, HairpinDrawing(4, false)), plain, plain, plain, plain, plain}),
              ElementsAre("0 2C", "480 37", "960 42", "1440 4D", "1920 58"));
  // From the channel's volume of 100 down to 50.
  EXPECT_THAT(Volumes({With(plain, HairpinDrawing(2, true)), plain, plain, plain}),
              ElementsAre("480 4B", "960 32"));
  EXPECT_THAT(Volumes({With(plain, TextDrawing("fp")), plain, plain}), ElementsAre("0 5A", "480 2C"));
  EXPECT_THAT(Volumes({With(plain, TextDrawing("sf")), plain, plain}), ElementsAre("0 7F", "480 64"));
  EXPECT_THAT(Volumes({p, With(plain, TextDrawing("{")), plain}), ElementsAre("0 2C", "480 58", "960 2C"));
  EXPECT_THAT(Volumes({With(p, HairpinDrawing(4, false)), plain, With(plain, TextDrawing("f")), plain}),
              ElementsAre("0 2C", "480 37", "960 5A"));
  PlaybackParameters parameters;
  parameters.dynamicVelocities[5] = 40;
  EXPECT_THAT(Volumes({p}, parameters), ElementsAre("0 28"));
  parameters.dynamics = false;
  EXPECT_THAT(Volumes({p}, parameters), IsEmpty());
}

TEST(Dynamics, ReachAsFarAsTheScopeSays) {
  ScoreDocument document = OneVoice({With(Quarter(), TextDrawing("p"))});
  document.systems[0].staves[0].voices.push_back({Quarter()});
  document.staves.push_back(StaffNamed("B"));
  document.systems[0].staves.push_back({1, {}, {{Quarter()}}});
  PlaybackParameters parameters;
  EXPECT_THAT(LinesWith(Play(document, parameters).lines, " 07 2C"),
              ElementsAre("0 1 B0 07 2C", "0 1 B1 07 2C"));
  parameters.markForAllStaves = true;
  EXPECT_THAT(LinesWith(Play(document, parameters).lines, " 07 2C"),
              ElementsAre("0 1 B0 07 2C", "0 1 B1 07 2C", "0 2 B2 07 2C"));
  parameters.markForAllVoices = false;
  EXPECT_THAT(LinesWith(Play(document, parameters).lines, " 07 2C"),
              ElementsAre("0 1 B0 07 2C", "0 2 B2 07 2C"));
}

TEST(Dynamics, AccentsStandWhereAHairpinBegins) {
  const ScoreItem plain = Quarter();
  const auto start = [&](std::string_view mark) {
    return With(With(plain, TextDrawing(mark)), HairpinDrawing(3, false));
  };
  EXPECT_THAT(Volumes({start("fp"), plain, plain, plain, plain}),
              ElementsAre("0 5A", "480 3B", "960 4A", "1440 58"));
  const ScoreItem p = With(plain, TextDrawing("p"));
  EXPECT_THAT(Volumes({p, start("s"), plain, plain, plain}),
              ElementsAre("0 2C", "480 58", "960 3B", "1440 4A", "1920 58"));
}

TEST(SilentStaves, LeaveNoTrace) {
  ScoreDocument document =
      OneVoice({With(With(Quarter(), TextDrawing("p")), TextDrawing("u")), With(Quarter(), TextDrawing("fp")),
                With(Quarter(), TextDrawing("s")), With(Quarter(), HairpinDrawing(2, false)), Quarter()});
  document.staves.push_back(StaffNamed("B"));
  document.systems[0].staves.push_back({1, {}, {{Quarter()}}});
  PlaybackParameters parameters;
  parameters.channels = {{0}, {0}};  // shared
  ScoreOptions options;
  options.silentStaves = {true};
  EXPECT_THAT(LinesWith(Play(document, parameters, options).lines, " 1 "), IsEmpty());
  EXPECT_THAT(LinesWith(Play(document, parameters, options).lines, " B0 "), IsEmpty());
  parameters.markForAllStaves = true;
  EXPECT_THAT(LinesWith(Play(document, parameters, options).lines, " B0 "), ElementsAre("0 2 B0 07 2C"));
}

TEST(Upbeats, AreTheEndOfAFullBar) {
  const Played played =
      Play(OneVoice({TimeItem(4, 2), Quarter(), BarItem(), ChordItem(0, {Note(kD)}), BarItem(3)}));
  EXPECT_EQ(played.scan.leadIn, 1440U);
  EXPECT_THAT(Strikes(played), ElementsAre("1440 3C", "1920 3E", "3840 3C", "4320 3E"));
  EXPECT_EQ(played.ticks, played.scan.ticks);
}

TEST(Upbeats, OffTheStepsLeaveTheBarsOnTheGrid) {
  ScoreItem upbeat = ChordItem(3, {Note(kE)});
  upbeat.group.tuplet.number = 3;
  const Played played = Play(OneVoice({TimeItem(4, 2), upbeat, BarItem(), ChordItem(0, {Note()}), BarItem(),
                                       ChordItem(0, {Note(kD)}), BarItem(3)}));
  EXPECT_EQ(played.scan.leadIn, 1760U);
  EXPECT_THAT(Strikes(played), ElementsAre("1770 40", "1920 3C", "3840 3E", "5760 40", "5925 3C", "7845 3E"));
  EXPECT_EQ(played.ticks, played.scan.ticks);
}

// Whole bars of C, D, E ... with what stands before them, and the bar line events in bars.
struct Bars {
  std::string keys;
  std::string lines;
};
Bars PlayBars(VoiceItems items) {
  const Played played = Play(OneVoice(std::move(items)));
  EXPECT_THAT(played.outcome, IsOk());
  EXPECT_EQ(played.ticks, played.scan.ticks);
  Bars bars;
  for (const std::string& strike : Strikes(played)) {
    const int key = std::stoi(strike.substr(strike.size() - 2), nullptr, 16);
    bars.keys += std::string("C D EF G A B").at(static_cast<std::size_t>(key - 60));
    if (std::stoul(strike) % 1920 != 0) bars.keys += '@' + strike.substr(0, strike.find(' ')) + ' ';
  }
  for (const std::string& line : LinesWith(played.lines, " FF 30")) {
    EXPECT_EQ(std::stoul(line) % 1920, 0U);
    bars.lines += std::to_string(std::stoul(line) / 1920);
  }
  EXPECT_EQ(played.ticks % 1920, 0U);
  return bars;
}
// The same by bars, as the plain method plays them.
std::string PlainKeys(VoiceItems items) {
  const ScoreDocument document = OneVoice(std::move(items));
  const ScoreMusic music = ReadMusic(document);
  std::string keys;
  for (const PlayedBar& played : PlayOrder(music)) {
    for (const ScoreEvent& event : music.voices[0][0]) {
      if (event.bar == played.bar) keys += "CDEFGAB"[event.item->group.notes[0].position - kMiddleC];
    }
  }
  return keys;
}
constexpr std::int8_t kB = -1;
ScoreItem Whole(std::int8_t position = kMiddleC) {
  return ChordItem(0, {Note(position)});
}
ScoreItem Ending(ScoreItem item, std::uint8_t first, std::uint8_t last) {
  DrawingItem bracket = VoltaDrawing(first);
  bracket.value = static_cast<std::uint8_t>(last << 4 | first);
  return With(std::move(item), bracket);
}

TEST(Repeats, FirstEndingsNeitherSoundNorTakeTime) {
  const ScoreItem end = BarItem(3);
  const VoiceItems plain = {BarItem(4), Whole(), BarItem(), Ending(Whole(kD), 1, 1), end, Whole(kE)};
  EXPECT_EQ(PlayBars(plain).keys, "CDCE");
  EXPECT_EQ(PlayBars(plain).lines, "0123");
  const ScoreItem zero = Flagged(Whole(kB), kGroupZeroDuration);
  for (const ScoreItem& before : {zero, Grace(kB, 0)}) {
    VoiceItems items = plain;
    items.insert(items.begin() + 3, before);
    EXPECT_EQ(PlayBars(items).keys, before.group.flags == zero.group.flags ? "CBDCBE" : "CDCE");
    EXPECT_EQ(PlayBars(items).lines, "0123");
  }
  VoiceItems items = plain;
  items.insert(items.begin() + 3, Grace(kB, 1));
  EXPECT_EQ(PlayBars(items).keys, "CBD@1950 CE");

  ScoreDocument staves = OneVoice(items);
  staves.staves.push_back(StaffNamed("B"));
  staves.systems[0].staves.push_back(
      {1, {}, {{BarItem(4), Whole(kF), BarItem(), Whole(kF), end, Whole(kF)}}});
  EXPECT_THAT(LinesWith(Play(staves).lines, " 91 41 5A"),
              ElementsAre("0 2 91 41 5A", "1920 2 91 41 5A", "3840 2 91 41 5A", "5760 2 91 41 5A"));
}

TEST(Repeats, HaveAsManyPassesAsTheScoreSays) {
  const ScoreItem c = Whole();
  const ScoreItem d = Whole(kD);
  const ScoreItem e = Whole(kE);
  const ScoreItem f = Whole(kF);
  const ScoreItem end = BarItem(3);
  struct Case {
    VoiceItems items;
    const char* keys;
  };
  const Case cases[] = {
      {{c, BarItem(), d, end}, "CDCD"},
      {{c, end, BarItem(4), d, end, e, BarItem()}, "CCDDE"},
      {{c, end, d, end, e, BarItem()}, "CCDDE"},
      {{c, BarItem(), Ending(d, 1, 1), end, Ending(e, 2, 2), BarItem(4), f, BarItem(), Ending(d, 1, 1), end,
        Ending(e, 2, 2), BarItem(), c, BarItem()},
       "CDCEFDFEC"},
      {{BarItem(4), c, BarItem(), Ending(d, 1, 2), end, Ending(e, 3, 3), BarItem(), f, BarItem()}, "CDCDCEF"},
      {{c, BarItem(), Ending(d, 1, 1), end, Ending(e, 2, 2), end, Ending(f, 3, 3), BarItem(), c, BarItem()},
       "CDCECFC"},
      {{c, BarItem(), Ending(d, 1, 2), end, e, BarItem()}, "CDCDE"},
      {{c, BarItem(), Ending(d, 1, 1), end, Ending(e, 2, 2), end, f, BarItem()}, "CDCEF"},
      {{BarItem(4), c, BarItem(), Ending(d, 1, 1), end, Ending(e, 2, 2), BarItem(5), f, end}, "CDCEFF"},
      {{c, BarItem(4), d, BarItem(), With(e, TextDrawing("3x")), end, f, BarItem()}, "CDEDEDEF"},
      {{With(c, TextDrawing("4 mal")), BarItem(5), d, end, e, BarItem()}, "CCCCDDE"},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(PlayBars(row.items).keys, row.keys);
    EXPECT_EQ(PlainKeys(row.items), row.keys);
  }
  // The third ending in the next system.
  ScoreDocument document = OneVoice({c, Ending(d, 1, 1), end, Ending(e, 2, 2), end});
  document.systems.push_back(document.systems[0]);
  document.systems[1].staves[0].voices[0] = {Ending(f, 3, 3)};
  EXPECT_THAT(Strikes(Play(document)),
              ElementsAre("0 3C", "1920 3E", "3840 3C", "5760 40", "7680 3C", "9600 41"));
}

TEST(Repeats, FollowTheWordsOfJumps) {
  const ScoreItem line = BarItem();
  const ScoreItem end = BarItem(3);
  const auto says = [](std::int8_t position, std::string_view words) {
    return With(Whole(position), TextDrawing(words));
  };
  struct Case {
    VoiceItems items;
    const char* keys;
  };
  const Case cases[] = {
      {{Whole(), line, says(kD, "Fine"), line, says(kE, "D.C. al Fine"), line}, "CDECD"},
      {{Whole(), line, says(kD, "Segno"), line, Whole(kE), line, says(kF, "Dal Segno"), line}, "CDEFDEF"},
      {{says(kMiddleC, "Segno"), line, says(kD, "To Coda"), line, says(kE, "D.S. al Coda"), line, Whole(kF),
        line},
       "CDECDF"},
      // Repeats before the jump, not after it; there the last ending is played.
      {{Whole(), line, Ending(Whole(kD), 1, 1), end, Ending(says(kE, "fine"), 2, 2), line,
        says(kF, "D.C. al Fine"), line},
       "CDCEFCE"},
      {{Whole(), end, says(kD, "da capo"), end, Whole(kE), line}, "CCDDCDE"},
      // Nothing to go to, and no words.
      {{says(kMiddleC, "D.S."), line, says(kD, "Fine con brio"), line, says(kE, "al Coda"), line}, "CDE"},
  };
  for (const Case& row : cases) {
    EXPECT_EQ(PlayBars(row.items).keys, row.keys);
    EXPECT_EQ(PlainKeys(row.items), row.keys);
  }
}

TEST(Repeats, ReachAcrossSystemsAndStaves) {
  ScoreDocument document = OneVoice({BarItem(4), Quarter(), BarItem()});
  document.systems.push_back(document.systems[0]);
  document.systems[1].staves[0].voices[0] = {Quarter(kD), BarItem(3), Quarter(kE)};
  for (SystemItems& system : document.systems) system.staves[0].time = {1, 2};
  EXPECT_THAT(Strikes(Play(document)), ElementsAre("0 3C", "480 3E", "960 3C", "1440 3E", "1920 40"));

  document.staves.push_back(StaffNamed("B"));
  for (SystemItems& system : document.systems) {
    StaffItems low = system.staves[0];
    low.layout = 1;
    system.staves.push_back(low);
  }
  const Played played = Play(document);
  EXPECT_THAT(Strikes(played), ElementsAre("0 3C", "0 3C", "480 3E", "480 3E", "960 3C", "960 3C", "1440 3E",
                                           "1440 3E", "1920 40", "1920 40"));
}

TEST(DamagedScores, EndTheRun) {
  EXPECT_EQ(Play(OneVoice({Quarter(), ScoreItem{.kind = 6}})).outcome, Outcome::DamagedScore);
  EXPECT_EQ(Play(OneVoice({Quarter(), ScoreItem{.kind = 8}})).outcome, Outcome::DamagedScore);
  ScoreDocument document = OneVoice({Quarter()});
  document.systems[0].staves[0].layout = 1;
  EXPECT_EQ(Play(document).outcome, Outcome::DamagedScore);
  ScoreDocument empty = OneVoice({});
  empty.systems.clear();
  EXPECT_EQ(Play(empty).scan.time, 0U);
  // Longer than a file can say, and more repeats than a score has.
  EXPECT_EQ(Play(OneVoice({WholeBarRest(10'000'000)})).outcome, Outcome::DamagedScore);
  VoiceItems items;
  for (int i = 0; i < 5000; ++i) items.insert(items.end(), {Quarter(), BarItem(3)});
  EXPECT_EQ(Play(OneVoice(items)).outcome, Outcome::DamagedScore);
}

}  // namespace
}  // namespace ts5
