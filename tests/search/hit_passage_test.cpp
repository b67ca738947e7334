// Finding a hit in its file again, and hearing it.
#include "search/hit_passage.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <atomic>
#include <mutex>
#include <thread>

#include "midi/conductor.h"
#include "midi/midi_file.h"
#include "platform/files/files.h"
#include "score/score_engine.h"
#include "score/score_log.h"
#include "search/hit_excerpt.h"
#include "search/hit_player.h"
#include "search/melody_text.h"
#include "search/midi_search.h"
#include "search/score_search.h"
#include "search/track_matcher.h"
#include "support/matchers.h"
#include "support/midi_devices.h"
#include "support/test_data.h"
#include "track_builder.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;
using test::TrackBuilder;

HitSink Into(std::vector<SearchHit>& hits) {
  return [&hits](const SearchHit& hit) {
    hits.push_back(hit);
    return Outcome::Success;
  };
}
MelodyQuery Query(const char* melody, SearchOptions options = {}) {
  return {MelodyFromNumbers(melody)->elements, options};
}
std::vector<SearchHit> Search(ByteView file, const std::string& path, const char* melody,
                              SearchOptions options) {
  std::vector<SearchHit> hits;
  (void)SearchMidiImage(file, path, Query(melody, options), Into(hits), {});
  return hits;
}
// Any rise of two steps.
SearchOptions Loose() {
  SearchOptions options;
  options.rhythm = RhythmMode::Any;
  options.pitch = PitchMode::Relative;
  return options;
}

// Quarters from key 60 upwards, 192 ticks each, every one ended.
Bytes Scale(int notes, TrackBuilder track = {}) {
  for (int i = 0; i < notes; ++i) {
    track.Note(0, 60 + i);
    track.Note(192, 60 + i, 0);
  }
  return track.End();
}

// 3/4 at 120, from tick 960 on at 60 quarters a minute.
Bytes Conductor() {
  return TrackBuilder()
      .Raw(0, {0xFF, 0x58, 4, 3, 2, 24, 8})
      .Raw(0, {0xFF, 0x51, 3, 0x07, 0xA1, 0x20})
      .Raw(960, {0xFF, 0x51, 3, 0x0F, 0x42, 0x40})
      .End();
}

TEST(HitPassageTest, FromTheBarOfTheFirstNoteToTheEndOfTheLastBar) {
  struct Case {
    const char* what;
    Bytes file;
    const char* melody;
    HitPassage expected;
  };
  const Case cases[] = {
      {"second track in 3/4",
       test::MidiImage({Conductor(), Scale(12)}),
       "64:240,65:240,66:240",
       {576, 768, 1728}},
      {"ends with its bar",
       test::MidiImage({Conductor(), Scale(12)}),
       "63:240,64:240,65:240",
       {576, 576, 1152}},
      {"one track in 4/4", test::MidiImage({Scale(12)}, 192, 0), "64:240,65:240", {768, 768, 1536}},
      {"last notes of the track",
       test::MidiImage({Conductor(), Scale(6)}),
       "64:240,65:240",
       {576, 768, 1152}},
      {"4/4 becomes 2/4 inside a bar",
       test::MidiImage({TrackBuilder().Raw(960, {0xFF, 0x58, 4, 2, 2, 24, 8}).End(), Scale(12)}),
       "67:240,68:240",
       {1152, 1344, 1920}},
  };
  for (const Case& c : cases) {
    SCOPED_TRACE(c.what);
    const auto hits = Search(c.file, "x.mid", c.melody, {});
    ASSERT_EQ(hits.size(), 1U);
    const auto passage = FindHitPassage(c.file, hits[0], MelodyFromNumbers(c.melody)->elements.size());
    ASSERT_THAT(passage, test::IsOk());
    EXPECT_EQ(passage->bar, c.expected.bar);
    EXPECT_EQ(passage->onset, c.expected.onset);
    EXPECT_EQ(passage->end, c.expected.end);
  }
}

TEST(HitPassageTest, FilesThatHaveChangedOrBreakOffAreNoTrap) {
  const Bytes file = test::MidiImage({Conductor(), Scale(12)});
  SearchHit hit;
  hit.track = 0;
  hit.bar = 1;
  hit.time = 2000;  // 768 ticks at 120
  EXPECT_THAT(FindHitPassage(file, hit, 3), test::IsOk());
  EXPECT_THAT(FindHitPassage(file, hit, 1'000'000), test::IsOk());
  for (std::size_t size = 0; size < file.size(); ++size)
    (void)FindHitPassage(ByteView(file).first(size), hit, 3);
  hit.time = 2001;
  EXPECT_THAT(FindHitPassage(file, hit, 3), test::FailsWith(Outcome::DamagedMidi));
  hit.time = 2000;
  hit.track = 7;
  EXPECT_THAT(FindHitPassage(file, hit, 3), test::FailsWith(Outcome::DamagedMidi));
  hit.track = -5;
  EXPECT_THAT(FindHitPassage(file, hit, 3), test::IsOk());
  const Bytes none(100, 0);
  EXPECT_THAT(FindHitPassage(none, hit, 3), test::FailsWith(Outcome::WrongFormat));
}

TEST(HitExcerptTest, TwoBarsOfTheTrackStandAlone) {
  const Bytes file = test::MidiImage({Conductor(), Scale(12)});
  const char* melody = "64:240,65:240,66:240";
  const auto hits = Search(file, "x.mid", melody, {});
  ASSERT_EQ(hits.size(), 1U);
  const auto excerpt = MidiExcerpt(file, hits[0], 3, 2);
  ASSERT_THAT(excerpt, test::IsOk());
  const auto sequence = MidiSequence::FromFile(*excerpt);
  ASSERT_THAT(sequence, test::IsOk());
  std::vector<std::pair<std::uint64_t, int>> struck;
  int sounding = 0;
  for (const SequenceMessage& message : sequence->Messages()) {
    sounding += message.IsNoteOn() ? 1 : -1;
    if (message.IsNoteOn()) struck.emplace_back(message.tick, static_cast<int>(message.message >> 8 & 0x7F));
  }
  using testing::Pair;
  EXPECT_THAT(struck, testing::ElementsAre(Pair(0, 63), Pair(192, 64), Pair(384, 65), Pair(576, 66),
                                           Pair(768, 67), Pair(960, 68)));
  EXPECT_EQ(sounding, 0);
  // It is found again in what was cut out, in 3/4.
  const auto again = Search(*excerpt, "x.mid", melody, {});
  ASSERT_EQ(again.size(), 1U);
  EXPECT_EQ(FindHitPassage(*excerpt, again[0], 3), (HitPassage{0, 192, 1152}));
  for (std::size_t size = 0; size < file.size(); ++size)
    (void)MidiExcerpt(ByteView(file).first(size), hits[0], 3, 2);
  EXPECT_THAT(MidiExcerpt(file, hits[0], 3, SIZE_MAX), test::FailsWith(Outcome::DamagedMidi));
}

TEST(HitPassageTest, EveryHitInRealFilesIsFoundAgain) {
  std::size_t checked = 0;
  for (const char* name :
       {"midi/mutopia_maple-leaf-rag.mid", "midi/mutopia_debussy-arabesque-no1.mid",
        "midi/freedoom_d_e2m7.mid", "midi/made_gymnopedie.rmi", "midi/made_gymnopedie.rdl"}) {
    SCOPED_TRACE(name);
    const std::string path = test::DataPath(name);
    const auto file = ReadFile(path);
    ASSERT_THAT(file, test::IsOk());
    for (const SearchHit& hit : Search(*file, path, "60:240,62:240,64:240", Loose())) {
      const auto passage = FindHitPassage(*file, hit, 3);
      ASSERT_THAT(passage, test::IsOk());
      EXPECT_LE(passage->bar, passage->onset);
      EXPECT_LT(passage->onset, passage->end);
      const auto playable = LoadPlayableHit(hit, 3);
      ASSERT_THAT(playable, test::IsOk());
      EXPECT_LE(playable->bar, playable->onset);
      EXPECT_LT(playable->onset, playable->end);
      ++checked;
    }
  }
  EXPECT_GT(checked, 20U);
}

TEST(HitPassageTest, EveryHitInAScoreIsFoundAgainWhereItsFirstNoteSounds) {
  const MelodyQuery query = Query("60:240,62:240,64:240", Loose());
  std::size_t checked = 0;
  for (const std::string& path : test::DemoScores()) {
    SCOPED_TRACE(path);
    std::vector<SearchHit> hits;
    EXPECT_EQ(SearchScoreFile(path, query, Into(hits), {}).code, Outcome::Success);
    for (const SearchHit& hit : hits) {
      const auto playable = LoadPlayableHit(hit, 3);
      ASSERT_THAT(playable, test::IsOk());
      EXPECT_LE(playable->bar, playable->onset);
      EXPECT_LT(playable->onset, playable->end);
      // The music goes on in steps, which a triplet may lie between.
      const std::uint64_t onset = playable->sequence.TickAt(playable->onset);
      EXPECT_TRUE(std::ranges::any_of(playable->sequence.Messages(),
                                      [&](const SequenceMessage& message) {
                                        return message.IsNoteOn() && message.tick + kScoreStep > onset &&
                                               message.tick < onset + kScoreStep;
                                      }))
          << "voice " << hit.track << "/" << hit.voice << " bar " << hit.bar;
      SearchHit gone = hit;
      gone.lastObject = 10'000;
      EXPECT_THAT(LoadPlayableHit(gone, 3), test::FailsWith(Outcome::DamagedScore));
      gone.track = -1;
      EXPECT_THAT(LoadPlayableHit(gone, 3), test::FailsWith(Outcome::DamagedScore));
      ++checked;
    }
  }
  EXPECT_GT(checked, 20U);
}

// A staff that comes in with the second system plays where it stands, not where it has counted its bars to.
TEST(HitPassageTest, AStaffThatComesInLateIsHeardThere) {
  const auto quarter = [](std::int8_t position) { return ChordItem(2, {test::Note(position)}); };
  const VoiceItems rests(8, RestItem(2));
  const VoiceItems tune = {RestItem(2), quarter(test::kMiddleC), quarter(test::kD), RestItem(2)};
  ScoreDocument score;
  score.staves = {test::StaffNamed("A"), test::StaffNamed("B")};
  score.systems.resize(2);
  score.systems[0].staves = {{0, {}, {rests}}};
  score.systems[1].staves = {{0, {}, {VoiceItems(4, quarter(test::kE))}}, {1, {}, {tune}}};
  const test::TemporaryDirectory directory;
  const std::string path = directory.Write("a.stv", AsText(WriteScore(score)));
  std::vector<SearchHit> found;
  ASSERT_EQ(SearchScoreFile(path, Query("60:240,62:240"), Into(found), {}).hits, 1U);
  const auto playable = LoadPlayableHit(found[0], 2);
  ASSERT_THAT(playable, test::IsOk());
  EXPECT_EQ(playable->sequence.TickAt(playable->bar), 2U * 1920);
  EXPECT_EQ(playable->sequence.TickAt(playable->onset), 2U * 1920 + 480);
  EXPECT_THAT(LoadPlayableHit(found[0], 2, [] { return true; }), test::FailsWith(Outcome::Cancelled));
}

TEST(HitPassageTest, TimesFollowTheTempoMap) {
  const test::TemporaryDirectory directory;
  const Bytes file = test::MidiImage({Conductor(), Scale(12)});
  const std::string path = directory.Write("a.mid", AsText(file));
  auto hits = Search(file, path, "68:240,69:240", {});
  ASSERT_EQ(hits.size(), 1U);
  EXPECT_EQ(hits[0].time, 4000) << "by the first tempo";
  const auto playable = LoadPlayableHit(hits[0], 2);
  ASSERT_THAT(playable, test::IsOk());
  EXPECT_EQ(playable->onset, 2500ms + 3000ms) << "960 ticks at 120, 576 at 60";
  hits[0].file += ".fehlt";
  EXPECT_THAT(LoadPlayableHit(hits[0], 2), test::FailsWith(Outcome::SourceFailed));
}

// --- the player

class HitPlayerTest : public testing::Test {
 protected:
  // At 2400 quarters a minute, so that nobody waits.
  HitPlayerTest() {
    const Bytes track = Scale(12, TrackBuilder().Raw(0, {0xFF, 0x51, 3, 0x00, 0x61, 0xA8}));
    const Bytes file = test::MidiImage({track}, 192, 0);
    const std::string path = directory_.Write("a.mid", AsText(file));
    hit_ = Search(file, path, "65:240,66:240", {}).at(0);
  }
  // Plays and waits for the end; meanwhile acts.
  static Outcome PlayOn(HitPlayer& player, const SearchHit& hit, std::size_t notes,
                        const HitPlayer::Opener& open, const std::function<void()>& act = {}) {
    std::atomic<int> result = 1;
    player.Start(hit, notes, open, [&](Outcome outcome) { result = Code(outcome); });
    if (act) act();
    while (result == 1) std::this_thread::sleep_for(1ms);
    EXPECT_FALSE(player.Playing());
    return static_cast<Outcome>(result.load());
  }
  Outcome Play(const HitPlayer::Opener& open) {
    HitPlayer player;
    return PlayOn(player, hit_, 2, open);
  }

  test::TemporaryDirectory directory_;
  SearchHit hit_;
  std::mutex mutex_;
  std::vector<int> keys_;
  std::atomic<bool> closed_ = false;
  std::atomic<int> lastUntilGone_ = 1'000'000;  // messages that the device still takes
  HitPlayer::Opener open_ = [this]() -> Result<std::unique_ptr<MidiOutput>> {
    const auto send = [this](std::uint32_t message) {
      if (--lastUntilGone_ < 0) return Outcome::WriteFailed;
      const std::lock_guard lock(mutex_);
      if ((message & 0xF0) == 0x90 && message >> 16 != 0)
        keys_.push_back(static_cast<int>(message >> 8 & 0x7F));
      return Outcome::Success;
    };
    return std::make_unique<test::FakeDevice>(send, [this] { closed_ = true; });
  };
};

TEST_F(HitPlayerTest, PlaysThePassageAndNothingElse) {
  EXPECT_EQ(Play(open_), Outcome::Success);
  EXPECT_EQ(keys_, (std::vector<int>{64, 65, 66, 67})) << "the second bar";
  EXPECT_TRUE(closed_);
}

TEST_F(HitPlayerTest, PlaysTheBarOfAScore) {
  VoiceItems items;
  for (const std::int8_t position :
       {test::kMiddleC, test::kD, test::kE, test::kMiddleC, test::kE, test::kD}) {
    items.push_back(test::Quarter(position));
    if (items.size() == 4) items.push_back(BarItem());
  }
  hit_ = {};
  hit_.file = directory_.Write("a.stv", AsText(WriteScore(test::OneVoice(items, 1800))));
  hit_.firstObject = 5;  // the first note of the second bar
  hit_.lastObject = 6;
  EXPECT_EQ(Play(open_), Outcome::Success);
  EXPECT_EQ(keys_, (std::vector<int>{64, 62}));
}

TEST_F(HitPlayerTest, SaysWhyItEnded) {
  lastUntilGone_ = 3;
  EXPECT_EQ(Play(open_), Outcome::WriteFailed);
  EXPECT_EQ(Play([]() -> Result<std::unique_ptr<MidiOutput>> { return Failure(Outcome::TargetFailed); }),
            Outcome::TargetFailed);
  hit_.file += ".fehlt";
  EXPECT_EQ(Play(open_), Outcome::SourceFailed);
}

TEST_F(HitPlayerTest, AStopEndsItAtOnceAndTheNextHitCanPlay) {
  const Bytes slow = test::MidiImage(
      {TrackBuilder().Raw(0, {0xFF, 0x51, 3, 0xFF, 0xFF, 0xFF}).Note(0, 60).Note(60'000, 62).End(192)}, 192,
      0);
  SearchHit hit;
  hit.file = directory_.Write("slow.mid", AsText(slow));
  HitPlayer player;
  EXPECT_EQ(PlayOn(player, hit, 1, open_,
                   [&] {
                     while (lastUntilGone_ == 1'000'000) std::this_thread::sleep_for(1ms);
                     player.Stop();
                   }),
            Outcome::Cancelled);
  EXPECT_TRUE(closed_);
  EXPECT_EQ(PlayOn(player, hit_, 2, open_), Outcome::Success);
}

}  // namespace
}  // namespace ts5
