#include "frame/filter_catalogue.h"

#include <gmock/gmock.h>

#include "platform/text.h"

namespace ts5 {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

TEST(FilterCatalogue, NamesFitTheirFieldsAndDiffer) {
  std::set<std::string_view> names;
  for (const FilterDescriptor& filter : FilterCatalogue()) {
    EXPECT_LE(CharacterCount(filter.Name()), 63U);
    EXPECT_FALSE(filter.Description().empty());
    names.insert(filter.Name());
    EXPECT_EQ(filter.dialogTemplate.empty(), IsPlayer(filter.id)) << filter.identifier;
  }
  EXPECT_THAT(names, SizeIs(kFilterCount));
}

// One number over everything that a slip in the table would change.
TEST(FilterCatalogue, RowsCarryTheirValues) {
  const struct {
    FilterId id;
    std::size_t single, several, wholeList;
    std::uint32_t kinds, panels, colour1, colour2;
  } kRows[] = {
      {FilterId::ScoreToMidi, 3, 3, 0, 1, 0x01, 0x00FF00, 0x800000},
      {FilterId::MidiToScore, 3, 3, 0, 1, 0x01, 0xFF0000, 0x008000},
      {FilterId::ScoreSearch, 3, 3, 3, 2, 0x05, 0xFF0000, 0x400000},
      {FilterId::MidiSearch, 3, 3, 3, 2, 0x05, 0x00FF00, 0x004000},
      {FilterId::MidiPlayer, 3, 3, 0, 1, 0x08, 0x00FF00, 0x004000},
      {FilterId::MidiConverter, 3, 3, 0, 1, 0x01, 0x00FF00, 0x004000},
      {FilterId::MidiToWave, 3, 3, 0, 1, 0x01, 0x0000FF, 0x008000},
      {FilterId::AudioPlayer, 10, 10, 1, 1, 0x10, 0x0000FF, 0x000040},
      {FilterId::WaveConverter, 2, 2, 0, 1, 0x01, 0x0000FF, 0x000040},
      {FilterId::AudioCompressor, 2, 2, 0, 1, 0x01, 0xFF00FF, 0x000080},
      {FilterId::AudioDecompressor, 8, 8, 0, 1, 0x01, 0x0000FF, 0xC800C8},
      {FilterId::CdBurner, 0, 0, 11, 1, 0x20, 0x00FFFF, 0x004040},
      {FilterId::CdGrabber, 1, 1, 1, 1, 0x01, 0xFFFF00, 0x404000},
      {FilterId::CdCopier, 0, 0, 0, 1, 0x20, 0xC8C800, 0x202000},
      {FilterId::ScorePlayer, 3, 3, 0, 1, 0x08, 0xC80000, 0x200000},
      {FilterId::Artworker, 0, 0, 0, 1, 0x40, 0xFFFFFF, 0x000000},
      {FilterId::XmlConverter, 2, 2, 0, 1, 0x01, 0x77A4FF, 0x0042CC},
  };
  for (const auto& row : kRows) {
    const FilterDescriptor& filter = Descriptor(row.id);
    EXPECT_EQ(filter.id, row.id);
    EXPECT_THAT(filter.single, SizeIs(row.single)) << filter.identifier;
    EXPECT_THAT(filter.several, SizeIs(row.several)) << filter.identifier;
    EXPECT_THAT(filter.wholeList, SizeIs(row.wholeList)) << filter.identifier;
    EXPECT_EQ(static_cast<std::uint32_t>(filter.destinations), row.kinds) << filter.identifier;
    EXPECT_EQ(filter.panels, row.panels) << filter.identifier;
    EXPECT_EQ(filter.colour1, row.colour1) << filter.identifier;
    EXPECT_EQ(filter.colour2, row.colour2) << filter.identifier;
  }
}

TEST(FilterCatalogue, FindsFiltersByAnyOfTheirNames) {
  EXPECT_EQ(FindFilter("midiconverter"), FilterId::MidiConverter);
  EXPECT_EQ(FindFilter("MIDI-KONVERTER"), FilterId::MidiConverter);
  EXPECT_EQ(FindFilter("0"), FilterId::ScoreToMidi);
  EXPECT_EQ(FindFilter("16"), FilterId::XmlConverter);
  for (const char* wrong : {"", "17", "-1", "5x", "Midi"})
    EXPECT_EQ(FindFilter(wrong), FilterId::None) << wrong;
}

TEST(FilterCatalogue, TargetFileFiltersFollowFilterAndContext) {
  const auto pattern = [](FilterId id, TargetFilterContext context = {}) {
    return ParseFileFilter(TargetFileFilter(id, context)).at(0).patterns.at(0);
  };
  EXPECT_EQ(pattern(FilterId::ScoreToMidi), "*.mid");
  EXPECT_EQ(pattern(FilterId::MidiConverter), "*.mid");
  EXPECT_EQ(pattern(FilterId::MidiToScore), "*.stv");
  EXPECT_EQ(pattern(FilterId::MidiSearch), "*.txt");
  EXPECT_EQ(pattern(FilterId::CdGrabber), "*.wav");
  EXPECT_EQ(pattern(FilterId::AudioCompressor), "*.mp2");
  EXPECT_EQ(pattern(FilterId::AudioCompressor, {.wmaInterface = true}), "*.wma");
  EXPECT_EQ(pattern(FilterId::XmlConverter), "*.xml");
  EXPECT_EQ(pattern(FilterId::XmlConverter, {.sourceIsXml = true}), "*.stvx");
}

TEST(FilterCatalogue, ParsesFileFilters) {
  const auto filters = ParseFileFilter("Bilder (*.bmp; *.jpg)|*.bmp; *.jpg|Alle Dateien (*.*)|*.*|");
  ASSERT_THAT(filters, SizeIs(2));
  EXPECT_EQ(filters[0].label, "Bilder (*.bmp; *.jpg)");
  EXPECT_THAT(filters[0].patterns, ElementsAre("*.bmp", "*.jpg"));
  EXPECT_THAT(filters[1].patterns, ElementsAre("*.*"));
  EXPECT_TRUE(ParseFileFilter("").empty());
  EXPECT_TRUE(ParseFileFilter("label alone").empty());
}

}  // namespace
}  // namespace ts5
