#include "frame/cd_tracks.h"

#include <gmock/gmock.h>

#include <cstdlib>
#include <filesystem>

#include "frame/file_list_file.h"
#include "frame/job_store.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "support/home.h"
#include "support/matchers.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using testing::ElementsAre;

TEST(CdTracks, AreFoundByTheNameOrThePlaceOfTheirDrive) {
  const std::vector<CdDriveEntry> drives = {{"/dev/sr0", {"PLEXTOR", "DVD-R PX-716A 1.11"}},
                                            {"/home/a.b/cd", {"HL-DT-ST", "CD RW/DVD"}},
                                            {"/dev/sr1", {"PLEXTOR", "DVD-R PX-716A 1.11"}}};
  struct Case {
    std::string_view source;
    std::string_view path;
    int number;
  };
  for (const Case& one :
       {Case{"PLEXTOR DVD-R PX-716A 1 11\\Track 3", "/dev/sr0", 3},
        Case{"HL-DT-ST CD RW/DVD\\Track 07", "/home/a.b/cd", 7},
        Case{"/home/a.b/cd/Track 99", "/home/a.b/cd", 99}, Case{"/dev/sr1/Track 01", "/dev/sr1", 1}}) {
    const auto place = FindCdTrack(one.source, drives);
    ASSERT_TRUE(place) << one.source;
    EXPECT_EQ(place->drive.path, one.path);
    EXPECT_EQ(place->number, one.number);
  }
  for (const char* none :
       {"TEAC CD-532S\\Track 3", "Track 3", "PLEXTOR DVD-R PX-716A 1 11\\Track 0",
        "PLEXTOR DVD-R PX-716A 1 11\\Track 100", "/home/a.b/Lied 03", "/home/a.b/cd/Lied", ""})
    EXPECT_FALSE(FindCdTrack(none, drives)) << none;
  EXPECT_EQ((CdTrackPlace{drives[1], 4}).Title(), "Track 4 von HL-DT-ST CD RW/DVD");
}

class VirtualDriveTracks : public testing::Test {
 protected:
  void SetUp() override {
    ASSERT_THAT(InsertVirtualDisc(test::DataPath("cd/three_tracks.cue")), test::IsOk());
  }
  test::Home data_;
};

TEST_F(VirtualDriveTracks, ADiscIsADirectoryOfTracks) {
  const auto disc = FindAudioCd(VirtualCdDirectory());
  ASSERT_TRUE(disc);
  EXPECT_EQ(disc->drive, VirtualCdName());
  std::vector<std::uint32_t> seconds;
  for (const AudioCd::Track& track : disc->tracks) seconds.push_back(track.seconds);
  EXPECT_THAT(seconds, ElementsAre(1, 1, 1)) << "none lasts no time";
  EXPECT_FALSE(FindAudioCd(data_.Path()));
  EXPECT_EQ(CdDirectoryOf("Stavora Virtuelle CD"), VirtualCdDirectory());
  EXPECT_EQ(CdDirectoryOf("Stavora"), std::nullopt);
  EXPECT_EQ(DriveOfFile(VolumeTable::OfThisMachine(), VirtualCdDirectory() + "/Track01.cda"),
            VirtualCdName());
  EXPECT_EQ(DriveOfFile(VolumeTable::OfThisMachine(), VirtualRecorderDirectory() + "/Track01.cda"),
            VirtualRecorderName())
      << "longer than what a drive can say of itself";
  EXPECT_EQ(DriveOfFile(VolumeTable::OfThisMachine(), data_.File("Track01.cda")), std::nullopt);

  const std::string cue =
      data_.Write("daten.cue", "FILE d.bin BINARY\nTRACK 01 MODE1/2048\nINDEX 01 00:00:00\n");
  data_.Write("d.bin", std::string(4096, 'x'));
  ASSERT_THAT(InsertVirtualDisc(cue), test::IsOk());
  EXPECT_FALSE(FindAudioCd(VirtualCdDirectory())) << "a data disc";

  data_.Write("spiel.bin", std::string(900 * 2352, 'x'));
  const std::string mixed = data_.Write("spiel.cue",
                                        "FILE spiel.bin BINARY\nTRACK 01 MODE1/2352\nINDEX 01 00:00:00\n"
                                        "TRACK 02 AUDIO\nINDEX 01 00:04:00\n");
  ASSERT_THAT(InsertVirtualDisc(mixed), test::IsOk());
  const auto game = FindAudioCd(VirtualCdDirectory());
  ASSERT_TRUE(game);
  ASSERT_EQ(game->tracks.size(), 1);
  EXPECT_EQ(game->tracks.front().number, 2);
}

TEST_F(VirtualDriveTracks, TracksOfAListAreThereWithTheirDisc) {
  FreeFileList list;
  for (const int track : {2, 3, 4}) list.Append(EntryFromPath(CdTrackEntry(VirtualCdName(), track)));
  const std::string path = data_.File("CD.sts");
  ASSERT_THAT(SaveFileList(path, list, false), test::IsOk());
  const VolumeTable volumes = VolumeTable::OfThisMachine();
  const auto loaded = LoadFileList(path, false, volumes, CdTrackExists);
  ASSERT_THAT(loaded, test::IsOk());
  EXPECT_EQ(loaded->missing, 1U);
  ASSERT_EQ(loaded->entries.size(), 2U);
  EXPECT_EQ(loaded->entries[0], list[0]);
  EXPECT_EQ(LoadFileList(path, false, volumes)->missing, 3U);
}

TEST_F(VirtualDriveTracks, AJobComesBackToItsDiscButTheDefaultJobToNoEmptyDrive) {
  const VolumeTable volumes = VolumeTable::OfThisMachine();
  const JobSurroundings around = JobSurroundingsOf(
      volumes, [](FilterId) { return nullptr; }, FindAudioCd);
  RegistryValues values;
  values.SetText("SourcePath", VirtualCdDirectory());
  values.SetInteger("SourceDrive", 7);
  const int drive = volumes.DriveOfPath(VirtualCdDirectory());
  EXPECT_EQ(JobFromValues(values, 0, around).sourceDrive, drive);
  EXPECT_EQ(JobFromValues(values, 0, around).directory.path, VirtualCdDirectory());
  ASSERT_THAT(EjectVirtualDisc(), test::IsOk());
  EXPECT_EQ(JobFromValues(values, 1, around).directory.path, VirtualCdDirectory());
  EXPECT_EQ(JobFromValues(values, 0, around).sourceDrive, 0);
}

}  // namespace
}  // namespace ts5
