// "attributes" and "interfaces" from end to end.
#include <gmock/gmock.h>
#include <sys/stat.h>

#include <nlohmann/json.hpp>

#include "batch/captured_console.h"
#include "batch/run_program.h"
#include "platform/files/files.h"
#include "support/home.h"
#include "support/test_data.h"

namespace ts5::batch {
namespace {

using test::Content;
using test::DataPath;
using test::Listing;
using test::TemporaryDirectory;
using testing::HasSubstr;

class AudioCommandsTest : public testing::Test {
 protected:
  int Run(const std::vector<std::string>& line) {
    captured_.emplace();
    return captured_->Run(line);
  }
  nlohmann::json Json() { return nlohmann::json::parse(captured_->out.str()); }

  const test::Home home_;
  TemporaryDirectory folder_;
  std::optional<CapturedConsole> captured_;
};

TEST_F(AudioCommandsTest, AttributesAreSetAndShown) {
  const std::string song = folder_.Write("a.mp3", Content(DataPath("audio/mpeg1_layer3_cbr128.mp3")));
  EXPECT_EQ(Run({"attributes", song, "--set", "Title=Größe = 5", "--set", "WM/Track=7"}), kExitSuccess);
  EXPECT_THAT(captured_->out.str(), HasSubstr("Title:"));
  EXPECT_EQ(Run({"attributes", "--json", song, folder_.File("none.mp3")}), kExitFailed);
  const auto files = Json()["files"];
  EXPECT_EQ(files[0]["attributes"],
            (nlohmann::json::array({{{"name", "Title"}, {"type", 1}, {"value", "Größe = 5"}},
                                    {{"name", "WM/Track"}, {"type", 0}, {"value", 7}}})));
  EXPECT_EQ(files[0]["properties"]["FileSize"], Content(song).size());
  EXPECT_EQ(files[0]["properties"]["HasAudio"], true);
  EXPECT_EQ(files[1]["code"], -300);
  EXPECT_EQ(Run({"attributes", song, "--remove", "title", "--set", "WM/Track="}), kExitSuccess);
  EXPECT_EQ(Run({"attributes", "--json", song}), kExitSuccess);
  EXPECT_TRUE(Json()["files"][0]["attributes"].empty());
  for (const char* wrong : {"Title", "=x", "Duration=5", "WM/Track=drei"})
    EXPECT_EQ(Run({"attributes", song, "--set", wrong}), kExitUsage) << wrong;
  // What is refused is not repeated in full.
  const std::string endless = "Duration=" + std::string(65536, '9');
  EXPECT_EQ(Run({"attributes", song, "--set", endless}), kExitUsage);
  EXPECT_LT(captured_->err.str().size(), 500U);
  EXPECT_EQ(Run({"run", "AudioCompressor", song, "--attribute", endless}), kExitUsage);
  EXPECT_LT(captured_->err.str().size(), 500U);
  EXPECT_THAT(captured_->err.str(), HasSubstr("99...\" ist kein Attribut"));
}

// The program as it is started shows and changes attributes without the decoders, with the same words.
TEST_F(AudioCommandsTest, TheLightProgramTellsTheSame) {
  const std::string song = folder_.Write("a.mp3", Content(DataPath("audio/mpeg1_layer3_cbr128.mp3")));
  for (const std::vector<std::string>& line :
       {std::vector<std::string>{"attributes", song, "--set", "Title=Größe"},
        {"attributes", song, folder_.File("none.mp3")},
        {"attributes", "--json", song},
        {"attributes", "--json", folder_.File("none.mp3"), DataPath("audio/wav_pcm16_mono_8000.wav"),
         DataPath("audio/mpeg1_layer3_vbr_xing_id3v2.mp3")}}) {
    const ProgramEnd end = Program(line, folder_.Path(), folder_.File("registry")).Wait();
    EXPECT_EQ(Run(line), end.status) << line.back();
    EXPECT_EQ(captured_->out.str(), end.out);
    EXPECT_EQ(captured_->err.str(), end.err);
  }
}

// A disk that is full in the middle: the file is as it was, and nothing lies beside it.
TEST_F(AudioCommandsTest, AFullDiskLeavesTheFileAlone) {
  for (const char* name : {"mpeg1_layer3_cbr128.mp3", "ogg_vorbis_q3_tags.ogg", "wma_v2_stereo_tags.wma"}) {
    const TemporaryDirectory music;
    const std::string song = music.Write(name, Content(DataPath(std::string("audio/") + name)));
    const std::string before = Content(song);
    // Room for the copy, but not for what is added.
    Program program({"attributes", song, "--set", "WM/Lyrics=" + std::string(30000, 'x')}, folder_.Path(),
                    folder_.File("registry"), before.size() + 1000);
    const ProgramEnd end = program.Wait();
    EXPECT_EQ(end.status, kExitFailed);
    EXPECT_THAT(end.err, HasSubstr("Dateiattribut"));
    EXPECT_TRUE(Content(song) == before);
    EXPECT_EQ(Listing(music.Path()), name);
  }
}

// Every encoder on a disk that becomes full: a failure with its reason, no target and nothing half written.
TEST_F(AudioCommandsTest, AFullDiskLeavesNoTarget) {
  const TemporaryDirectory music;
  const std::string song = music.Write("a.wav", Content(DataPath("audio/wav_left_only.wav")));
  for (const std::vector<std::string>& settings :
       std::vector<std::vector<std::string>>{{"--set", "CodecType=1"},
                                             {"--set", "CodecType=2"},
                                             {"--set", "CodecType=3", "--set", "OggQuality=9"}}) {
    std::vector<std::string> line{"run", "AudioCompressor", song};
    line.insert(line.end(), settings.begin(), settings.end());
    Program program(line, folder_.Path(), folder_.File("registry"), 2000);
    const ProgramEnd end = program.Wait();
    EXPECT_EQ(end.status, kExitFailed) << settings[1];
    EXPECT_THAT(end.out, HasSubstr("geschrieben")) << settings[1];
    EXPECT_EQ(Listing(music.Path()), "a.wav");
  }
}

TEST_F(AudioCommandsTest, TargetsAreShownBeforeARun) {
  const std::string song = folder_.Write("a.wav", Content(DataPath("audio/wav_left_only.wav")));
  EXPECT_EQ(Run({"attributes", song, "--set", "Title=Größe"}), kExitSuccess);
  const std::vector<std::string> line{"run",   "AudioCompressor", "--set",    "NamePattern=%track% %title%",
                                      "--set", "CodecType=2",     "--preview"};
  std::vector<std::string> asked = line;
  asked.insert(asked.end(), {"--json", song});
  EXPECT_EQ(Run(asked), kExitSuccess);
  EXPECT_EQ(Json()["targets"][0]["destination"], folder_.File("Größe.ape"));
  EXPECT_EQ(Json()["targets"][0]["replaces"], false);
  EXPECT_FALSE(FileExists(folder_.File("Größe.ape")));
  EXPECT_EQ(Run({"run", "AudioCompressor", "--set", "NamePattern=%titel%", song}), kExitUsage);
  EXPECT_EQ(Run({"run", "AudioPlayer", "--preview", song}), kExitUsage);
}

TEST_F(AudioCommandsTest, InterfacesAreAddedListedAndRemoved) {
  const std::string program = folder_.Write("enc", "#!/bin/sh\n");
  chmod(program.c_str(), 0755);
  EXPECT_EQ(Run({"interfaces"}), kExitSuccess);
  EXPECT_THAT(captured_->out.str(), HasSubstr("Keine MP3-Interfaces vorhanden!"));
  EXPECT_EQ(Run({"interfaces", "add", "--encoder", program, "--name=Mein Kodierer", "--extension", "mp3",
                 "--template", "-b 320 {q} {z}", "--bitrate", "320", "--mono", "--template=-V 2 {q} {z}",
                 "--vbr", "--deemphasis", "1"}),
            kExitSuccess)
      << captured_->err.str();
  EXPECT_EQ(Run({"interfaces", "--json"}), kExitSuccess);
  const auto interface = Json()["interfaces"][0];
  EXPECT_EQ(interface["number"], 0);
  EXPECT_EQ(interface["name"], "Mein Kodierer");
  EXPECT_EQ(interface["available"], true);
  EXPECT_EQ(interface["sets"][0]["template"], "-b 320 {q} {z}");
  EXPECT_EQ(interface["sets"][0]["bitrate"], 320);
  EXPECT_EQ(interface["sets"][0]["mono"], true);
  EXPECT_EQ(interface["sets"][0]["vbr"], false);
  EXPECT_EQ(interface["sets"][1]["vbr"], true);
  EXPECT_EQ(interface["sets"][1]["deemphasis"], 1);

  const std::vector<std::string> add{"interfaces", "add", "--encoder",   program,
                                     "--name",     "n",   "--extension", "mp3"};
  const std::vector<std::vector<std::string>> wrong{{},
                                                    {"--template", "{q} {z}"},
                                                    {"--vbr", "--template", "-x {q} {z}"},
                                                    {"--template", "-x {q} {z}", "--bitrate", "111"},
                                                    {"--template", "-x {q} {z}", "--deemphasis", "3"},
                                                    {"--template", "-x {q} {z}", "--extension"},
                                                    {"--template"}};
  for (const auto& options : wrong) {
    std::vector<std::string> line = add;
    line.insert(line.end(), options.begin(), options.end());
    EXPECT_EQ(Run(line), kExitUsage) << testing::PrintToString(options);
  }
  EXPECT_EQ(Run({"interfaces", "add", "--encoder", "/nicht/da", "--name", "n", "--template", "-x {q} {z}"}),
            kExitUsage);
  EXPECT_EQ(Run({"interfaces", "find", "--json"}), kExitSuccess);
  EXPECT_TRUE(Json()["interfaces"].is_array());
  EXPECT_EQ(Run({"interfaces", "remove", "1"}), kExitUsage);
  EXPECT_EQ(Run({"interfaces", "remove", "0"}), kExitSuccess);
  EXPECT_EQ(Run({"interfaces", "--json"}), kExitSuccess);
  EXPECT_TRUE(Json()["interfaces"].empty());
}

}  // namespace
}  // namespace ts5::batch
