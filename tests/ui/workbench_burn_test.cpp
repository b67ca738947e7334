// A disc project in the main window: its length against the disc, pauses, titles, and a disc that is being
// written.
#include <gmock/gmock.h>

#include <fstream>

#include "app/source/disc_commands.h"
#include "dialogs_support.h"
#include "disc/burn_parameters.h"
#include "disc/ui/disc_dialogs.h"
#include "frame/ui/results_dialog.h"
#include "platform/disc/disc_address.h"
#include "platform/disc/virtual_recorder.h"
#include "support/matchers.h"
#include "support/wave_bytes.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

constexpr int kSongSeconds = 2;

class BurnStory : public WorkbenchTest {
 protected:
  void SetUp() override {
    options_.volumes->AddVirtualRecorder(VirtualRecorderDirectory());
    options_.devices->writers = {VirtualRecorderName().Whole()};
    ASSERT_THAT(InsertBlankDisc(data_.File("disc"), 80, false), test::IsOk());
    StartListed();
    ToListMode();
    ASSERT_TRUE(W().Active().SwitchFilter(FilterId::CdBurner));
    Drop({Song("01 - Chor - Abendlied.wav"), Song("zwei.wav"), Song("drei.wav")});
    ASSERT_EQ(ActiveJob().files.Size(), 3U);
  }
  std::string Song(const std::string& name) const {
    return data_.Write(name,
                       test::WaveBytes(test::Noise(std::size_t{kSongSeconds} * 75 * kAudioSectorBytes)));
  }
  disc::BurnParameters& Parameters() { return As<disc::BurnParameters>(*ActiveJob().parameters); }
  QString Cell(int row, int column) {
    const FileViewModel& model = W().Source().Model();
    return model.data(model.index(row, column), Qt::DisplayRole).toString();
  }
  QString Length() { return W().Source().Fill()->text(); }

  test::TemporaryDirectory data_;
};

TEST_F(BurnStory, LengthPausesAndTitles) {
  ASSERT_TRUE(W().Source().Fill()->isVisible());
  EXPECT_TRUE(WaitFor([&] { return Length() == "Projekt: 0:06 von 79:57 Minuten"; }))
      << Length().toStdString();

  Select({1});
  script_.Expect([](QDialog& dialog) {
    Child<QSpinBox>(dialog, "pauseBox").setValue(5);
    Child<QRadioButton>(dialog, "scope_2").setChecked(true);
    ts5::Press(dialog, "okButton");
  });
  W().Actions().Trigger(CommandId::TrackPause);
  EXPECT_EQ(ActiveJob().files[0].pause, 0U) << "always two seconds";
  EXPECT_EQ(Cell(2, 3), "5");
  EXPECT_EQ(Length(), "Projekt: 0:16 von 79:57 Minuten");
  ActiveJob().files.SetTimes(2, 5000, 5);
  W().Active().Refresh();
  EXPECT_EQ(Length(), "Projekt: 83:34 Minuten, 3:37 zu lang für die CD (79:57)");
  EXPECT_FALSE(W().Source().Fill()->Fits());

  // Titles stand in the list when the disc gets them.
  EXPECT_EQ(W().Source().Model().columnCount(), 4);
  Parameters().cdText = true;
  Parameters().performer = "Alle";
  W().Active().Refresh();
  ASSERT_EQ(W().Source().Model().columnCount(), 6);
  EXPECT_TRUE(WaitFor([&] { return Cell(0, 4) == "Abendlied"; }));
  EXPECT_EQ(Cell(0, 5), "Chor");
  EXPECT_EQ(Cell(1, 5), "Alle");
  FileViewModel& model = W().Source().Model();
  model.setData(model.index(1, 4), "  Das   zweite ", Qt::EditRole);
  model.setData(model.index(0, 4), "Abendlied", Qt::EditRole);
  EXPECT_EQ(Cell(1, 4), "Das zweite");
  EXPECT_EQ(Parameters().texts.size(), 1U) << "what the file says is not kept";
  ActiveJob().files.Select({1});
  ActiveJob().files.SetFocus(1);
  W().Actions().Trigger(CommandId::MoveUp);
  EXPECT_EQ(Cell(0, 4), "Das zweite") << "the title goes with its file";
}

TEST_F(BurnStory, ADiscThatIsWrittenCannotBeStopped) {
  Parameters().verify = false;
  // Every WRITE takes a moment.
  std::ofstream(home_.File("faults.json")) << R"([{"op":"2A","times":1000,"delayMs":50,"sense":null}])";
  W().Actions().Trigger(CommandId::Run);
  const auto recording = [this] {
    return !ActiveJob().MayChange() && !W().Actions().Action(CommandId::Stop)->isEnabled();
  };
  ASSERT_TRUE(WaitFor(recording));
  EXPECT_FALSE(W().Target().StopButton()->isEnabled());
  EXPECT_FALSE(W().Actions().Action(CommandId::StopByEscape)->isEnabled());
  script_.ExpectBox(QMessageBox::Ok);
  EXPECT_FALSE(W().close()) << "the disc would be lost";
  EXPECT_EQ(script_.LastText(), QtText(texts::NoEndWhileRecording));
  script_.Expect([](QDialog& dialog) {
    EXPECT_NE(qobject_cast<ResultsDialog*>(&dialog), nullptr);
    dialog.accept();
  });
  ASSERT_TRUE(WaitFor([this] { return ActiveJob().MayChange() && script_.Done(); }));
  EXPECT_EQ(RecordedDisc::Load(data_.File("disc"))->status, RecordedDisc::Status::Finalized);
  EXPECT_TRUE(WaitFor([&] { return Length().contains("kein leerer Rohling"); })) << Length().toStdString();
}

}  // namespace
}  // namespace ts5
