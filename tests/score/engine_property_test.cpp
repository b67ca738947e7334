// The score engine over random scores: what must hold for any of them.
#include <gmock/gmock.h>

#include <array>
#include <map>
#include <random>

#include "random_score.h"
#include "score_log.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using namespace test;

TEST(RandomScores, AreBalancedAndLastWhatTheScanSays) {
  for (unsigned seed = 0; seed < 300; ++seed) {
    const ScoreDocument document = RandomScore(seed);
    const Played played = Play(document);
    ASSERT_THAT(played.outcome, IsOk()) << seed;
    EXPECT_EQ(played.ticks, played.scan.ticks) << seed;
    // However far the engine goes at once.
    EXPECT_EQ(Play(document, {}, {}, 1 + seed % 3).lines, played.lines) << seed;
    std::map<std::string, int> sounding;
    for (const std::string& line : LinesWith(played.lines, " 9")) {
      if (line.find(" 9") + 8 != line.size() - 1 && line.find(" 9") + 9 != line.size()) continue;
      const std::string key = line.substr(line.size() - 8, 5);
      sounding[key] += line.compare(line.size() - 2, 2, "00") == 0 ? -1 : 1;
      ASSERT_GE(sounding[key], 0) << seed << ": " << line;
    }
    for (const auto& [key, count] : sounding) EXPECT_EQ(count, 0) << seed << ": " << key;
  }
}

// --- repeats

// A bar of 4/4 in values of whole steps, with what groups carry; nothing reaches out of it.
VoiceItems RandomBar(std::mt19937& random) {
  const auto below = [&random](unsigned n) { return static_cast<std::uint8_t>(random() % n); };
  VoiceItems items;
  bool tied = false;
  for (std::uint32_t left = 1920; left > 0;) {
    const auto code = static_cast<std::uint8_t>(1 + below(5));
    const std::uint32_t length = 1920U >> code;
    if (length > left) continue;
    left -= length;
    if (!tied && below(6) == 0) {
      items.push_back(RestItem(code));
      continue;
    }
    if (!tied && below(8) == 0) items.push_back(Grace(kD, 1));
    ScoreItem item = ChordItem(code, {Note(static_cast<std::int8_t>(below(12) - 8))});
    item.group.articulation = below(9);
    const bool onward = left > 0 && below(5) == 0;
    item = Tied(item, tied, onward);
    tied = onward;
    if (below(6) == 0) item.drawings.push_back(HairpinDrawing(below(5), below(2) == 0));
    if (below(6) == 0) item.drawings.push_back(TextDrawing(std::string(1, "fghijpqrsz{|"[below(12)])));
    if (below(8) == 0) item.drawings.push_back(CurveDrawing(1));
    items.push_back(std::move(item));
  }
  return items;
}

constexpr int kStaves = 2;
constexpr int kVoices = 2;
using Section = std::array<VoiceItems, std::size_t{kStaves} * kVoices>;

// Some bars that say at their start all that holds in them.
Section RandomSection(std::mt19937& random) {
  Section section;
  const int bars = 1 + static_cast<int>(random() % 2);
  const int key = static_cast<int>(random() % 5) - 2;
  const auto clef = static_cast<std::uint8_t>(random() % 3);
  for (VoiceItems& items : section) {
    items = {ClefItem(clef), KeyItem(key), With(Quarter(kE), TextDrawing("f"))};
    items.push_back(RestItem(1, 1));
    for (int bar = 0; bar < bars; ++bar) {
      items.push_back(BarItem());
      for (ScoreItem& item : RandomBar(random)) items.push_back(std::move(item));
    }
  }
  return section;
}
Section Ending(Section section, std::uint8_t number) {
  for (VoiceItems& items : section) items[2] = With(items[2], VoltaDrawing(number));
  return section;
}

// The sections with the bar lines behind them, each in a system of its own or all in one.
struct Placed {
  const Section* section;
  std::uint8_t barLine;
};
ScoreDocument ScoreOf(std::initializer_list<Placed> sections, bool systems) {
  ScoreDocument score;
  score.staves = {StaffNamed("A"), StaffNamed("B", 40)};
  for (const Placed& placed : sections) {
    if (systems || score.systems.empty()) {
      SystemItems& system = score.systems.emplace_back();
      for (std::uint8_t staff = 0; staff < kStaves; ++staff)
        system.staves.push_back({staff, {}, std::vector<VoiceItems>(kVoices)});
    }
    for (std::size_t i = 0; i < placed.section->size(); ++i) {
      VoiceItems& items = score.systems.back().staves[i / kVoices].voices[i % kVoices];
      items.insert(items.end(), (*placed.section)[i].begin(), (*placed.section)[i].end());
      items.push_back(BarItem(placed.barLine));
    }
  }
  return score;
}

// What the staves play; the conductor tells the written bars.
std::vector<std::string> Music(const ScoreDocument& score, bool repeats = true) {
  ScoreOptions options;
  options.repeats = repeats;
  const Played played = Play(score, {}, options);
  EXPECT_THAT(played.outcome, IsOk());
  EXPECT_EQ(played.ticks, played.scan.ticks);
  std::vector<std::string> music;
  for (const std::string& line : played.lines) {
    if (line.find(" 0 FF ") == std::string::npos) music.push_back(line);
  }
  music.push_back(std::to_string(played.ticks));
  return music;
}

TEST(RandomScores, PlayRepeatsAsIfTheyWereWrittenOut) {
  constexpr std::uint8_t kPlain = 0;
  constexpr std::uint8_t kEnd = 3;
  constexpr std::uint8_t kStart = 4;
  constexpr std::uint8_t kBoth = 5;
  for (unsigned seed = 0; seed < 150; ++seed) {
    std::mt19937 random(seed);
    const bool systems = seed % 2 == 0;
    const Section a = RandomSection(random);
    const Section b = RandomSection(random);
    const Section c = RandomSection(random);
    const Section first = Ending(RandomSection(random), 1);
    const Section second = Ending(RandomSection(random), 2);
    EXPECT_EQ(Music(ScoreOf({{&a, kStart}, {&b, kEnd}, {&c, kPlain}}, systems)),
              Music(ScoreOf({{&a, kPlain}, {&b, kPlain}, {&b, kPlain}, {&c, kPlain}}, systems)))
        << seed;
    EXPECT_EQ(Music(ScoreOf({{&a, kEnd}, {&b, kPlain}}, systems)),
              Music(ScoreOf({{&a, kPlain}, {&a, kPlain}, {&b, kPlain}}, systems)))
        << seed;
    EXPECT_EQ(Music(ScoreOf({{&a, kBoth}, {&b, kEnd}}, systems)),
              Music(ScoreOf({{&a, kPlain}, {&a, kPlain}, {&b, kPlain}, {&b, kPlain}}, systems)))
        << seed;
    EXPECT_EQ(
        Music(
            ScoreOf({{&a, kStart}, {&b, kPlain}, {&first, kEnd}, {&second, kPlain}, {&c, kPlain}}, systems)),
        Music(ScoreOf(
            {{&a, kPlain}, {&b, kPlain}, {&first, kPlain}, {&b, kPlain}, {&second, kPlain}, {&c, kPlain}},
            systems)))
        << seed;
    EXPECT_EQ(Music(ScoreOf({{&a, kStart}, {&b, kBoth}, {&c, kEnd}}, systems), false),
              Music(ScoreOf({{&a, kPlain}, {&b, kPlain}, {&c, kPlain}}, systems)))
        << seed;
  }
}

}  // namespace
}  // namespace ts5
