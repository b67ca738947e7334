// What the main window shows and asks for, without a window: the destination field, the choice of a
// properties window, the lookup of the sibling programs.
#include <gtest/gtest.h>

#include "frame/destination_display.h"
#include "frame/file_properties.h"
#include "frame/filter_module.h"
#include "frame/siblings.h"
#include "frame/texts.h"
#include "platform/registry.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

struct NoParameters : ClonableParameters<NoParameters> {};

// A job with these list entries selected, and a filter that makes .mid files.
Job ListJob(FilterId filter, const std::vector<std::string>& files) {
  Job job;
  job.sourceDrive = kListModeDrive;
  job.filter = filter;
  job.parameters = ParametersValue(std::make_unique<NoParameters>());
  for (const std::string& file : files) job.files.Append(EntryFromPath(file));
  job.files.SelectAll();
  return job;
}

TEST(DisplayedDestination, NamesTheFirstItemWhereNamesAreAutomatic) {
  FilterModule module;
  module.target = [](const FilterParameters&, const std::string&) { return TargetRule{"mid", false}; };
  DestinationFiles files;
  files.exists = [](const std::string& path) { return path == "/m/lied.mid"; };
  files.isDirectory = [](const std::string&) { return true; };
  files.onCdRom = [](const std::string&) { return false; };
  DestinationRules replace;
  DestinationRules number;
  number.overwrite = OverwritePolicy::Number;
  DestinationRules noPreset;
  noPreset.noPreset = true;
  const std::vector<std::string> one{"/m/lied.stv"};
  const std::vector<std::string> two{"/m/lied.stv", "/m/satz.stv"};
  struct Case {
    std::vector<std::string> sources;
    DestinationRules rules;
    std::optional<std::string> name;
    bool editable;
  };
  const Case cases[] = {{one, replace, "/m/lied.mid", true},
                        {one, number, "/m/lied001.mid", true},
                        {two, replace, "/m/lied.mid", false},
                        {one, noPreset, std::nullopt, true},
                        {{}, replace, std::nullopt, true}};
  for (const Case& c : cases) {
    const auto display =
        DisplayedDestination(ListJob(FilterId::ScoreToMidi, c.sources), &module, c.rules, files);
    EXPECT_EQ(display.name, c.name);
    EXPECT_EQ(display.mode.editable, c.editable);
  }
  const auto player = DisplayedDestination(ListJob(FilterId::MidiPlayer, one), nullptr, replace, files);
  EXPECT_FALSE(player.name);
  EXPECT_FALSE(player.mode.editable);
}

TEST(ChooseProperties, TheFirstReaderThatKnowsTheFileWins) {
  const auto reader = [](Outcome outcome, PropertiesWindow window, ReaderFailure failure) {
    return PropertiesStep{{},
                          [=](const FileListEntry&) -> Result<PropertiesWindow> {
                            if (outcome != Outcome::Success) return Failure(outcome);
                            return window;
                          },
                          failure};
  };
  using enum ReaderFailure;
  using W = PropertiesWindow;
  struct Case {
    Outcome midi;
    Outcome score;
    Outcome tags;
    std::optional<PropertiesWindow> window;
    TextId message;
  };
  const Case cases[] = {
      {Outcome::Success, Outcome::Success, Outcome::Success, W::Midi, texts::UnknownFileFormat},
      {Outcome::WrongFormat, Outcome::Success, Outcome::Success, W::Score, texts::UnknownFileFormat},
      {Outcome::ReadFailed, Outcome::Success, Outcome::Success, W::Score, texts::UnknownFileFormat},
      {Outcome::SourceFailed, Outcome::Success, Outcome::Success, std::nullopt, texts::FileNotOpened},
      {Outcome::WrongFormat, Outcome::WrongFormat, Outcome::Success, W::Audio, texts::UnknownFileFormat},
      {Outcome::WrongFormat, Outcome::WrongFormat, Outcome::ReadFailed, std::nullopt, texts::FileNotOpened},
      {Outcome::WrongFormat, Outcome::WrongFormat, Outcome::WrongFormat, std::nullopt,
       texts::UnknownFileFormat},
  };
  for (const Case& c : cases) {
    const PropertiesStep steps[] = {reader(c.midi, W::Midi, StopAtSource),
                                    reader(c.score, W::Score, StopAtSource),
                                    reader(c.tags, W::Audio, StopUnlessFormat)};
    const PropertiesChoice choice = ChooseProperties(EntryFromPath("/m/a.mid"), steps);
    EXPECT_EQ(choice.window, c.window);
    if (!c.window) {
      EXPECT_EQ(choice.message, c.message);
    }
    // A CD track is no file: none of these may try to open it.
    EXPECT_FALSE(ChooseProperties(EntryFromPath("Track 03"), steps).window);
  }
}

TEST(Siblings, AreAvailableFromVersionThreeWithTheirProgramFile) {
  const test::TemporaryDirectory directory;
  directory.Write("rondel30.exe", "");
  const std::string score = directory.Write("stavora", "");
  struct Case {
    const char* version;
    const char* scoreRoot;
    bool available;
  };
  const Case cases[] = {{"3.0", "HKLM", true},  {"4.1", "HKCU", true}, {"4.1", "HKLM", false},
                        {"2.5", "HKLM", false}, {"", "HKLM", false},   {"3.0000000000001", "HKLM", false}};
  for (const Case& c : cases) {
    auto registry = Registry::Open(kRegistryInMemory);
    ASSERT_TRUE(registry.has_value());
    const auto set = [&](const std::string& key, std::string_view name, std::string_view text) {
      RegistryValues values = registry->Read(key).value_or(RegistryValues{});
      values.SetText(name, text);
      ASSERT_EQ(registry->Write(key, values), Outcome::Success);
    };
    const std::string version(c.version);
    set("HKLM\\software\\qlw\\Stavora", "Current Version", version);
    set("HKLM\\software\\qlw\\Rondelis", "Current Version", "3.0");
    set("HKLM\\software\\qlw\\Rondelis\\3.0", "InstallDir", directory.Path());
    set("HKLM\\software\\qlw\\Rondelis\\3.0", "WndClass", "RONDELIS");
    if (!version.empty())
      set(std::string(c.scoreRoot) + "\\software\\qlw\\Stavora\\" + version, "ExePath", score);
    const SiblingPrograms programs = FindSiblings(*registry);
    EXPECT_EQ(programs.score.available, c.available) << version << " " << c.scoreRoot;
    EXPECT_TRUE(programs.sequencer.available);
    EXPECT_EQ(programs.sequencer.windowClass, "RONDELIS");
  }
}

}  // namespace
}  // namespace ts5
