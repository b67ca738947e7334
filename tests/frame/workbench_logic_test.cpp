// What the main window asks for, without a window: the choice of a properties window, the lookup of the
// sibling programs.
#include <gtest/gtest.h>

#include "frame/file_properties.h"
#include "frame/siblings.h"
#include "frame/texts.h"
#include "platform/store/registry.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

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
    const PropertiesChoice track = ChooseProperties(EntryFromPath("Track 03"), steps);
    EXPECT_FALSE(track.window);
    EXPECT_EQ(track.message, texts::NoTrackProperties);
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
