#include "frame/file_drop.h"

#include <gmock/gmock.h>

#include "frame/texts.h"
#include "support/test_data.h"

namespace ts5 {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

std::vector<TextId> IdsOf(const DropResult& result) {
  std::vector<TextId> ids;
  for (const UserMessage& message : result.messages) ids.push_back(message.id);
  return ids;
}

TEST(FileDrop, AddsWhatIsSupportedAndCountsTheRest) {
  FreeFileList list;
  std::vector<std::string> paths;
  for (int i = 0; i < 8; ++i) paths.push_back("/m/" + std::to_string(i) + ".MID");
  paths.insert(paths.begin() + 3, "/m/a.txt");
  paths.push_back("/m/b.TXT");
  const DropResult result = DropFiles(list, FilterId::MidiConverter, paths, {});
  EXPECT_EQ(result.added, 8U);
  EXPECT_EQ(list.Size(), 8U);
  EXPECT_EQ(list[3].path, "/m/3.MID") << "order and spelling stay";
  EXPECT_EQ(list[0].duration, 0U);
  ASSERT_THAT(result.messages, SizeIs(1));
  EXPECT_EQ(result.messages[0].text, "2 Datei(en) wird (werden) für diese Aktion nicht unterstützt.");
}

TEST(FileDrop, RefusesWhatCannotBeAnEntry) {
  const test::TemporaryDirectory directory;
  directory.Write("folder.mid/x", "");
  FreeFileList list;
  const std::string tooLong = "/" + std::string(255, 'x') + ".mid";  // 260 characters
  const std::string longest = "/" + std::string(254, 'x') + ".mid";  // 259
  std::string wide = "/";
  for (int i = 0; i < 254; ++i) wide += "ä";  // characters count, not bytes
  wide += ".mid";
  const DropResult result = DropFiles(list, FilterId::MidiConverter,
                                      {tooLong, longest, "/m/\xFF.mid", wide, "Track 3", "/m/readme", "",
                                       directory.File("folder.mid"), "/m/t.cda"},
                                      {});
  EXPECT_EQ(result.added, 2U);
  EXPECT_EQ(result.rejected, 7U);
  EXPECT_EQ(list[0].path, longest);
  EXPECT_EQ(list[1].path, wide);
}

TEST(FileDrop, BurnerTakesTimesAndRefusesScores) {
  FreeFileList list;
  const DropEnvironment environment{.driveOf = {},
                                    .durationOf = [](const FileListEntry& entry) -> std::uint64_t {
                                      if (entry.path == "/m/short.wav") return 9'999'999;
                                      if (entry.path == "/m/unknown.wav") return 0;
                                      return 1'859'999'999;
                                    }};
  const DropResult result = DropFiles(
      list, FilterId::CdBurner, {"/m/a.wav", "/m/s.stv", "/m/short.wav", "/m/unknown.wav"}, environment);
  EXPECT_EQ(result.added, 3U);
  EXPECT_EQ(result.rejected, 1U);
  EXPECT_EQ(list[0].duration, 185U);
  EXPECT_EQ(list[1].duration, 1U);
  EXPECT_EQ(list[2].duration, 1U);
  EXPECT_EQ(list.Total(), 187U);
}

TEST(FileDrop, BurnerStopsAtTheHundredthTrack) {
  FreeFileList list;
  std::vector<std::string> paths(98, "/m/a.wav");
  EXPECT_THAT(DropFiles(list, FilterId::CdBurner, paths, {}).messages, IsEmpty());
  const DropResult result = DropFiles(list, FilterId::CdBurner,
                                      {"/m/x.txt", "/m/99.wav", "/m/y.txt", "/m/100.wav", "/m/z.txt"}, {});
  EXPECT_EQ(list.Size(), 99U);
  EXPECT_EQ(list[98].path, "/m/99.wav");
  EXPECT_EQ(result.rejected, 2U) << "what follows the hundredth is not looked at";
  EXPECT_THAT(IdsOf(result), ElementsAre(texts::TooManyTracks, texts::FilesRejected));

  FreeFileList other;
  paths.assign(150, "/m/a.wav");
  EXPECT_EQ(DropFiles(other, FilterId::AudioPlayer, paths, {}).added, 150U) << "only the burner has a limit";
}

TEST(FileDrop, CdaFilesBecomeTracks) {
  FreeFileList list;
  const DropEnvironment environment{.driveOf = [](const std::string& path) -> std::optional<DriveName> {
                                      if (!path.starts_with("/media/cd/")) return std::nullopt;
                                      return DriveName{"PLEXTOR", "DVD-R PX-716A 1.11"};
                                    },
                                    .durationOf = [](const FileListEntry& entry) -> std::uint64_t {
                                      return entry.cdTrack ? 600'000'000 : 0;
                                    }};
  const DropResult result = DropFiles(list, FilterId::CdBurner,
                                      {"/media/cd/Track03.CDA", "/media/cd/12.cda", "/m/Track01.cda",
                                       "/media/cd/Track.cda", "/media/cd/Track100.cda"},
                                      environment);
  EXPECT_EQ(result.rejected, 3U);
  ASSERT_EQ(list.Size(), 2U);
  EXPECT_EQ(list[0], (FileListEntry{"PLEXTOR DVD-R PX-716A 1 11\\Track 3", true, 60, 0}));
  EXPECT_EQ(list[1].path, "PLEXTOR DVD-R PX-716A 1 11\\Track 12");
  EXPECT_EQ(EntryFromPath(list[0].path).cdTrack, true) << "known as a track again after a reload";

  EXPECT_EQ(CdTrackEntry({" HL-DT-ST ", "CD:RW/DVD"}, "Track 07"), "HL-DT-ST CD RW/DVD\\Track 07");
  // A track of the directory view comes as its entry; a file without an extension is none.
  FreeFileList dragged;
  EXPECT_EQ(DropFiles(dragged, FilterId::AudioPlayer, {"A B\\Track 07", "/m/Track 07"}, {}).added, 1U);
  EXPECT_EQ(dragged[0], (FileListEntry{"A B\\Track 07", true}));
}

}  // namespace
}  // namespace ts5
