// Parameter sets: written in full, read back, refused with holes.
#include "score/parameter_set.h"

#include <gmock/gmock.h>

#include "platform/files/files.h"
#include "score/score_filter.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using namespace test;

const std::vector<std::uint8_t> kVoices = {2, 1};

PlaybackParameters Sample() {
  PlaybackParameters parameters;
  parameters.shortening = 80;
  parameters.articulations[0] = {-30, 5};
  parameters.dynamicVelocities[7] = 12;
  parameters.markForAllStaves = true;
  parameters.channels = {kNoChannels, kNoChannels};
  parameters.channels[0][0] = 3;
  parameters.channels[0][1] = 4;
  parameters.channels[1][0] = 9;
  parameters.sounds = {40, 73};
  return parameters;
}

TEST(ParameterSets, HaveTheirKeysInOrder) {
  const Bytes bytes = ParameterSetProfile(Sample(), kVoices).Serialise();
  EXPECT_EQ(
      AsText(bytes),
      "[sd4 Stavora Playback Parameterset]\r\n"
      "======="
      "==============================================\r\n"
      "Stop!!=Diese Datei wurde automatisch erzeugt und darf AUF KEINEN FALL editiert werden !!\r\n"
      "[Articulation I]\r\nArticulationYN=1\r\nNoteShorten=80\r\nVelocity=90\r\n"
      "ProzStaccato=-30\r\nProzVelStaccato=5\r\nProzStaccatissimo=-70\r\nProzVelStaccatissimo=10\r\n"
      "ProzTenuto=10\r\nProzVelTenuto=0\r\n"
      "[Articulation II]\r\nAkzentStark=118\r\nCutAkzentStark=-40\r\nAkzentNormal=110\r\n"
      "CutAkzentNormal=-20\r\nSchlagSchwer=127\r\nCutSchlagSchwer=-50\r\nSchlagWeich=102\r\n"
      "CutSchlagWeich=-10\r\n"
      "[Channel]\r\nStaveNum=2\r\nVoiceNum1=2\r\nVoiceNum2=1\r\nZeile1/Stimme1=3\r\nZeile1/Stimme2=4\r\n"
      "Zeile2/Stimme1=9\r\n"
      "[Dynamics]\r\nUseDynamics=1\r\nDynamic fff=127\r\nDynamic ff=110\r\nDynamic f=90\r\nDynamic mf=74\r\n"
      "Dynamic mp=62\r\nDynamic p=44\r\nDynamic pp=22\r\nDynamic ppp=12\r\nDynamicsAllStaves=1\r\n"
      "DynamicsAllVoices=1\r\n"
      "[Program]\r\nZeile1/Stimme1=40\r\nZeile1/Stimme2=40\r\nZeile2/Stimme1=73\r\n");
}

TEST(ParameterSets, ComeBackFromTheirFile) {
  const TemporaryDirectory directory;
  const std::string path = directory.Path() + "/a.sps";
  ASSERT_THAT(WriteFile(path, AsBytes("[Alt]\r\nx=1\r\n")), IsOk());
  ASSERT_THAT(SaveParameterSet(Sample(), kVoices, path), IsOk());
  PlaybackParameters loaded;
  ASSERT_THAT(LoadParameterSet(loaded, kVoices, path), IsOk());
  EXPECT_EQ(loaded.shortening, 80);
  EXPECT_EQ(loaded.articulations, Sample().articulations);
  EXPECT_EQ(loaded.dynamicVelocities, Sample().dynamicVelocities);
  EXPECT_EQ(loaded.channels, Sample().channels);
  EXPECT_EQ(loaded.sounds, Sample().sounds);
  EXPECT_TRUE(loaded.markForAllStaves);
  EXPECT_EQ(AsText(*ReadFile(path)).find("Alt"), std::string_view::npos);

  // A set of another score shapes the sound, but not the channels.
  PlaybackParameters other;
  ASSERT_THAT(LoadParameterSet(other, {2, 2}, path), IsOk());
  EXPECT_EQ(other.shortening, 80);
  EXPECT_EQ(other.dynamicVelocities[7], 12);
  EXPECT_TRUE(other.channels.empty());
}

TEST(ParameterSets, HoldEveryValueThatThePagesOffer) {
  for (int value = -100; value <= 100; ++value) {
    PlaybackParameters saved = Sample();
    for (ArticulationShape& shape : saved.articulations) shape.length = static_cast<std::int8_t>(value);
    saved.articulations[0].velocity = static_cast<std::int8_t>(value);
    PlaybackParameters loaded;
    ASSERT_THAT(ReadParameterSet(ParameterSetProfile(saved, kVoices), kVoices, loaded), IsOk()) << value;
    EXPECT_EQ(loaded.articulations, saved.articulations) << value;
  }
  Profile unknown = ParameterSetProfile(Sample(), kVoices);
  unknown.WriteInteger("Articulation I", "ProzTenuto", 255);
  PlaybackParameters parameters;
  EXPECT_EQ(ReadParameterSet(unknown, kVoices, parameters), Outcome::SourceFailed);
}

TEST(ParameterSets, AreFoundByTheNameOfTheScoreInAnyCase) {
  const TemporaryDirectory directory;
  const std::string fall = directory.Write("Fall.SPS", "");
  (void)directory.Write("ärger.sps", "");
  (void)directory.Write("b.SPS", "");
  const std::string exact = directory.Write("b.sps", "");
  EXPECT_EQ(AutomaticParameterSet(directory.Path(), "/noten/Fall.stv"), fall);
  EXPECT_EQ(AutomaticParameterSet(directory.Path(), "/noten/FALL.STV"), fall);
  EXPECT_EQ(AutomaticParameterSet(directory.Path(), "/noten/Ärger.stv"), directory.File("ärger.sps"));
  EXPECT_EQ(AutomaticParameterSet(directory.Path(), "/noten/b.stv"), exact);
  EXPECT_EQ(AutomaticParameterSet(directory.Path(), "/noten/anderes.stv"), "");
  EXPECT_EQ(AutomaticParameterSet(directory.File("fehlt"), "/noten/b.stv"), "");
}

TEST(ParameterSets, WithHolesAreRefused) {
  struct Case {
    std::string_view section;
    std::string_view key;
    Outcome outcome;
  };
  const Case cases[] = {
      {"sd4 Stavora Playback Parameterset", "Stop!!", Outcome::SourceFailed},
      {"Articulation I", "ArticulationYN", Outcome::Success},
      {"Articulation I", "NoteShorten", Outcome::SourceFailed},
      {"Articulation I", "ProzTenuto", Outcome::SourceFailed},
      {"Articulation II", "CutSchlagWeich", Outcome::SourceFailed},
      {"Channel", "StaveNum", Outcome::SourceFailed},
      {"Channel", "VoiceNum2", Outcome::SourceFailed},
      {"Channel", "Zeile1/Stimme2", Outcome::SourceFailed},
      {"Dynamics", "UseDynamics", Outcome::Success},
      {"Dynamics", "Dynamic mp", Outcome::SourceFailed},
      {"Dynamics", "DynamicsAllVoices", Outcome::Success},
      {"Program", "Zeile2/Stimme1", Outcome::Success},
  };
  for (const Case& row : cases) {
    Profile profile = ParameterSetProfile(Sample(), kVoices);
    ASSERT_TRUE(profile.Erase(row.section, row.key)) << row.key;
    PlaybackParameters parameters;
    EXPECT_EQ(ReadParameterSet(profile, kVoices, parameters), row.outcome) << row.key;
    EXPECT_EQ(parameters.articulation, row.key != "ArticulationYN");
  }
}

TEST(ScoreToMidiFields, StoreEveryValueUnderItsName) {
  const auto module = ScoreToMidiModule();
  auto parameters = module.create();
  for (const ParameterField& field : module.fields) {
    RegistryValues before;
    field.save(*parameters, before);
    const std::string value = field.name == "Dynamics"   ? "1 2 3 4 5 6 7 8"
                              : field.name == "Velocity" ? "11"
                                                         : "0";
    EXPECT_TRUE(field.set(*parameters, value)) << field.name;
    RegistryValues after;
    field.save(*parameters, after);
    EXPECT_EQ(after.Text(field.name).value_or(""), value) << field.name;
    EXPECT_FALSE(field.set(*parameters, "x")) << field.name;
  }
  EXPECT_EQ(module.fields.size(), 28U);
}

}  // namespace
}  // namespace ts5
