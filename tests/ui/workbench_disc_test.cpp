// The virtual CD drive in the main window: a disc put in, its tracks shown, taken into the list and played.
#include <gmock/gmock.h>

#include <QDir>
#include <QLabel>

#include "frame/texts.h"
#include "platform/disc/virtual_cd.h"
#include "support/home.h"
#include "support/matchers.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

using testing::ElementsAre;

class DiscStory : public WorkbenchTest {
 protected:
  void SetUp() override {
    options_.volumes->AddVirtualCd(VirtualCdDirectory());
    options_.devices->audioOutputs = {"null"};
    StartListed();
  }

  void TakeDrive() { emit W().Source().Drives()->DriveTaken(2); }
  void Choose(const std::string& path) {
    script_.Expect([path](QDialog& dialog) {
      auto* files = qobject_cast<QFileDialog*>(&dialog);
      ASSERT_NE(files, nullptr);
      if (path.empty()) return files->reject();
      files->selectFile(ToQt(path));
      static_cast<QDialog*>(files)->accept();
    });
  }
  QAction* MenuAction(TextId text) {
    for (QAction* action : W().Source().Files()->actions())
      if (action->text() == QtText(text)) return action;
    return nullptr;
  }
  std::vector<std::string> Shown() {
    std::vector<std::string> names;
    const FileViewModel& model = W().Source().Model();
    for (int row = 0; row < model.rowCount(); ++row)
      names.push_back(model.data(model.index(row, 0), Qt::DisplayRole).toString().toStdString());
    return names;
  }

  test::Home data_;
  std::string sheet_ = test::DataPath("cd/three_tracks.cue");
};

TEST_F(DiscStory, AnEmptyDriveAsksForADiscAndShowsItsTracks) {
  const std::int32_t before = ActiveJob().sourceDrive;
  Choose("");
  TakeDrive();
  EXPECT_EQ(ActiveJob().sourceDrive, before) << "no disc, no drive";
  EXPECT_FALSE(MenuAction(texts::DiscInsert)->isVisible());

  Choose(sheet_);
  TakeDrive();
  ASSERT_TRUE(WaitForListing());
  EXPECT_THAT(Shown(), ElementsAre("Track 01", "Track 02", "Track 03"));
  const FileViewModel& model = W().Source().Model();
  EXPECT_EQ(model.headerData(0, Qt::Horizontal, Qt::DisplayRole).toString(), QtText(texts::FileColumnTracks));
  EXPECT_EQ(model.data(model.index(0, 1), Qt::DisplayRole).toString(), "0:01");

  // The filters for tracks are offered; what changes files is not.
  Select({1});
  EXPECT_THAT(ActiveJob().directory.names, ElementsAre("Track 02"));
  EXPECT_TRUE(W().Filters().TileOf(FilterId::AudioPlayer)->isVisible());
  EXPECT_FALSE(W().Filters().TileOf(FilterId::WaveConverter)->isVisible());
  EXPECT_FALSE(Enabled(CommandId::Delete));
  EXPECT_FALSE(Enabled(CommandId::Rename));

  Select({0, 1});
  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::CdGrabber));
  EXPECT_EQ(W().Target().findChild<QLabel*>("targetFolder")->text(), QDir::currentPath());

  // Another session comes back to the disc.
  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::AudioPlayer));
  StartListed();
  EXPECT_EQ(ActiveJob().sourceDrive, 2);
  EXPECT_THAT(Shown(), ElementsAre("Track 01", "Track 02", "Track 03"));
  EXPECT_TRUE(W().Filters().TileOf(FilterId::AudioPlayer)->isVisible());
}

TEST_F(DiscStory, ADiscIsChangedByDroppingOneAndTakenOutByTheMenu) {
  ASSERT_THAT(InsertVirtualDisc(sheet_), test::IsOk());
  TakeDrive();
  ASSERT_TRUE(WaitForListing());
  ASSERT_EQ(Shown().size(), 3U);
  const std::string other = data_.Write(
      "zwei.cue",
      "FILE \"a.bin\" BINARY\nTRACK 01 AUDIO\nINDEX 01 00:00:00\nTRACK 02 AUDIO\nINDEX 01 00:00:01\n");
  data_.Write("a.bin", std::string(std::size_t{2} * 2352, 'x'));
  Drop({other});
  ASSERT_TRUE(WaitFor([this] { return Shown().size() == 2; }));
  // What is no disc is told, and the old one stays.
  script_.ExpectBox(QMessageBox::Ok);
  Drop({data_.Write("kaputt.cue", "nichts")});
  ASSERT_TRUE(WaitFor([this] { return script_.Done(); }));
  EXPECT_EQ(VirtualDisc(), other);

  ASSERT_TRUE(MenuAction(texts::DiscEject)->isVisible());
  MenuAction(texts::DiscEject)->trigger();
  ASSERT_TRUE(WaitFor([this] { return Shown().empty(); }));
  EXPECT_EQ(VirtualDisc(), std::nullopt);
  EXPECT_TRUE(W().Source().Files()->isEnabled()) << "a disc can still be dropped there";
  Drop({sheet_});
  ASSERT_TRUE(WaitFor([this] { return Shown().size() == 3; }));
}

TEST_F(DiscStory, TracksGoIntoTheListAndArePlayed) {
  ASSERT_THAT(InsertVirtualDisc(sheet_), test::IsOk());
  TakeDrive();
  ASSERT_TRUE(WaitForListing());
  Select({1, 2});
  QTest::keyClick(W().Source().Files(), Qt::Key_C, Qt::ControlModifier);
  ToListMode();
  QTest::keyClick(W().Source().Files(), Qt::Key_V, Qt::ControlModifier);
  ASSERT_EQ(ActiveJob().files.Size(), 2U);
  EXPECT_EQ(ActiveJob().files[0], EntryFromPath("STAVORA VIRTUELLE CD\\Track 02"));
  EXPECT_TRUE(ActiveJob().files[0].cdTrack);

  ASSERT_TRUE(W().Active().SwitchFilter(FilterId::AudioPlayer));
  Select({0});
  bool seen = false;
  W().Actions().Trigger(CommandId::Run);
  ASSERT_TRUE(WaitFor([&] {
    seen = seen || ActiveJob().run->player.Status().name == "Track 2 von STAVORA VIRTUELLE CD";
    return ActiveJob().MayChange();
  }));
  EXPECT_TRUE(seen);
}

}  // namespace
}  // namespace ts5
