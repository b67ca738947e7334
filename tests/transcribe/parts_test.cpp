// The steps from a performance to a score, one by one.
#include <gmock/gmock.h>

#include <cmath>
#include <random>

#include "converters/transcribe/beats.h"
#include "converters/transcribe/lengths.h"
#include "converters/transcribe/notate.h"
#include "converters/transcribe/quantise.h"
#include "converters/transcribe/spelling.h"
#include "converters/transcribe/staves.h"
#include "converters/transcribe/voices.h"

namespace ts5::transcribe {
namespace {

using testing::Each;
using testing::ElementsAre;

constexpr std::int64_t kQ = kUnits;

TEST(Quantising, FindsTheSimplestDivisionThatFits) {
  Timing human;
  human.onset = 0.04;
  const auto places = [&](std::vector<double> quarters, const Timing& timing) {
    std::vector<RawOnset> onsets;
    for (std::size_t i = 0; i < quarters.size(); ++i)
      onsets.push_back({quarters[i], static_cast<std::uint8_t>(60 + i)});
    std::vector<double> found;
    for (const std::int64_t place : QuantiseOnsets(onsets, timing).places)
      found.push_back(std::round(static_cast<double>(place) / kUnits * 1000) / 1000);
    return found;
  };
  EXPECT_THAT(places({0.02, 0.48, 1.03, 1.97}, human), ElementsAre(0, 0.5, 1, 2));
  EXPECT_THAT(places({0.0, 0.35, 0.64, 0.98}, human), ElementsAre(0, 0.333, 0.667, 1));
  EXPECT_THAT(places({0.0, 0.77, 1.02, 1.27, 1.5, 1.74}, human), ElementsAre(0, 0.75, 1, 1.25, 1.5, 1.75));
  Timing exact;
  exact.onset = 0.004;
  EXPECT_THAT(places({0, 0.2, 0.4, 0.6, 0.8, 1}, exact), ElementsAre(0, 0.2, 0.4, 0.6, 0.8, 1));
  EXPECT_THAT(places({0, 0.125, 0.25, 0.5, 1.0, 1.3333, 1.6667}, exact),
              ElementsAre(0, 0.125, 0.25, 0.5, 1, 1.333, 1.667));
}

TEST(Lengths, LastToTheNextNoteUnlessARestIsMeant) {
  Timing timing;
  timing.spread = 0.2;
  const Divisions divisions = {{0, 2}, {1, 1}, {2, 1}};
  EXPECT_EQ(WrittenEnd(0, 0.8 * kQ, kQ, divisions, timing), kQ);
  EXPECT_EQ(WrittenEnd(0, 0.45 * kQ, kQ / 2, divisions, timing), kQ / 2);
  EXPECT_EQ(WrittenEnd(0, 0.95 * kQ, 3 * kQ, divisions, timing), kQ);
  timing.spread = 0.035;
  EXPECT_EQ(WrittenEnd(0, 0.475 * kQ, kQ, divisions, timing), kQ / 2);
}

TEST(Lengths, ShortNotesBeforeAnotherAreItsGraces) {
  const std::vector<Sounded> notes = {{0, 0.95}, {1, 1.06},      {1.0625, 1.95},
                                      {2, 2.06}, {2.0625, 2.12}, {2.125, 2.19}};
  const std::vector<std::uint8_t> keys = {60, 62, 64, 65, 67, 69};
  const auto graces = FindGraces(notes, keys, 0.5);
  ASSERT_EQ(graces.size(), 1U) << "a run is no grace";
  EXPECT_THAT(graces[0].chords, ElementsAre(ElementsAre(1)));
  EXPECT_EQ(graces[0].main, 2U);
  EXPECT_TRUE(graces[0].onTheBeat);
}

std::string Letters(int sharps, std::vector<std::uint8_t> keys) {
  std::vector<NoteToSpell> notes;
  for (const std::uint8_t key : keys) notes.push_back({key, static_cast<std::int8_t>(sharps)});
  std::string letters;
  const std::vector<SpelledPitch> pitches = Spell(notes);
  for (std::size_t i = 0; i < pitches.size(); ++i) {
    const SpelledPitch& pitch = pitches[i];
    EXPECT_EQ(pitch.Key(), keys[i]);
    letters += std::string("CDEFGAB").substr(static_cast<std::size_t>(pitch.step), 1);
    letters += pitch.alter > 0 ? std::string(static_cast<std::size_t>(pitch.alter), '#')
                               : std::string(static_cast<std::size_t>(-pitch.alter), 'b');
  }
  return letters;
}

TEST(Spelling, FollowsTheKeyAndItsNeighbours) {
  EXPECT_EQ(Letters(0, {60, 62, 64, 65, 67, 69, 71, 72}), "CDEFGABC");
  EXPECT_EQ(Letters(-3, {63, 65, 67, 68, 70, 72, 74, 75}), "EbFGAbBbCDEb");
  EXPECT_EQ(Letters(5, {59, 61, 63, 64, 66, 68, 70, 71}), "BC#D#EF#G#A#B");
  EXPECT_EQ(Letters(0, {69, 71, 72, 74, 76, 77, 80, 81, 76, 72, 69}), "ABCDEFG#AECA");
  EXPECT_EQ(Letters(1, {67, 71, 74, 73, 74, 69, 73, 76, 74}), "GBDC#DAC#ED");
  // A note struck again and again does not outvote the others; no double flat where a plain note will do.
  EXPECT_EQ(Letters(0, {69, 65, 65, 65, 65, 64, 68, 71, 69}), "AFFFFEG#BA");
  EXPECT_EQ(Letters(-3, {71, 73, 69, 66, 69, 68, 65, 68}), "CbDbAGbAAbFAb");
}

TEST(Spelling, FindsTheKeyOfAScale) {
  for (int sharps = -5; sharps <= 6; ++sharps) {
    std::vector<WeightedKey> notes;
    for (const int step : {0, 2, 4, 5, 7, 9, 11, 12, 7, 4, 0, 7})
      notes.push_back(
          {static_cast<std::uint8_t>(60 + (sharps * 7 % 12 + 12) % 12 + step), step % 12 == 0 ? 2.0 : 1.0});
    EXPECT_EQ(FindKey(notes), sharps);
  }
}

TEST(Hands, PartWhereTheGapIs) {
  std::vector<HandNote> notes;
  for (int i = 0; i < 16; ++i) {
    notes.push_back({i * 1.0, i + 0.9, static_cast<std::uint8_t>(43 + i % 4)});
    notes.push_back({i * 1.0, i + 0.9, static_cast<std::uint8_t>(67 + i % 5)});
  }
  EXPECT_TRUE(NeedsTwoStaves(notes, false));
  const std::vector<bool> lower = LowerHand(notes);
  for (std::size_t i = 0; i < notes.size(); ++i) EXPECT_EQ(lower[i], notes[i].key < 60);
  for (HandNote& note : notes) note.key = static_cast<std::uint8_t>(60 + note.key % 12);
  EXPECT_FALSE(NeedsTwoStaves(notes, true));
  EXPECT_THAT(ChooseClefs(std::vector<std::vector<std::uint8_t>>{{43, 45}, {72}, {40}, {43}}, false),
              Each(kClefF));
  EXPECT_THAT(
      ChooseClefs(std::vector<std::vector<std::uint8_t>>{{43}, {43}, {79, 81}, {81, 84}, {83}}, false),
      ElementsAre(kClefF, kClefF, kClefG, kClefG, kClefG));
}

TEST(Voices, AreOneWhereOneIsEnough) {
  Timing timing;
  const auto voices = [&](std::vector<StaffNote> notes) { return SeparateVoices(notes, timing); };
  constexpr double q = kQ;
  EXPECT_THAT(voices({{0, q, 60}, {0, q, 64}, {kQ, q, 62}, {kQ, q, 65}}), Each(0));
  // A melody over a held bass.
  EXPECT_THAT(voices({{0, 4 * q, 48}, {0, q, 72}, {kQ, q, 74}, {2 * kQ, q, 76}, {3 * kQ, q, 77}}),
              ElementsAre(1, 0, 0, 0, 0));
  // The bass comes first.
  EXPECT_THAT(voices({{0, 4 * q, 48}, {kQ, q, 72}, {2 * kQ, q, 74}}), ElementsAre(1, 0, 0));
}

// "q" values with dots; "r" a rest, "~" tied onward, "3" in a triplet.
std::string Written(const BarSpan& bar, std::vector<std::pair<double, double>> chords,
                    bool firstVoice = true) {
  std::vector<VoiceChord> voice;
  for (const auto& [from, to] : chords)
    voice.push_back(
        {.place = std::llround(from * kQ), .end = std::llround(to * kQ), .pitches = {SpelledPitch{}}});
  std::string text;
  Fraction sum;
  for (const ScoreItem& item : NotateBar(bar, voice, firstVoice, Beaming::Middle)) {
    if (!text.empty()) text += ' ';
    if ((item.group.flags & kGroupGap) == kGroupGap && item.group.isRest) text += 'g';
    text += item.group.isRest ? "r" : "";
    text += item.group.wholeBars > 0 ? "bar" : std::string("whqest68b").substr(item.group.durationCode, 1);
    text += std::string(item.group.dots, '.');
    if (RatioOf(item).actual != 0) text += std::to_string(RatioOf(item).actual);
    if (item.group.tieOnward) text += '~';
    sum += LengthOf(item, bar.time);
  }
  EXPECT_EQ(sum, Fraction(bar.length, 4 * kQ)) << text;
  return text;
}

TEST(Bars, AreWrittenAsTheMetreReads) {
  const BarSpan four{0, 4 * kQ, {4, 2}, 0};
  const BarSpan three{0, 3 * kQ, {3, 2}, 0};
  const BarSpan six{0, 3 * kQ, {6, 3}, 0};
  const BarSpan upbeat{3 * kQ, kQ, {4, 2}, 3 * kQ};
  const struct {
    BarSpan bar;
    std::vector<std::pair<double, double>> chords;
    const char* text;
  } cases[] = {
      {four, {}, "rbar"},
      {four, {{0, 4}}, "w"},
      {four, {{0, 3}, {3, 4}}, "h. q"},
      {four, {{1, 3}}, "rq h rq"},
      {four, {{0, 0.5}, {0.5, 1.5}, {1.5, 2}, {2, 4}}, "e q e h"},
      {four, {{0, 0.5}, {0.5, 2}, {2, 4}}, "e q. h"},
      {four, {{0, 1.5}, {1.5, 2.5}, {2.5, 4}}, "q. e~ e q."},
      {four, {{0, 1}, {3.5, 4}}, "q rq rq re e"},
      {four, {{0, 0.25}, {0.25, 0.75}, {0.75, 1}}, "s e s rq rh"},
      {four, {{-1, 1}, {3, 5}}, "q rq rq q~"},
      {three, {{1, 3}}, "rq h"},
      {three, {{0, 2.5}, {2.5, 3}}, "h~ e e"},
      {six, {{0, 1}, {1, 1.5}, {1.5, 3}}, "q e q."},
      {six, {{0.5, 2}}, "re q~ e rq"},
      {six, {{0, 3}}, "h."},
      {upbeat, {{3.5, 4}}, "re e"},
      {four, {{0, 1.0 / 3}, {1.0 / 3, 2.0 / 3}, {2.0 / 3, 1}, {1, 4}}, "e3 e3 e3 h."},
      {four, {{0, 2.0 / 3}, {2.0 / 3, 1}}, "q3 e3 rq rh"},
      {four, {{0, 2.0 / 3}, {2.0 / 3, 4.0 / 3}, {4.0 / 3, 2}, {2, 4}}, "q3 q3 q3 h"},
      {four, {{0, 0.2}, {0.2, 0.4}, {0.4, 0.6}, {0.6, 0.8}, {0.8, 4}}, "s5 s5 s5 s5 s5~ h."},
      {four, {{0, 0.5}, {0.5, 4.0 / 6}, {4.0 / 6, 5.0 / 6}, {5.0 / 6, 4}}, "e s3 s3 s3~ h."},
  };
  for (const auto& row : cases) EXPECT_EQ(Written(row.bar, row.chords), row.text);
  EXPECT_EQ(Written(four, {{1, 2}}, false), "grq q grh");
}

TEST(Beats, AreFoundInMusicWithoutAClickAlsoBehindAnHourOfSilence) {
  constexpr double kTicksPerSecond = 960;
  constexpr double kFirst = 1.37;  // seconds
  for (const double pause : {0.0, 3601.3}) {
    for (const double beat : {0.43, 0.5, 0.61}) {
      std::mt19937 random(7);
      std::normal_distribution<double> away(0, 0.012);
      const double half = kFirst + 80 * beat / 2;
      Performance performance;
      PlayedPart part;
      for (int i = 0; i < 160; ++i) {
        if (i % 8 == 3 || i % 8 == 5) continue;  // eighths, some of them missing
        const double at = kFirst + i * beat / 2 + away(random) + (i < 80 ? 0 : pause);
        const auto start = static_cast<std::int64_t>(at * kTicksPerSecond);
        const auto velocity = static_cast<std::uint8_t>(i % 8 == 0 ? 110 : i % 2 == 0 ? 90 : 60);
        part.notes.push_back(
            {std::max<std::int64_t>(start, 0), start + 300, static_cast<std::uint8_t>(60 + i % 7), velocity});
      }
      performance.parts.push_back(part);
      std::size_t near = 0;
      std::size_t heard = 0;
      for (const double tick : FindBeats(performance)) {
        double at = tick / kTicksPerSecond;
        if (at > half && at < half + pause) continue;
        if (at > half) at -= pause;
        const double place = (at - kFirst) / beat;
        near += std::abs(place - std::round(place)) < 0.1 ? 1 : 0;
        ++heard;
      }
      EXPECT_GT(heard, 60U) << pause;
      EXPECT_GT(near * 100, heard * 90) << pause << " " << beat;
    }
  }
}

}  // namespace
}  // namespace ts5::transcribe
