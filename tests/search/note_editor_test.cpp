#include "search/note_editor.h"

#include <gmock/gmock.h>

#include <set>

#include "search/melody_text.h"
#include "search/note_layout.h"
#include "search/texts.h"
#include "support/matchers.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;
using ::testing::ElementsAre;

std::vector<MelodyElement> Typed(std::string_view keys) {
  const auto melody = MelodyFromKeys(keys);
  EXPECT_THAT(melody, IsOk()) << keys;
  return melody ? melody->elements : std::vector<MelodyElement>{};
}

TEST(NoteEditorTest, KeysGiveCodesAndDurations) {
  struct Case {
    const char* keys;
    MelodyElement expected;
  };
  const Case cases[] = {
      {"c", {60, 240}},
      {"C", {72, 240}},
      {"<F4>C", {84, 240}},
      {"<F2>h", {59, 240}},
      {"<F8><F2>c", {10024, 240}},
      {"+e", {1065, 240}},
      {"-e", {-1063, 240}},
      {"+-0e", {64, 240}},
      {"<F8>-c", {-11035, 240}},
      {"4.c", {60, 360}},
      {"3.c", {60, 45}},
      {"1.c", {60, 1440}},
      {"2c", {60, 480}},
      {"8c", {60, 120}},
      {"6..c", {60, 60}},
      {"<F4>+H", {1096, 240}},
  };
  for (const Case& c : cases) EXPECT_THAT(Typed(c.keys), ElementsAre(c.expected)) << c.keys;
  const std::vector<MelodyElement> scale = Typed("cdefgahCDEFGAH");
  std::vector<int> keys;
  for (const MelodyElement& element : scale) keys.push_back(element.pitch);
  EXPECT_THAT(keys, ElementsAre(60, 62, 64, 65, 67, 69, 71, 72, 74, 76, 77, 79, 81, 83));
}

TEST(NoteEditorTest, CursorDecidesWhereElementsComeAndGo) {
  EXPECT_THAT(Typed("c<Links>d<Ende>e"),
              ElementsAre(MelodyElement{62, 240}, MelodyElement{60, 240}, MelodyElement{64, 240}));
  EXPECT_THAT(Typed("cde<Pos1><Entf>"), ElementsAre(MelodyElement{62, 240}, MelodyElement{64, 240}));
  EXPECT_THAT(Typed("cde<Entf><Rück><Rück>"), ElementsAre(MelodyElement{60, 240}));
  EXPECT_THAT(Typed("cd<Pos1><Rück><Links><Rechts> "),
              ElementsAre(MelodyElement{60, 240}, MelodyElement{kRestCode, 240}, MelodyElement{62, 240}));
  EXPECT_THAT(Typed("c  "), ElementsAre(MelodyElement{60, 240}));
}

TEST(NoteEditorTest, RefusesWithItsReasons) {
  SearchMelody melody;
  NoteEditor editor(melody);
  EXPECT_EQ(editor.Execute(NoteCommand::Rest).message, texts::RestAtStart);
  editor.SetWidth(150);
  int entered = 0;
  while (!editor.Execute(NoteCommand::LowC).message && entered < 100) ++entered;
  EXPECT_EQ(editor.Execute(NoteCommand::Rest).message, texts::NoRoomForNote);
  EXPECT_GE(entered, 2);
  EXPECT_LE(entered, 6);
  const NotePlace last = LayOutNotes(melody.elements, melody.clef).back();
  EXPECT_GE(last.x + kRoomForAnotherNote, 150);
  editor.SetWidth(last.x + kRoomForAnotherNote + 1);
  EXPECT_FALSE(editor.Execute(NoteCommand::LowC).message);
}

TEST(NoteEditorTest, ClefIsFixedAndCommandsFollowTheState) {
  SearchMelody melody;
  NoteEditor editor(melody);
  EXPECT_TRUE(editor.IsEnabled(NoteCommand::BassClef));
  EXPECT_FALSE(editor.IsEnabled(NoteCommand::Play));
  EXPECT_FALSE(editor.IsEnabled(NoteCommand::Save));
  EXPECT_TRUE(editor.Execute(NoteCommand::LowC).changed);
  EXPECT_FALSE(editor.Execute(NoteCommand::BassClef).changed);
  EXPECT_EQ(melody.clef, Clef::Treble);
  EXPECT_TRUE(editor.IsEnabled(NoteCommand::Save));

  editor.SetPlaying(true);
  for (const NoteCommand command :
       {NoteCommand::LowD, NoteCommand::Rest, NoteCommand::DeleteBeforeCursor, NoteCommand::DeleteAll}) {
    EXPECT_FALSE(editor.Execute(command).changed);
  }
  EXPECT_TRUE(editor.IsEnabled(NoteCommand::Play));
  EXPECT_EQ(melody.elements.size(), 1u);

  editor.SetPlaying(false);
  EXPECT_TRUE(editor.Execute(NoteCommand::DeleteAll).changed);
  EXPECT_EQ(melody.cursor, 0u);
  EXPECT_TRUE(editor.Execute(NoteCommand::BassClef).changed);
  EXPECT_TRUE(editor.IsChosen(NoteCommand::BassClef));
}

TEST(NoteEditorTest, OpensWithTheClefOfItsMelody) {
  SearchMelody melody;
  melody.elements = {{10036, 240}};
  melody.cursor = 7;
  NoteEditor editor(melody);
  EXPECT_EQ(melody.clef, Clef::Bass);
  EXPECT_EQ(melody.cursor, 1u);
}

TEST(NoteEditorTest, UndoAndRedoGoThroughAllChanges) {
  SearchMelody melody;
  NoteEditor editor(melody);
  EXPECT_FALSE(editor.IsEnabled(NoteCommand::Undo));
  std::vector<std::vector<MelodyElement>> states{melody.elements};
  const auto keep = [&] { states.push_back(melody.elements); };
  (void)editor.Execute(NoteCommand::LowC), keep();
  (void)editor.EnterAt(4, 0), keep();
  (void)editor.EnterKey(61), keep();
  (void)editor.Execute(NoteCommand::DeleteBeforeCursor), keep();
  (void)editor.Execute(NoteCommand::DeleteAll), keep();
  SearchMelody other;
  other.elements = {{10036, 240}};
  other.clef = Clef::Bass;
  editor.Replace(other), keep();
  for (std::size_t i = states.size() - 1; i-- > 0;) {
    EXPECT_TRUE(editor.Execute(NoteCommand::Undo).changed);
    EXPECT_EQ(melody.elements, states[i]) << i;
    EXPECT_LE(melody.cursor, melody.elements.size());
  }
  EXPECT_EQ(melody.clef, Clef::Treble);
  EXPECT_FALSE(editor.Execute(NoteCommand::Undo).changed);
  for (std::size_t i = 1; i < states.size(); ++i) {
    EXPECT_TRUE(editor.Execute(NoteCommand::Redo).changed);
    EXPECT_EQ(melody.elements, states[i]) << i;
  }
  EXPECT_EQ(melody.clef, Clef::Bass);
  (void)editor.Execute(NoteCommand::Undo);
  (void)editor.Execute(NoteCommand::LowD);
  EXPECT_FALSE(editor.IsEnabled(NoteCommand::Redo)) << "a change ends what was undone";
}

TEST(NoteEditorTest, MouseAndKeyboardEnterWhatTheyMean) {
  SearchMelody melody;
  NoteEditor editor(melody);
  melody.accidental = Accidental::Flat;
  EXPECT_EQ(editor.EnterAt(4, 7).sounds, 70);  // B flat, behind the end
  melody.accidental = Accidental::Sharp;
  EXPECT_EQ(editor.EnterAt(1, 0).sounds, 66);  // F sharp, at the start
  EXPECT_EQ(editor.EnterKey(63).sounds, 63);
  melody.accidental = Accidental::Flat;
  EXPECT_EQ(editor.EnterKey(63).sounds, 63);
  EXPECT_THAT(melody.elements, ElementsAre(MelodyElement{1066, 240}, MelodyElement{1063, 240},
                                           MelodyElement{-1063, 240}, MelodyElement{-1070, 240}));
  EXPECT_FALSE(editor.EnterKey(128).changed);
  editor.SetPlaying(true);
  EXPECT_FALSE(editor.EnterAt(4, 0).changed);
  // Every place means the key that is drawn there.
  for (const Clef clef : {Clef::Treble, Clef::Bass}) {
    for (int place = -8; place <= 16; ++place)
      EXPECT_EQ(StaffPlace(static_cast<std::int16_t>(KeyAtPlace(place, clef)), clef), place);
  }
  const NotePlace drawn = LayOutNotes(melody.elements, melody.clef)[2];
  EXPECT_EQ(ElementAt(melody.elements, melody.clef, drawn.x + 3, drawn.place), 2U);
  EXPECT_EQ(ElementAt(melody.elements, melody.clef, drawn.x + 3, drawn.place + 4), std::nullopt);
}

TEST(NoteLayoutTest, StaffPlacesAndLedgerLines) {
  struct Case {
    std::int16_t pitch;
    Clef clef;
    int place;
    std::vector<int> ledger;
  };
  const Case cases[] = {
      {64, Clef::Treble, 0, {}},    {77, Clef::Treble, 8, {}},
      {60, Clef::Treble, -2, {-2}}, {62, Clef::Treble, -1, {}},
      {81, Clef::Treble, 10, {10}}, {84, Clef::Treble, 12, {10, 12}},
      {1065, Clef::Treble, 0, {}},  {-1063, Clef::Treble, 0, {}},
      {1072, Clef::Treble, 4, {}},  {10043, Clef::Bass, 0, {}},
      {60, Clef::Bass, 10, {10}},   {24, Clef::Bass, -11, {-2, -4, -6, -8, -10}},
      {61, Clef::Treble, -2, {-2}},
  };
  for (const Case& c : cases) {
    EXPECT_EQ(StaffPlace(c.pitch, c.clef), c.place) << c.pitch;
    EXPECT_EQ(LedgerLines(c.place), c.ledger) << c.pitch;
  }
  EXPECT_LE(LedgerLines(StaffPlace(32767, Clef::Treble)).size(), 40u);  // of a damaged store
}

TEST(NoteLayoutTest, ElementsStandInOrderAndDoNotOverlap) {
  const std::vector<MelodyElement> elements = {{60, 960}, {1061, 360}, {kRestCode, 120}, {61, 30}, {72, 480}};
  const std::vector<NotePlace> places = LayOutNotes(elements, Clef::Treble);
  ASSERT_EQ(places.size(), elements.size());
  for (std::size_t i = 1; i < places.size(); ++i) EXPECT_GE(places[i].accidentalX, places[i - 1].x + 12) << i;
  EXPECT_EQ(places[0].head, NoteHead::Whole);
  EXPECT_FALSE(places[0].stem);
  EXPECT_TRUE(places[1].dotted);
  EXPECT_LT(places[1].accidentalX, places[1].x);
  EXPECT_TRUE(places[2].rest);
  EXPECT_EQ(places[3].flags, 3);
  EXPECT_EQ(places[3].accidental, Accidental::Sharp);
  EXPECT_FALSE(places[4].stemUp);
  // Stems of notes far from the staff reach its middle line.
  for (const auto& [pitch, length] : {std::pair{72, 3.5}, {60, 3.5}, {96, 7.5}, {48, 6.5}}) {
    const std::vector<MelodyElement> note = {{static_cast<std::int16_t>(pitch), 240}};
    EXPECT_EQ(LayOutNotes(note, Clef::Treble)[0].stemLength, length) << pitch;
  }
  for (std::size_t i = 0; i <= elements.size(); ++i) EXPECT_EQ(PositionAt(elements, CursorX(elements, i)), i);
}

TEST(MelodyTextTest, NumbersAreReadStrictly) {
  const auto melody = MelodyFromNumbers(" 60:240, R:120 ,61:1,r:10");
  ASSERT_THAT(melody, IsOk());
  EXPECT_THAT(melody->elements,
              ElementsAre(MelodyElement{60, 240}, MelodyElement{kRestCode, 120}, MelodyElement{61, 1}));
  for (const char* text : {"", "60", "60:0", "60:32768", "128:240", "-1:240", "60:240,", "r:240", "60:240:1",
                           "x:240", "60:2 40"}) {
    EXPECT_THAT(MelodyFromNumbers(text), FailsWith(Outcome::WrongFormat)) << text;
  }
  for (const char* text : {"", " c", "x", "cb", "<F4", "<F9>", "<Esc>c", "+", "c\t", "ä"}) {
    EXPECT_THAT(MelodyFromKeys(text), FailsWith(Outcome::WrongFormat)) << text;
  }
}

}  // namespace
}  // namespace ts5
