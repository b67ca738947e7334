// Discs through the program itself: processes that are killed while a disc is written.
#include <gmock/gmock.h>
#include <signal.h>

#include <filesystem>
#include <nlohmann/json.hpp>
#include <thread>

#include "batch/run_program.h"
#include "support/test_data.h"
#include "support/wave_bytes.h"

namespace ts5::batch {
namespace {

using nlohmann::json;
using testing::HasSubstr;

constexpr const char* kRecorder = "STAVORA VIRTUELLER BRENNER";
constexpr std::uint32_t kSector = 2352;

class DiscProgram : public testing::Test {
 protected:
  std::string Song(std::uint32_t seconds) const {
    return folder_.Write("lied.wav", test::WaveBytes(test::Noise(std::size_t{seconds} * 75 * kSector)));
  }
  Program Start(const std::vector<std::string>& line, std::vector<Variable> variables = {}) const {
    variables.emplace_back("XDG_DATA_HOME", folder_.File("daten"));
    return {line, folder_.Path(), folder_.File("r.sqlite"), 0, std::move(variables)};
  }
  ProgramEnd Run(const std::vector<std::string>& line) const { return Start(line).Wait(); }
  json Disc() const {
    const json list = json::parse(Run({"cd", "list", "--json"}).out);
    for (const json& drive : list["drives"])
      if (drive["name"] == kRecorder) return drive["disc"];
    return nullptr;
  }
  std::uintmax_t Written() const {
    std::error_code none;
    const auto size = std::filesystem::file_size(folder_.File("disc/disc.bin"), none);
    return none ? 0 : size;
  }

  test::TemporaryDirectory folder_;
};

TEST_F(DiscProgram, AKilledBurnLeavesAFreeDriveAndADiscThatSaysWhatItIs) {
  const std::string song = Song(30);
  ASSERT_EQ(Run({"cd", "blank", "disc"}).status, 0);
  {
    Program burn = Start({"run", "CdBurner", "--drive", kRecorder, "--set", "BurnSpeed=2", song},
                         {{"STAVORA_RECORDER_TIME", "real"}});
    // Two seconds of silence, and some of the song.
    while (Written() < std::uintmax_t{300} * kSector)
      std::this_thread::sleep_for(std::chrono::milliseconds(5));
    EXPECT_THAT(Run({"cd", "erase", kRecorder}).err, HasSubstr("verwendet")) << "the drive is at work";
    burn.Signal(SIGKILL);
    EXPECT_EQ(burn.Wait().status, 128 + SIGKILL);
  }
  EXPECT_EQ(Disc()["status"], "damaged");
  const ProgramEnd again = Run({"run", "CdBurner", "--drive", kRecorder, "--json", song});
  EXPECT_EQ(again.status, 1);
  EXPECT_EQ(json::parse(again.out)["items"][0]["code"], -705);
  // The drive is free: another disc goes in and is burnt.
  ASSERT_EQ(Run({"cd", "blank", "zwei"}).status, 0);
  EXPECT_EQ(Run({"run", "CdBurner", "--drive", kRecorder, song}).status, 0);
  EXPECT_EQ(Disc()["status"], "finalized");
}

}  // namespace
}  // namespace ts5::batch
