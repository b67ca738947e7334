// Scores as pages: where things stand, and that every page of real files can be drawn.
#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <filesystem>
#include <map>

#include "converters/score_formats.h"
#include "preview/engraving.h"
#include "preview/score_pages.h"
#include "score/random_score.h"
#include "score/score_reader.h"
#include "support/test_data.h"

namespace ts5::preview {
namespace {

using namespace test;
using testing::ElementsAre;

ScoreDocument Document(const std::string& name) {
  const std::string content = Content(DataPath(name));
  auto score = converters::ReadAnyScore(AsBytes(content));
  EXPECT_TRUE(score) << name;
  return score ? std::move(score->document) : ScoreDocument();
}

ScoreDocument Song(VoiceItems items) {
  ScoreDocument score;
  score.staves.push_back({.name = "Flöte"});
  score.systems.push_back({.staves = {{.time = {4, 2}, .voices = {std::move(items)}}}});
  return score;
}

std::map<Sign, int> Signs(const Sketch& sketch) {
  std::map<Sign, int> counts;
  for (const SignMark& mark : sketch.signs) ++counts[mark.sign];
  return counts;
}

TEST(Preview, PutsNotesOnTheirLines) {
  struct Case {
    SpelledPitch pitch;
    std::uint8_t clef;
    std::uint8_t octave;
    int step;
  };
  const Case cases[] = {
      {{2, 0, 4}, kClefG, 1, 0}, {{6, 0, 4}, kClefG, 1, 4},  {{0, 0, 4}, kClefG, 1, -2},
      {{4, 0, 2}, kClefF, 1, 0}, {{0, 0, 4}, kClefF, 1, 10}, {{0, 0, 4}, kClefC, 1, 4},
      {{2, 0, 5}, kClefG, 0, 0}, {{2, 0, 3}, kClefG, 2, 0},  {{6, 0, 4}, kClefPercussion, 1, 4},
  };
  for (const Case& row : cases)
    EXPECT_EQ(StepOn(row.pitch, ClefItem(row.clef, row.octave).clef), row.step) << int{row.clef};
  EXPECT_THAT(KeySteps(2, ClefItem(kClefG).clef), ElementsAre(8, 5));
  EXPECT_THAT(KeySteps(2, ClefItem(kClefF).clef), ElementsAre(6, 3));
  EXPECT_THAT(KeySteps(-2, ClefItem(kClefC).clef), ElementsAre(3, 6));
}

TEST(Preview, DrawsWhatStandsInTheBar) {
  ScoreItem eighth = ChordItem(3, {ScoreNote{0, 0, 0}});
  ScoreItem sharp = ChordItem(2, {ScoreNote{2, 1, 0}});
  sharp.drawings.push_back(TextDrawing("f"));
  sharp.drawings.push_back(WordsDrawing("dolce"));
  const ScorePages pages(Song({ClefItem(kClefG), KeyItem(-1), TimeItem(4, 2), eighth, eighth, sharp,
                               RestItem(1), BarItem(static_cast<std::uint8_t>(BarLineType::RepeatEnd))}));
  ASSERT_EQ(pages.Count(), 1U);
  const Sketch page = pages.Draw(0);
  const auto signs = Signs(page);
  EXPECT_EQ(signs.at(Sign::TrebleClef), 1);
  EXPECT_EQ(signs.at(Sign::Flat), 1);
  EXPECT_EQ(signs.at(Sign::FilledHead), 3);
  EXPECT_EQ(signs.at(Sign::HalfRest), 1);
  EXPECT_EQ(signs.at(Sign::Dot), 2) << "of the repeat";
  EXPECT_EQ(std::ranges::count(page.lines, true, &LineMark::beam), 1);
  std::vector<std::string> texts;
  for (const TextMark& text : page.texts) texts.push_back(text.text);
  for (const char* text : {"4", "f", "dolce", "Flöte"}) EXPECT_THAT(texts, testing::Contains(text));
  // Notes follow one another from left to right and lie within the staff lines' ends.
  double before = 0;
  for (const SignMark& mark : page.signs) {
    if (mark.sign != Sign::FilledHead) continue;
    EXPECT_GT(mark.x, before);
    before = mark.x;
  }
}

// Left, top, right and bottom of a text.
std::array<double, 4> BoxOf(const TextMark& text) {
  const double width = TextWidth(text.text, text.size, text.style);
  const double left = text.align == TextAlign::Left     ? text.x
                      : text.align == TextAlign::Centre ? text.x - width / 2
                                                        : text.x - width;
  return {left, text.y - 0.8 * text.size, left + width, text.y + 0.2 * text.size};
}

TEST(Preview, TextsKeepOutOfOneAnothersWayAndOnThePaper) {
  ScoreItem first = ChordItem(2, {ScoreNote{4, 0, 0}});
  for (const char* words : {"Andante", "p", "dolce"}) {
    DrawingItem& drawing = first.drawings.emplace_back(TextDrawing(words));
    drawing.placement = 1;
  }
  ScoreDocument song = Song({ClefItem(kClefG), TimeItem(4, 2), first, RestItem(1, 1), BarItem()});
  song.systems[0].tempo = 120;
  song.credits.title =
      "Ein Lied mit einem Titel, der länger ist als die ganze Zeile, auf der er stehen soll, und noch länger";
  song.credits.movement = "Erster Satz";
  song.author =
      "Ein Komponist, der noch mehr Namen hat, als die Hälfte der Zeile fassen kann, und einen Titel";
  song.credits.lyricist = song.author;
  const ScorePages pages(std::move(song));
  Sketch page = pages.Draw(0);
  // The digits of a time signature touch.
  std::erase_if(page.texts, [](const TextMark& text) { return text.text.empty() || text.text == "4"; });
  EXPECT_GE(page.texts.size(), 7U);
  EXPECT_TRUE(std::ranges::any_of(
      page.texts, [](const TextMark& text) { return text.text.ends_with("noch länger: Erster Satz"); }));
  for (std::size_t i = 0; i < page.texts.size(); ++i) {
    const auto a = BoxOf(page.texts[i]);
    EXPECT_TRUE(a[0] >= 0 && a[2] <= pages.Size().width) << page.texts[i].text;
    for (std::size_t k = 0; k < i; ++k) {
      const auto b = BoxOf(page.texts[k]);
      const bool apart = a[2] <= b[0] || b[2] <= a[0] || a[3] <= b[1] || b[3] <= a[1];
      EXPECT_TRUE(apart) << page.texts[k].text << " / " << page.texts[i].text;
    }
  }
}

TEST(Preview, EveryPageOfRealFilesStaysOnItsPaper) {
  std::vector<std::string> names;
  for (const auto& entry : std::filesystem::directory_iterator(DataPath("musicxml")))
    names.push_back("musicxml/" + entry.path().filename().string());
  ASSERT_GE(names.size(), 16U);
  for (const std::string& name : names) {
    ScoreDocument document = Document(name);
    std::size_t notes = 0;
    for (const SystemItems& system : document.systems) {
      for (const StaffItems& staff : system.staves) {
        for (const VoiceItems& voice : staff.voices) {
          for (const ScoreItem& item : voice)
            notes += (item.group.flags & kGroupInvisible) == 0 ? item.group.notes.size() : 0;
        }
      }
    }
    const ScorePages pages(std::move(document));
    ASSERT_GT(pages.Count(), 0U) << name;
    std::size_t heads = 0;
    for (std::size_t i = 0; i < pages.Count(); ++i) {
      const Sketch page = pages.Draw(i);
      for (const SignMark& mark : page.signs) {
        EXPECT_TRUE(mark.x > 0 && mark.x < pages.Size().width && std::isfinite(mark.y)) << name;
        heads += mark.sign >= Sign::BreveHead && mark.sign <= Sign::SlashHead ? 1 : 0;
      }
      for (const LineMark& line : page.lines)
        EXPECT_TRUE(line.x1 > -1 && line.x2 < pages.Size().width + 1) << name << " " << line.x2;
    }
    // What crosses a bar line is drawn more than once.
    EXPECT_GE(heads, notes) << name;
    EXPECT_EQ(pages.PlaceOf(0).page, 0U);
    EXPECT_EQ(pages.PlaceOf(SIZE_MAX).page, pages.Count() - 1);
  }
}

TEST(Preview, TakesWhateverADocumentHolds) {
  for (unsigned seed = 0; seed < 60; ++seed) {
    const ScorePages pages(RandomScore(seed));
    for (std::size_t i = 0; i < pages.Count(); ++i) EXPECT_FALSE(pages.Draw(i).lines.empty()) << seed;
  }
  EXPECT_EQ(ScorePages(ScoreDocument()).Count(), 0U);
  std::size_t asked = 0;
  const ScorePages stopped(Document("musicxml/osmd_MuzioClementi_SonatinaOpus36No3_Part2.xml"),
                           [&asked] { return ++asked > 3; });
  EXPECT_EQ(stopped.Count(), 0U);
}

// What the page layout of a score says is what its pages look like.
TEST(Preview, FollowsThePageLayout) {
  const ScoreDocument usual = Document("musicxml/osmd_MuzioClementi_SonatinaOpus36No3_Part2.xml");
  ScoreDocument large = usual;
  large.page = {.given = true, .normalLines = 300, .above = 12, .below = 12, .slashes = true};
  const ScorePages few(usual);
  const ScorePages many(large);
  EXPECT_GT(many.Count(), few.Count());
  EXPECT_DOUBLE_EQ(many.Size().width, 210 / 3.0) << "spaces of 3 mm on 210 mm";
  ScoreDocument broad = usual;
  broad.landscape = true;
  const PageSize size = ScorePages(broad).Size();
  EXPECT_GT(size.width, size.height);
}

}  // namespace
}  // namespace ts5::preview
