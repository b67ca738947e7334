// The document between the formats: what it keeps of a file, and the music that it works out.
#include <gmock/gmock.h>

#include <algorithm>

#include "platform/base/text.h"
#include "random_score.h"
#include "score/accidentals.h"
#include "score/score_bars.h"
#include "score/score_builder.h"
#include "score/score_reader.h"
#include "score/score_records.h"
#include "score_log.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;

Bytes Again(const Bytes& file) {
  const auto document = ReadScore(file);
  EXPECT_THAT(document, IsOk());
  return document ? WriteScore(*document) : Bytes();
}

TEST(ScoreDocument, GivesTheSameBytesAgain) {
  EXPECT_GE(DemoScores().size(), 12U);
  for (const std::string& path : DemoScores()) {
    const std::string content = Content(path);
    const Bytes file(content.begin(), content.end());
    EXPECT_EQ(Again(file), file) << path;
  }
  for (unsigned seed = 0; seed < 1000; ++seed) {
    const Bytes file = WriteScore(RandomScore(seed));
    EXPECT_EQ(Again(file), file) << seed;
  }
}

// A file of another program: colours, places and parameters that nothing here interprets.
TEST(ScoreDocument, KeepsWhatItDoesNotKnow) {
  ScoreItem chord = With(Quarter(kD), CurveDrawing(3));
  chord.lyrics = {{"la", 0}};
  ScoreDocument document = OneVoice({ClefItem(0), chord, RestItem(2), BarItem(1)});
  const Bytes plain = WriteScore(document);
  // Every byte in turn gets other values; what still is a score comes back as it is.
  std::size_t kept = 0;
  for (std::size_t i = 8; i < plain.size(); ++i) {
    for (const int value : {1, 2, 64, 128, 200, 255}) {
      Bytes file = plain;
      file[i] = static_cast<std::uint8_t>(value);
      const auto read = ReadScore(file);
      if (!read) continue;
      EXPECT_EQ(WriteScore(*read), file) << "byte " << i << " is " << value;
      ++kept;
    }
  }
  EXPECT_GT(kept, plain.size());

  // A kept record gives way to a change.
  Bytes file = plain;
  const Bytes record = ItemRecord(chord);
  const auto at = std::search(file.begin(), file.end(), record.begin(), record.end()) - file.begin();
  file[static_cast<std::size_t>(at) + 7] = 9;  // within the curve's header
  auto read = ReadScore(file);
  ASSERT_THAT(read, IsOk());
  ScoreItem& item = read->systems[0].staves[0].voices[0][1];
  EXPECT_FALSE(item.record.empty());
  item.lyrics[0].syllable = "lo";
  const auto changed = ReadScore(WriteScore(*read));
  ASSERT_THAT(changed, IsOk());
  EXPECT_EQ(changed->systems[0].staves[0].voices[0][1].lyrics[0].syllable, "lo");
}

TEST(ScoreDocument, RefusesWhatIsNoScore) {
  EXPECT_THAT(ReadScore(AsBytes("stv3+v")), FailsWith(Outcome::WrongFormat));
  EXPECT_THAT(ReadScore(OldScore(1, false)), FailsWith(Outcome::OldScore));
  const Bytes file = WriteScore(RandomScore(1));
  for (std::size_t size = 6; size < file.size(); size += 7)
    EXPECT_FALSE(ReadScore(ByteView(file).first(size)));
  EXPECT_THAT(ReadScore(WriteScore(RandomScore(2)), [] { return true; }), IsOk());  // too small to be asked
}

TEST(Fraction, IsExactAndBounded) {
  EXPECT_EQ(Fraction(1, 4) + Fraction(1, 12), Fraction(1, 3));
  EXPECT_EQ(Fraction(2, -6), Fraction(-1, 3));
  EXPECT_EQ(Fraction(1, 3) - Fraction(1, 2), Fraction(-1, 6));
  EXPECT_LT(Fraction(-1, 3), Fraction(-1, 4));
  EXPECT_EQ(Fraction(5, 0), Fraction(5));
  EXPECT_EQ((Fraction(3, 8) / Fraction(3, 2)), Fraction(1, 4));
  EXPECT_EQ(Fraction(1, 3).In(26880), 8960);
  EXPECT_EQ(Fraction(-1, 2).In(3), -1);
  Fraction sum;
  for (std::int64_t i = 1; i < 5000; ++i) sum += Fraction(1, i * i + 1);
  EXPECT_LE(sum.Denominator(), Fraction::kMaxDenominator);
  EXPECT_NEAR(sum.Value(), 1.0765, 0.001);
  Fraction huge(INT64_MAX, 3);
  for (int i = 0; i < 100; ++i) huge = huge * huge + Fraction(INT64_MIN, 7);
  EXPECT_LE(huge.Value(), 1e11);
}

TEST(SpelledPitch, IsTheNoteUnderClefAndKey) {
  const ScoreClef treble{kClefG, 1, 1};
  EXPECT_EQ(PitchOf({-7, 0, 0}, treble, 1), (SpelledPitch{4, 0, 4}));    // the tonic G
  EXPECT_EQ(PitchOf({-8, 0, 0}, treble, 1), (SpelledPitch{3, 1, 4}));    // F sharp below it
  EXPECT_EQ(PitchOf({-7, 0, 0}, treble, -7), (SpelledPitch{0, -1, 5}));  // C flat is key 71
  for (int key = -7; key <= 7; ++key) {
    for (std::uint8_t form = 0; form < 3; ++form) {
      for (std::uint8_t octave = 0; octave < 3; ++octave) {
        for (std::int8_t position = -20; position < 25; ++position) {
          for (std::int8_t accidental = -2; accidental <= 2; ++accidental) {
            const ScoreClef clef{form, 0, octave};
            const ScoreNote note{position, accidental, 0};
            const SpelledPitch pitch = PitchOf(note, clef, key);
            EXPECT_EQ((pitch.Key() % 12 + 12) % 12, NoteKey(note, clef, key) % 12);
            const PlacedNote placed = NoteOf(pitch, clef, key);
            EXPECT_TRUE(placed.exact);
            EXPECT_EQ(placed.note.position, position);
            EXPECT_EQ(placed.note.accidental, accidental);
          }
        }
      }
    }
  }
  // C double sharp in C flat major has no note: it is written as D.
  const PlacedNote placed = NoteOf({0, 2, 4}, treble, -7);
  EXPECT_FALSE(placed.exact);
  EXPECT_EQ(PitchOf(placed.note, treble, -7).Key(), 62);
}

TEST(Lengths, OfTupletsAreExact) {
  ScoreItem item = Quarter();
  for (const auto& [actual, normal, known] :
       {std::tuple{3, 2, true}, {5, 4, true}, {4, 3, true}, {7, 8, true}, {13, 11, false}, {40, 33, false}}) {
    SetTuplet(item, {static_cast<std::uint16_t>(actual), static_cast<std::uint16_t>(normal)});
    EXPECT_EQ(LengthOf(item, {}), Fraction(normal, 4 * actual));
    EXPECT_EQ(item.ratio == TupletRatio{}, known) << actual;
    // A file's own form is the nearest one.
    EXPECT_NEAR(GroupDuration(item.group, 480, {}), 480.0 * normal / actual, 25) << actual;
  }
  for (std::int64_t denominator = 1; denominator < 200; ++denominator) {
    for (std::int64_t numerator = 1; numerator < 300; numerator += 7) {
      Fraction sum;
      for (const ScoreItem& rest : GapItems(Fraction(numerator, denominator))) sum += LengthOf(rest, {});
      EXPECT_EQ(sum, Fraction(numerator, denominator));
    }
  }
}

TEST(Words, AreNeverTakenForSymbols) {
  for (const char* words : {"f", "Y", "sim", "s", "zart", "D.C. al Fine", "süß", "k"}) {
    const DrawingItem drawing = WordsDrawing(words);
    EXPECT_EQ(WordsOf(drawing), words);
    EXPECT_EQ(MarksOf(With(Quarter(), drawing)).dynamic, 0);
  }
  EXPECT_EQ(WordsOf(TextDrawing("ff")), "");
}

std::string BarsOf(const ScoreDocument& document) {
  std::string text;
  for (const ScoreBar& bar : ReadMusic(document).bars) {
    text += Format("%s%s:%d%s", bar.repeatStart ? "|:" : "", bar.number, bar.length.In(16),
                   bar.repeatEnd ? ":|" : "");
    if (bar.endings != 0) text += Format("/%d", bar.endings);
    if (bar.jumps != 0) text += Format("!%d", bar.jumps);
    text += ' ';
  }
  return text;
}

TEST(Music, HasTheBarsThatAreWritten) {
  const ScoreItem q = Quarter();
  const ScoreItem whole = ChordItem(0, {Note(kD)});
  struct Case {
    const char* what;
    ScoreDocument score;
    const char* bars;
  };
  const Case cases[] = {
      {"an upbeat", OneVoice({q, BarItem(), whole, BarItem(2)}), "0:4 1:16 "},
      {"no bar lines", OneVoice({whole, whole, whole, q}), "1:16 2:16 3:16 4:4 "},
      {"rests of bars", OneVoice({TimeItem(3, 2), WholeBarRest(3), BarItem(), q, q, q, BarItem()}),
       "1:12 2:12 3:12 4:12 "},
      {"a repeat with endings",
       OneVoice({whole, BarItem(4), whole, BarItem(), With(whole, VoltaDrawing(1)), BarItem(3),
                 With(whole, VoltaDrawing(2)), BarItem(2)}),
       "1:16 |:2:16 3:16:|/2 4:16/4 "},
      {"both ways at once", OneVoice({whole, BarItem(5), whole, BarItem(3)}), "1:16:| |:2:16:| "},
      {"a jump", OneVoice({whole, BarItem(), With(whole, WordsDrawing("D.C. al Fine")), BarItem()}),
       "1:16 2:16!16 "},
      {"a long note over a missing bar line", OneVoice({ChordItem(9, {Note(kD)}), BarItem()}), "1:32 "},
  };
  for (const Case& row : cases) EXPECT_EQ(BarsOf(row.score), row.bars) << row.what;
  // A number makes no more bars than music can have.
  const ScoreDocument endless = OneVoice({WholeBarRest(UINT32_MAX), BarItem()});
  EXPECT_LE(ReadMusic(endless).bars.size(), 100'001U);
}

TEST(Music, IsBuiltOfBarsAndPitches) {
  ScoreDocument document;
  document.staves = {StaffNamed("A"), StaffNamed("B")};
  std::vector<BarColumn> bars(5);
  for (BarColumn& bar : bars) {
    ScoreItem item = ChordItem(1, {});
    item.pitches = {{3, 1, 4}, {0, 2, 5}};  // F sharp, C double sharp
    bar.staves = {{{item}, {}}, {{}, {}}};
    bar.length = Fraction(3, 4);
    bar.time = {3, 2};
  }
  bars[0].staves[0][0].insert(bars[0].staves[0][0].begin(), {ClefItem(kClefF), KeyItem(1), TimeItem(3, 2)});
  bars[3].staves[0][0].insert(bars[3].staves[0][0].begin(), KeyItem(-7));
  bars[2].staves[0][1] = {RestItem(1, 1)};
  bars[4].line = kBarLineFinal;
  AppendBars(document, std::move(bars), 2);
  const auto moved = PlaceNotes(document);

  ASSERT_EQ(document.systems.size(), 3U);
  ASSERT_EQ(moved.size(), 2U);  // C double sharp in C flat major
  EXPECT_EQ(moved[0].bar, 3U);
  const ScoreMusic music = ReadMusic(document);
  EXPECT_EQ(BarsOf(document), "1:12 2:12 3:12 4:12 5:12 ");
  EXPECT_EQ(music.changes[0].size(), 4U);  // restated clefs and keys change nothing
  for (const auto& system : document.systems) {
    EXPECT_TRUE(system.staves[0].voices[0][0].Is(ObjectKind::Clef)) << "each system says it";
    EXPECT_TRUE(system.staves[0].voices[0][1].Is(ObjectKind::Key));
  }
  EXPECT_TRUE(document.systems[0].staves[1].voices[0][0].Is(ObjectKind::Clef)) << "where none was given";
  for (const auto& staff : music.voices) {
    for (const auto& voice : staff) EXPECT_EQ(voice.back().start + voice.back().length, Fraction(15, 4));
  }
  for (const ScoreEvent& event : music.voices[0][0]) {
    if (event.IsRest()) continue;
    EXPECT_THAT(SoundingKeys(event, document.staves[0]), testing::ElementsAre(66, 74));
  }
}

TEST(Music, AnAccidentalHoldsForItsBar) {
  ScoreDocument document;
  document.staves = {StaffNamed("A")};
  std::vector<BarColumn> bars(2);
  const auto half = [](std::int8_t alter) {
    ScoreItem item = ChordItem(1, {});
    item.pitches = {{3, alter, 4}};
    return item;
  };
  bars[0].staves = {{{half(1), half(1)}}};
  bars[1].staves = {{{half(1), half(0)}}};
  for (BarColumn& bar : bars) bar.time = {4, 2};
  AppendBars(document, std::move(bars), 2);
  EXPECT_TRUE(PlaceNotes(document).empty());
  EXPECT_EQ(NeededAccidentals(ReadMusic(document), 0), (AccidentalBits{{1, 0, 1, 1}}));
}

TEST(Music, HasItsTemposInPlace) {
  ScoreDocument document =
      OneVoice({Quarter(), With(Quarter(), SignDrawing("tempo", "half.=40")), BarItem()}, 100);
  document.systems.push_back(document.systems[0]);
  document.systems[1].staves[0].voices = {{Quarter(), BarItem()}};
  const ScoreMusic music = ReadMusic(document);
  ASSERT_EQ(music.tempos.size(), 2U);
  EXPECT_EQ(music.tempos[1].at, Fraction(1, 4));
  EXPECT_EQ(music.tempos[1].quarters, 120);
  for (const char* words : {"", "quarter=", "x=3", "-5", "1e300", "nan", "half..=x"})
    EXPECT_EQ(TempoOf(SignDrawing("tempo", words)), 0) << words;
}

}  // namespace
}  // namespace ts5
