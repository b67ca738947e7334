#include "search/search_melody.h"

#include <gmock/gmock.h>

#include "support/matchers.h"

namespace ts5 {
namespace {

using ::testing::ElementsAre;

TEST(PitchCodes, KeepKeyAndWayOfWriting) {
  for (int key = 0; key < 128; ++key) {
    for (const Accidental accidental : {Accidental::Flat, Accidental::None, Accidental::Sharp}) {
      const std::int16_t code = PitchCode(key, accidental);
      const auto marked = static_cast<std::int16_t>(code >= 0 ? code + 10000 : code - 10000);
      for (const std::int16_t pitch : {code, marked}) {
        EXPECT_EQ(KeyOf(pitch), key) << pitch;
        EXPECT_EQ(AccidentalOf(pitch), accidental) << pitch;
        EXPECT_FALSE(IsRest({pitch, 240})) << pitch;
      }
      EXPECT_FALSE(HasBassMark(code));
      EXPECT_TRUE(HasBassMark(marked));
    }
  }
  EXPECT_FALSE(HasBassMark(kRestCode));
}

SearchMelody Melody(std::vector<MelodyElement> elements, Clef clef = Clef::Treble) {
  SearchMelody melody;
  melody.elements = std::move(elements);
  melody.clef = clef;
  melody.cursor = melody.elements.size();
  return melody;
}

constexpr MelodyElement kRest{kRestCode, 240};

TEST(SearchMelodyTest, TrimmingTakesRestsOffBothEndsOnly) {
  SearchMelody melody = Melody({kRest, kRest, {60, 240}, kRest, {62, 120}, kRest});
  melody.cursor = 4;
  TrimMelodyRests(melody);
  EXPECT_THAT(melody.elements, ElementsAre(MelodyElement{60, 240}, kRest, MelodyElement{62, 120}));
  EXPECT_EQ(melody.cursor, 2u);

  SearchMelody rests = Melody({kRest, kRest});
  TrimMelodyRests(rests);
  EXPECT_TRUE(rests.elements.empty());
  EXPECT_EQ(rests.cursor, 0u);
}

TEST(SearchMelodyTest, ClefMarkStaysOnTheFirstElement) {
  SearchMelody melody = Melody({}, Clef::Bass);
  ASSERT_TRUE(InsertMelodyElement(melody, {PitchCode(37, Accidental::Flat), 240}, 0));
  EXPECT_EQ(melody.elements[0].pitch, -11037);
  ASSERT_TRUE(InsertMelodyElement(melody, {36, 240}, 0));
  EXPECT_EQ(melody.elements[0].pitch, 10036);
  EXPECT_EQ(melody.elements[1].pitch, -1037);
  ASSERT_TRUE(RemoveMelodyElements(melody, 0, 1));
  EXPECT_EQ(melody.elements[0].pitch, -11037);

  SearchMelody other;
  ReplaceMelody(other, melody.elements, "Bassmelodie");
  EXPECT_EQ(other.clef, Clef::Bass);
  ReplaceMelody(other, {{60, 240}}, "");
  EXPECT_EQ(other.clef, Clef::Treble);
}

TEST(SearchMelodyTest, RangesOutsideTheMelodyAreRefused) {
  SearchMelody melody = Melody({{60, 240}, {62, 240}});
  EXPECT_FALSE(RemoveMelodyElements(melody, 2, 1));
  EXPECT_FALSE(RemoveMelodyElements(melody, 1, static_cast<std::size_t>(-1)));
  EXPECT_EQ(melody.elements.size(), 2u);
  melody.elements.resize(kMaxMelodyElements);
  EXPECT_FALSE(InsertMelodyElement(melody, {60, 240}, 0));
}

TEST(SearchMelodyTest, StoredFormIsByteExact) {
  const std::vector<MelodyElement> elements = {{10060, 240}, {kRestCode, 45}, {-1063, -2}};
  const Bytes stored = StoredMelody(elements);
  EXPECT_EQ(stored, (Bytes{0x4C, 0x27, 0xF0, 0x00, 0xD0, 0x07, 0x2D, 0x00, 0xD9, 0xFB, 0xFE, 0xFF}));
  EXPECT_EQ(MelodyFromStored(stored), elements);
  EXPECT_EQ(MelodyFromStored(ByteView(stored).first(11))->size(), 2u);
  EXPECT_EQ(MelodyFromStored(Bytes(4 * (kMaxMelodyElements + 1))), std::nullopt);
}

}  // namespace
}  // namespace ts5
