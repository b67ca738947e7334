#include "frame/filter_catalogue.h"

#include <gmock/gmock.h>

#include <typeinfo>

#include "frame/filter_module.h"
#include "frame/texts.h"
#include "platform/base/text.h"
#include "run_support.h"

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

TEST(FilterCatalogue, FindsFiltersByAnyOfTheirNames) {
  EXPECT_EQ(FindFilter("midiconverter"), FilterId::MidiConverter);
  EXPECT_EQ(FindFilter("MIDI-KONVERTER"), FilterId::MidiConverter);
  EXPECT_EQ(FindFilter("0"), FilterId::ScoreToMidi);
  EXPECT_EQ(FindFilter("16"), FilterId::XmlConverter);
  EXPECT_EQ(FindFilter(std::to_string(kFilterCount)), FilterId::None);
  for (const char* wrong : {"", "-1", "5x", "Midi"}) EXPECT_EQ(FindFilter(wrong), FilterId::None) << wrong;
}

TEST(FilterCatalogue, SaveTypesAreThoseOfTheFilterUnlessItsTargetHasOthers) {
  const auto pattern = [](FilterId id, const FilterModule* module = nullptr) {
    Job job;
    job.filter = id;
    job.parameters = LoadParameters(module, {});
    return ParseFileFilter(SaveTypesOf(job, module)).at(0).patterns.at(0);
  };
  EXPECT_EQ(pattern(FilterId::ScoreToMidi), "*.mid");
  EXPECT_EQ(pattern(FilterId::MidiToScore), "*.stv");
  EXPECT_EQ(pattern(FilterId::MidiSearch), "*.txt");
  EXPECT_EQ(pattern(FilterId::CdGrabber), "*.wav");
  EXPECT_EQ(pattern(FilterId::XmlConverter), "*.xml");
  FilterModule module = test::CopyModule(FilterId::XmlConverter);
  EXPECT_EQ(pattern(FilterId::XmlConverter, &module), "*.xml");
  module.target = [](const FilterParameters&, const std::string&) {
    return TargetRule{.extension = "stvx", .fileTypes = texts::FileFilterStvXml};
  };
  EXPECT_EQ(pattern(FilterId::XmlConverter, &module), "*.stvx");
}

TEST(ModuleOf, GivesItsFunctionsTheParametersAsWhatTheyAre) {
  struct Other : ClonableParameters<Other> {};
  enum class Level : std::int32_t { Low = 2, High = 8 };
  struct Own : ClonableParameters<Own> {
    Level level = Level::Low;
    struct {
      bool loud = false;
    } inner;
  };
  static constexpr std::array<std::int32_t, 2> kLevels = {2, 8};
  FieldTable<Own> table;
  table.Choice("Level", kLevels, &Own::level)
      .Flag(
          "Loud", [](auto& p) -> auto& { return p.inner.loud; });
  ModuleOf<Own> of;
  of.id = FilterId::MidiConverter;
  of.defaults.level = Level::High;
  of.fields = table.Build();
  of.target = [](const Own& own, const std::string&) {
    return TargetRule{.extension = own.level == Level::High ? "high" : "low"};
  };
  const FilterModule module = MakeModule(std::move(of));

  ParametersValue parameters = LoadParameters(&module, {});
  EXPECT_EQ(module.target(*parameters, "").extension, "high");
  EXPECT_EQ(module.fields[0].description, "2|8");
  EXPECT_TRUE(module.fields[0].set(*parameters, " 2 "));
  EXPECT_FALSE(module.fields[0].set(*parameters, "3"));
  EXPECT_TRUE(module.fields[1].set(*parameters, "1"));
  EXPECT_EQ(module.target(*parameters, "").extension, "low");
  RegistryValues values;
  SaveParameters(module, *parameters, values);
  EXPECT_EQ(values.Text("Level"), "2");
  EXPECT_EQ(values.Text("Loud"), "1");
  EXPECT_THROW((void)module.target(Other{}, ""), std::bad_cast);
}

}  // namespace
}  // namespace ts5
