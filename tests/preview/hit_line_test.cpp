// The bars around a hit as one line of notes.
#include "preview/hit_line.h"

#include <gmock/gmock.h>

#include <algorithm>

#include "converters/score_formats.h"
#include "preview/score_pages.h"
#include "score/score_log.h"
#include "search/hit_texts.h"
#include "search/melody_text.h"
#include "search/midi_search.h"
#include "search/score_search.h"
#include "search/track_builder.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5::preview {
namespace {

using namespace test;

std::vector<SearchHit> Search(const std::string& path, const char* melody, auto search) {
  std::vector<SearchHit> hits;
  const MelodyQuery query{MelodyFromNumbers(melody)->elements, {}};
  const HitSink sink = [&](const SearchHit& hit) {
    hits.push_back(hit);
    return Outcome::Success;
  };
  (void)search(path, query, sink, CancelCheck());
  return hits;
}

auto Heads(const MusicLine& line) {
  return std::ranges::count_if(line.sketch.signs, [](const SignMark& mark) {
    return mark.sign == Sign::FilledHead || mark.sign == Sign::HalfHead || mark.sign == Sign::WholeHead;
  });
}

TEST(HitLine, OfAScoreShowsTheBarsOfTheStaffInWhichItLies) {
  const std::string path = DataPath("../../demo/Bruder Jakob.stv");
  const auto hits = Search(path, "72:120,74:120,72:120,70:120,69:240", SearchScoreFile);
  ASSERT_GE(hits.size(), 4U);
  HitLines lines;
  const auto first = lines.Draw(hits[0], 5);
  ASSERT_THAT(first, IsOk());
  EXPECT_EQ(Heads(*first), 12) << "twice the bar with six notes";
  EXPECT_GT(first->width, 20);
  EXPECT_LE(first->top, 0);
  EXPECT_GE(first->bottom, 4);
  for (const SearchHit& hit : hits) {
    const auto line = lines.Draw(hit, 5);
    ASSERT_THAT(line, IsOk());
    EXPECT_GE(Heads(*line), 6) << "staff " << hit.track << " bar " << hit.bar;
  }
}

// In the lower of two staves a melody that begins with every bar; with an upbeat of a quarter note.
constexpr int kSystems = 50;
constexpr int kBarsOfSystem = 4;
ScoreDocument TuneInEveryBar(bool upbeat) {
  ScoreDocument score;
  score.staves = {{.name = "Flöte"}, {.name = "Geige"}};
  const ScoreItem c = ChordItem(2, {ScoreNote{kMiddleC, 0, 0}});
  const ScoreItem d = ChordItem(2, {ScoreNote{kD, 0, 0}});
  for (int system = 0; system < kSystems; ++system) {
    VoiceItems upper{ClefItem(kClefG), TimeItem(3, 2)};
    VoiceItems lower = upper;
    if (upbeat && system == 0) {
      for (VoiceItems* voice : {&upper, &lower}) voice->insert(voice->end(), {c, BarItem()});
    }
    for (int bar = 0; bar < kBarsOfSystem; ++bar) {
      upper.insert(upper.end(), {WholeBarRest(), BarItem()});
      lower.insert(lower.end(), {d, d, c, BarItem()});
    }
    score.systems.push_back({.staves = {{.layout = 0, .time = {3, 2}, .voices = {std::move(upper)}},
                                        {.layout = 1, .time = {3, 2}, .voices = {std::move(lower)}}}});
  }
  return score;
}

TEST(HitLine, TheBarOfAHitIsThePrintedOneWithAndWithoutAnUpbeat) {
  TemporaryDirectory folder;
  for (const bool upbeat : {false, true}) {
    for (const auto& [format, name] : {std::pair(converters::ScoreFormat::Score, "a.stv"),
                                       {converters::ScoreFormat::StvXml, "a.stvx"},
                                       {converters::ScoreFormat::MusicXml, "a.xml"}}) {
      SCOPED_TRACE(testing::Message() << name << (upbeat ? " with an upbeat" : ""));
      ScoreDocument score = TuneInEveryBar(upbeat);
      converters::LossReport losses;
      const auto written = converters::WriteAnyScore(score, format, losses);
      ASSERT_THAT(written, IsOk());
      const auto hits = Search(folder.Write(name, AsText(*written)), "62:240,62:240,60:240", SearchScoreFile);
      auto read = converters::ReadAnyScore(*written);
      ASSERT_TRUE(read);
      const ScoreMusic music = ReadMusic(read->document);
      const ScorePages pages(read->document);
      EXPECT_GT(pages.Count(), 1U);
      ASSERT_EQ(hits.size(), std::size_t{kSystems * kBarsOfSystem});
      for (std::size_t i = 0; i < hits.size(); ++i) {
        const auto bar = BarOfHit(music, hits[i]);
        ASSERT_TRUE(bar);
        EXPECT_EQ(music.bars[*bar].number, std::to_string(i + 1));
        EXPECT_EQ(HitColumns(SearchKind::Score, hits[i], false)[2], std::to_string(i + 1));
        const auto [first, last] = pages.Bars(pages.PlaceOf(hits[i]).page);
        EXPECT_LE(std::stoul(first), i + 1);
        EXPECT_GE(std::stoul(last), i + 1);
      }
    }
  }
}

TEST(HitLine, OfAMidiFileShowsItsTrackOnly) {
  TemporaryDirectory folder;
  TrackBuilder scale;
  for (int i = 0; i < 16; ++i) {
    scale.Note(0, 60 + i);
    scale.Note(192, 60 + i, 0);
  }
  const Bytes file = MidiImage({TrackBuilder().Raw(0, {0xFF, 0x58, 4, 4, 2, 24, 8}).End(), scale.End()});
  const std::string path = folder.Write("leiter.mid", AsText(file));
  const auto hits = Search(path, "65:240,66:240,67:240", SearchMidiFile);
  ASSERT_EQ(hits.size(), 1U);
  HitLines lines;
  const auto line = lines.Draw(hits[0], 3);
  ASSERT_THAT(line, IsOk());
  EXPECT_EQ(Heads(*line), 8);
  EXPECT_THAT(lines.Draw(hits[0], 3, [] { return true; }), FailsWith(Outcome::Cancelled));
}

TEST(HitLine, AFileThatHasChangedIsSaid) {
  TemporaryDirectory folder;
  HitLines lines;
  SearchHit hit;
  hit.file = folder.Write("a.mid", "MThd");
  EXPECT_FALSE(lines.Draw(hit, 3));
  hit.file = folder.File("weg.stv");
  EXPECT_FALSE(lines.Draw(hit, 3));
  hit.file = DataPath("../../demo/Bruder Jakob.stv");
  for (const auto& [track, voice, system] :
       {std::tuple(-1, 0, 0), {99, 0, 0}, {0, 9, 0}, {0, -1, 0}, {0, 0, 999}}) {
    hit.track = track;
    hit.voice = voice;
    hit.firstSystem = system;
    EXPECT_THAT(lines.Draw(hit, 3), FailsWith(Outcome::DamagedScore));
  }
}

}  // namespace
}  // namespace ts5::preview
