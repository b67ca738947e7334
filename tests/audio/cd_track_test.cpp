// Tracks of audio CDs: read as samples, and played.
#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>
#include <random>

#include "audio/audio_player.h"
#include "audio/cd_track_source.h"
#include "audio/playing_time.h"
#include "audio/wave_file.h"
#include "frame/player_parameters.h"
#include "frame/run_support.h"
#include "frame/texts.h"
#include "platform/disc/virtual_cd.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using test::FailsWith;
using test::IsOk;

constexpr std::size_t kSector = 2352;

class CdTrackTest : public testing::Test {
 protected:
  void SetUp() override {
    sheet_ = data_.Write("disc.cue", test::Content(test::DataPath("cd/three_tracks.cue")));
    data_.Write("three_tracks.bin", raw_);
    ASSERT_THAT(InsertVirtualDisc(sheet_), IsOk());
  }

  static std::string Entry(int track) { return CdTrackEntry(VirtualCdName(), track); }
  RunResult Play(const std::vector<std::string>& files,
                 const std::function<void(PlayerControl&)>& steer = {}) {
    return test::PlayFiles(AudioPlayerModule(), files, "wave:" + out_, PlayerParameters{}, steer, host_);
  }

  test::Home data_;
  std::string sheet_;
  std::string raw_ = test::Content(test::DataPath("cd/three_tracks.bin"));
  std::string out_ = data_.File("gespielt.wav");
  std::shared_ptr<test::RecordingHost> host_ = std::make_shared<test::RecordingHost>();
};

TEST_F(CdTrackTest, TheBurnerKnowsHowLongEverythingPlays) {
  constexpr double kSecond = 1e7;
  // Two quarters of half a second.
  const std::string midi = data_.Write(
      "lied.mid", std::string_view("MThd\0\0\0\6\0\0\0\1\0\x60MTrk\0\0\0\5\x81\x40\xFF\x2F\0", 27));
  struct Case {
    std::string path;
    double seconds;
  };
  for (const Case& test : {Case{test::DataPath("audio/pygame_car_door.wav"), 0.339},
                           Case{test::DataPath("audio/ogg_vorbis_q3_tags.ogg"), 1}, Case{midi, 1},
                           Case{data_.File("fehlt.mid"), 0}, Case{data_.File("fehlt.wav"), 0}}) {
    EXPECT_NEAR(static_cast<double>(PlayingTimeOf(EntryFromPath(test.path))) / kSecond, test.seconds, 0.05)
        << test.path;
  }
  FileListEntry track;
  track.path = Entry(2);
  track.cdTrack = true;
  EXPECT_EQ(PlayingTimeOf(track), 10'000'000U) << "60 sectors, rounded up";
  ASSERT_EQ(EjectVirtualDisc(), Outcome::Success);
  EXPECT_EQ(PlayingTimeOf(track), 0U);
}

TEST_F(CdTrackTest, GivesTheSamplesOfTheDiscFromAnywhere) {
  auto track = OpenCdTrack(*FindCdTrack(Entry(2)));
  ASSERT_THAT(track, IsOk());
  EXPECT_EQ((*track)->Shape(), (PcmShape{44'100, 2, 3, 16}));
  const std::uint64_t frames = 60 * 588;
  ASSERT_EQ((*track)->Frames(), frames);
  std::mt19937 random(7);
  for (int i = 0; i < 200; ++i) {
    const std::uint64_t from = i == 0 ? 0 : random() % (frames + 1);
    std::vector<double> out(2 * (1 + random() % 3000));
    ASSERT_THAT((*track)->Seek(from), IsOk());
    std::size_t got = 0;
    while (got < out.size() / 2) {
      const auto more = (*track)->Read(std::span(out).subspan(got * 2));
      ASSERT_THAT(more, IsOk());
      if (*more == 0) break;
      got += *more;
    }
    ASSERT_EQ(got, std::min<std::uint64_t>(out.size() / 2, frames - from));
    for (std::size_t s = 0; s < got * 2; ++s) {
      const std::size_t at = 105 * kSector + (from * 2 + s) * 2;
      const auto bits = static_cast<std::uint16_t>(static_cast<std::uint8_t>(raw_[at]) |
                                                   static_cast<std::uint8_t>(raw_[at + 1]) << 8);
      ASSERT_EQ(out[s] * 32768, static_cast<std::int16_t>(bits)) << from << " + " << s;
    }
  }
}

TEST_F(CdTrackTest, ADriveBelongsToOneAtATime) {
  const auto place = *FindCdTrack(Entry(1));
  {
    const auto held = OpenCdTrack(place);
    ASSERT_THAT(held, IsOk());
    EXPECT_THAT(OpenCdTrack(place), FailsWith(Outcome::InUse));
    const RunResult result = Play({Entry(2)});
    EXPECT_EQ(result.items[0].code, Code(Outcome::InUse));
    EXPECT_THAT(result.remarks, testing::Contains("Das CD-Laufwerk befindet sich bereits im Playbackmodus."));
  }
  EXPECT_THAT(OpenCdTrack(place), IsOk());
  EXPECT_THAT(OpenCdTrack(*FindCdTrack(Entry(4))), FailsWith(Outcome::CdDriveFailed)) << "no such track";
  ASSERT_THAT(EjectVirtualDisc(), IsOk());
  EXPECT_THAT(OpenCdTrack(place), FailsWith(Outcome::CdDriveFailed)) << "no disc";

  data_.Write("gemischt.cue",
              "FILE three_tracks.bin BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 MODE1/2352\n"
              "INDEX 01 00:01:00\n");
  ASSERT_THAT(InsertVirtualDisc(data_.File("gemischt.cue")), IsOk());
  EXPECT_THAT(OpenCdTrack(place), IsOk());
  EXPECT_THAT(OpenCdTrack(*FindCdTrack(Entry(2))), FailsWith(Outcome::CdDriveFailed)) << "data";
}

TEST_F(CdTrackTest, PlaysTracksToTheSampleUnderTheirOwnNames) {
  std::vector<std::string> names;
  const RunResult result = Play(
      {Entry(3), VirtualCdDirectory() + "/Track 02", "KEIN LAUFWERK\\Track 1"}, [&](PlayerControl& control) {
        while (host_->results.empty()) {
          const PlayerStatus status = control.Status();
          if (!status.name.empty() && (names.empty() || names.back() != status.name)) {
            names.push_back(status.name);
            EXPECT_GT(status.duration.count(), 0);
          }
          if (status.title.empty() && names.size() == 2) break;
          std::this_thread::sleep_for(std::chrono::milliseconds(2));
        }
      });
  EXPECT_THAT(names,
              testing::ElementsAre("Track 3 von STAVORA VIRTUELLE CD", "Track 2 von STAVORA VIRTUELLE CD"));
  EXPECT_EQ(result.counts[1], 2U);
  ASSERT_EQ(result.items.size(), 3U);
  EXPECT_EQ(result.items[2].code, Code(Outcome::CdDriveFailed));
  EXPECT_THAT(result.remarks, testing::Contains("Das Playback der Audio-CD konnte nicht gestartet werden."));
  const std::string played = test::Content(out_);
  const std::string third = raw_.substr(165 * kSector);
  const std::string second = raw_.substr(105 * kSector, 60 * kSector);
  const auto at = played.find(third.substr(8));  // tones begin with silence, as the pauses are
  ASSERT_NE(at, std::string::npos);
  EXPECT_NE(played.find(second.substr(8), at + third.size() - 8), std::string::npos);
}

TEST_F(CdTrackTest, ADiscThatCannotBeReadOnEndsItsTitle) {
  std::filesystem::resize_file(data_.File("three_tracks.bin"), 130 * kSector);
  // The sheet still says where the tracks are, but the disc was longer when it was put in.
  const RunResult shorter = Play({Entry(3)});
  EXPECT_EQ(shorter.items[0].code, Code(Outcome::CdDriveFailed)) << "it makes no disc any more";

  data_.Write("three_tracks.bin", raw_);
  auto track = OpenCdTrack(*FindCdTrack(Entry(3)));
  ASSERT_THAT(track, IsOk());
  std::vector<double> block(2 * 588 * 10);
  EXPECT_THAT((*track)->Read(block), IsOk());
  std::filesystem::resize_file(data_.File("three_tracks.bin"), 200 * kSector);
  Result<std::size_t> got = std::size_t{1};
  for (int i = 0; i < 10 && got && *got > 0; ++i) got = (*track)->Read(block);
  EXPECT_THAT(got, FailsWith(Outcome::ReadFailed));
}

}  // namespace
}  // namespace ts5
