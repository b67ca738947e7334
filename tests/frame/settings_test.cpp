#include <gmock/gmock.h>

#include "frame/backgrounds.h"
#include "frame/settings_form.h"
#include "frame/settings_store.h"
#include "frame/texts.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

const std::string kKey = "HKEY_LOCAL_MACHINE\\software\\qlw\\Stavora-dialog\\5.0";

SettingsGround Ground() {
  return {.programDirectory = "/data/stavora-ts5",
          .driveRoot = "/home/u",
          .findPath = [](const std::string& path) -> std::optional<std::string> {
            if (path.starts_with("C:\\")) return "/home/u/found";
            return std::nullopt;
          }};
}

Settings From(std::initializer_list<std::pair<const char*, std::string>> texts) {
  RegistryValues values;
  for (const auto& [name, text] : texts) values.SetText(name, text);
  return SettingsFrom(values, Ground());
}

TEST(SettingsStore, ValuesThatDoNotFitTakeTheirDefaults) {
  const Settings defaults = From({});
  const std::pair<const char*, std::string> kWrong[] = {
      {"Job Saving", "3"},
      {"Job Saving", "-1"},
      {"Job Saving", "x"},
      {"Job Saving", ""},
      {"MelSearchResults", "99999999999999999999"},
      {"SkinLayout", "2"},
      {"RecordMixerPosition", "-2"},
      {"RecordMixerPosition", "2147483648"},
      {"RecordMixerName", std::string(64, 'x')},
      {"SuffixConvert", "abcde"},
      {"SuffixConvert", "a/b"},
      {"ArtworkerLayoutDir", "relativ"},
      {"ArtworkerLayoutDir", "Z:\\weg"},
      {"TrgDirConvert", "/" + std::string(259, 'x')},
      {"LastSelectedFolder", "/\xFF"},
      {"FileSelectDlgPos", "-1 0 100 100"},
      {"FileSelectDlgPos", "1 2 3"},
      {"FileSelectDlgPos", "1 2 3 4 5"},
      {"FileSelectDlgPos", "1 2 3 99999999999"},
  };
  for (const auto& [name, text] : kWrong) EXPECT_EQ(From({{name, text}}), defaults) << name << "=" << text;
  RegistryValues binary;
  binary.SetBinary("OverwriteTarget", AsBytes("0"));
  EXPECT_EQ(SettingsFrom(binary, Ground()), defaults);
}

TEST(SettingsStore, ReadsWhatIsStored) {
  EXPECT_FALSE(From({{"OverwriteTarget", "0"}}).overwriteTarget);
  EXPECT_FALSE(From({{"OverwriteTarget", "true"}}).overwriteTarget) << "only 1 is true";
  EXPECT_TRUE(From({{"VorgabeConvert", "1"}}).noTargetDefault);
  EXPECT_EQ(From({{"SkinLayout", "-1"}}).skinLayout, SkinLayout::Windows);
  EXPECT_EQ(From({{"SkinLayout", "-1"}}).pendingSkinLayout, SkinLayout::Windows);
  EXPECT_EQ(From({{"ArtworkerLayoutDir", "C:\\Layouts"}}).artworkerLayoutDirectory, "/home/u/found");
  EXPECT_EQ(From({{"TrgDirConvert", ""}}).targetDirectory, "");
  EXPECT_EQ(From({{"FileSearchDlgPos", "-5 2 3 4"}}).fileSearchPosition, (WindowRectangle{-5, 2, 3, 4}));
}

TEST(SettingsStore, EverySettingSurvivesTheRegistry) {
  Settings settings{.askForDeviceConnectError = false,
                    .askForDeviceConnectNoMixer = false,
                    .recordMixerPosition = 3,
                    .recordMixerName = "Aufnahme ♪",
                    .synthesizerDirectory = "/s",
                    .fileSelectPosition = WindowRectangle{1, 2, 3, 4},
                    .viewResultPosition = WindowRectangle{-7, 2, 3, 4},
                    .fileSearchPosition = {},
                    .fileSearchSubdirectories = false,
                    .fileSearchPattern = std::string(5000, '*'),
                    .fileSearchDirectories = "/a;/b",
                    .mainWindowPosition = WindowRectangle{10, 20, 1200, 900},
                    .mainWindowMaximised = false,
                    .fileColumns = "Date Length",
                    .fileSorting = "-Date",
                    .driveDirectories = "/m|/",
                    .askBeforeEnd = false,
                    .jobSaving = JobSaving::Ask,
                    .oldSearchResults = OldSearchResults::Extend,
                    .searchWholePath = true,
                    .skinLayout = SkinLayout::Stavora4,
                    .pendingSkinLayout = SkinLayout::Stavora4,
                    .artworkerLayoutDirectory = "/l",
                    .playbackParameterDirectory = "/p",
                    .lastSelectedFolder = "/f",
                    .sourceDirectoryAsTarget = false,
                    .targetDirectory = "/t",
                    .useSuffix = false,
                    .suffix = "äöü_",
                    .noTargetDefault = true,
                    .overwriteTarget = false};
  auto registry = Registry::Open(kRegistryInMemory);
  ASSERT_TRUE(registry);
  RegistryValues others;
  others.SetText("Job Number", "7");
  others.SetText("FileSearchDlgPos", "9 9 9 9");
  ASSERT_THAT(registry->Write(kKey, others), test::IsOk());
  ASSERT_THAT(SaveSettings(*registry, settings), test::IsOk());
  EXPECT_EQ(LoadSettings(*registry, Ground()), settings);
  EXPECT_EQ(registry->Read(kKey)->Text("Job Number"), "7") << "the values of others stay";

  // The running program keeps its appearance; the chosen one is saved for the next start.
  settings.pendingSkinLayout = SkinLayout::Windows;
  ASSERT_THAT(SaveSettings(*registry, settings), test::IsOk());
  EXPECT_EQ(LoadSettings(*registry, Ground()).skinLayout, SkinLayout::Windows);
}

TEST(SettingsStore, MakesItsDefaultDirectoriesOnly) {
  const test::TemporaryDirectory directory;
  auto registry = Registry::Open(kRegistryInMemory);
  ASSERT_TRUE(registry);
  SettingsGround ground{.programDirectory = directory.File("data"), .driveRoot = "/", .findPath = {}};
  Settings settings = LoadSettings(*registry, ground);
  EXPECT_EQ(test::Listing(ground.programDirectory), "layoutdir stvparamsets");
  EXPECT_TRUE(ValidateSettings(settings, FormOf(settings)).Accepted())
      << "a first start passes its own check";

  settings.artworkerLayoutDirectory = directory.File("own/layouts");
  ASSERT_THAT(SaveSettings(*registry, settings), test::IsOk());
  EXPECT_EQ(LoadSettings(*registry, ground), settings);
  EXPECT_EQ(test::Listing(directory.Path()).find("own"), std::string::npos);
}

TEST(SettingsStore, ForgetsAMixerLineThatBearsAnotherName) {
  const auto lines = [](std::int32_t position) -> std::optional<std::string> {
    if (position == 1) return "Line In";
    return std::nullopt;
  };
  const struct {
    std::int32_t position;
    const char* name;
    bool kept;
  } kCases[] = {{1, "Line In", true},
                {1, "Mikrofon", false},
                {2, "Line In", false},
                {5, "", true}};  // there is nothing to compare
  for (const auto& test : kCases) {
    Settings settings;
    settings.recordMixerPosition = test.position;
    settings.recordMixerName = test.name;
    CheckRecordMixer(settings, lines);
    EXPECT_EQ(settings.recordMixerPosition, test.kept ? test.position : -1);
    EXPECT_EQ(settings.recordMixerName, test.kept ? test.name : "");
  }
}

class SettingsFormCheck : public testing::Test {
 protected:
  SettingsFormCheck() {
    current_.artworkerLayoutDirectory = current_.playbackParameterDirectory = directory_.Path();
    form_ = FormOf(current_);
  }
  void ExpectRefused(TextId message, SettingsField field) const {
    const SettingsCheck check = ValidateSettings(current_, form_);
    EXPECT_EQ(check.message, message);
    EXPECT_EQ(check.field, field);
    EXPECT_EQ(check.settings, current_);
  }

  test::TemporaryDirectory directory_;
  Settings current_;
  SettingsForm form_;
};

TEST_F(SettingsFormCheck, TakesWhatIsInOrder) {
  EXPECT_EQ(ValidateSettings(current_, form_).settings, current_) << "an untouched form changes nothing";
  form_.skinLayout = SkinLayout::Windows;
  form_.searchWholePath = true;
  form_.sourceDirectoryAsTarget = false;
  form_.targetDirectory = directory_.Path() + "//./";
  form_.suffix = "abcde";
  const SettingsCheck check = ValidateSettings(current_, form_);
  ASSERT_TRUE(check.Accepted());
  EXPECT_EQ(check.settings.skinLayout, SkinLayout::Stavora5);
  EXPECT_EQ(check.settings.pendingSkinLayout, SkinLayout::Windows);
  EXPECT_EQ(check.settings.targetDirectory, directory_.Path());
  EXPECT_EQ(check.settings.suffix, "abcd");
}

TEST_F(SettingsFormCheck, RefusesInTheOrderOfThePages) {
  form_.jobSaving = JobSaving::Ask;
  form_.searchWholePath = true;
  form_.artworkerLayoutDirectory = "";
  form_.playbackParameterDirectory = directory_.Write("file", "x");
  form_.sourceDirectoryAsTarget = false;
  form_.targetDirectory = "";
  form_.suffix = "/";
  ExpectRefused(texts::InvalidDirectory, SettingsField::ArtworkerLayoutDirectory);
  form_.artworkerLayoutDirectory = directory_.Path();
  ExpectRefused(texts::InvalidDirectory, SettingsField::PlaybackParameterDirectory);
  form_.playbackParameterDirectory = directory_.Path();
  ExpectRefused(texts::InvalidDestinationDirectory, SettingsField::TargetDirectory);
  form_.targetDirectory = directory_.File("missing");
  ExpectRefused(texts::InvalidDestinationDirectory, SettingsField::TargetDirectory);
  form_.noTargetDefault = true;
  ExpectRefused(texts::NoSuffix, SettingsField::Suffix);
  form_.useSuffix = false;
  EXPECT_TRUE(ValidateSettings(current_, form_).Accepted());
}

TEST(Backgrounds, AreNeverNoneAndSurviveTheRegistry) {
  auto registry = Registry::Open(kRegistryInMemory);
  ASSERT_TRUE(registry);
  EXPECT_THAT(LoadBackgrounds(*registry), ElementsAre(ArtworkBackground{0xFFFFFF, 0xFFFFFF, 0, "Weiß Uni"}));
  std::vector<ArtworkBackground> backgrounds;
  for (std::uint32_t i = 0; i < 12; ++i)
    backgrounds.push_back({i, 0xFFFFFF - i, i % 3, "Verlauf " + std::to_string(i)});
  ASSERT_THAT(SaveBackgrounds(*registry, backgrounds), test::IsOk());
  EXPECT_EQ(LoadBackgrounds(*registry), backgrounds);
  EXPECT_EQ(registry->Read(kKey + "\\Backgrounds\\Background 0012")->Text("Name"), "Verlauf 11");
  backgrounds.resize(2);
  ASSERT_THAT(SaveBackgrounds(*registry, backgrounds), test::IsOk());
  EXPECT_EQ(LoadBackgrounds(*registry), backgrounds);
}

TEST(Backgrounds, TakeDamagedEntriesAsFarAsTheyGo) {
  auto registry = Registry::Open(kRegistryInMemory);
  ASSERT_TRUE(registry);
  RegistryValues list;
  list.SetText("Anzahl", "2000000000");
  ASSERT_THAT(registry->Write(kKey + "\\Backgrounds", list), test::IsOk());
  RegistryValues entry;
  entry.SetText("Farbe 1", "-1");
  entry.SetText("Farbe 2", "16777215");
  entry.SetText("Verlauf", "x");
  entry.SetText("Name", std::string(70, 'n'));
  ASSERT_THAT(registry->Write(kKey + "\\Backgrounds\\Background 0003", entry), test::IsOk());
  ASSERT_THAT(registry->Write(kKey + "\\Backgrounds\\Background x", entry), test::IsOk());
  ASSERT_THAT(registry->Write(kKey + "\\Backgrounds\\Background 0000", entry), test::IsOk());
  EXPECT_THAT(LoadBackgrounds(*registry),
              ElementsAre(ArtworkBackground{0, 0xFFFFFF, 0, std::string(63, 'n')}));
}

}  // namespace
}  // namespace ts5
