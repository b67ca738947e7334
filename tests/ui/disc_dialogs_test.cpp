// The dialogs of discs: what their controls do to each other and to the parameters.
#include "disc/ui/disc_dialogs.h"

#include <gtest/gtest.h>

#include <QTest>

#include "dialogs_support.h"
#include "disc/texts.h"
#include "disc/ui/burn_dialog.h"
#include "disc/ui/grab_dialog.h"
#include "frame/ui/qt_text.h"
#include "platform/disc/virtual_cd.h"
#include "platform/disc/virtual_recorder.h"
#include "support/home.h"
#include "support/test_data.h"
#include "workbench_support.h"

namespace ts5::disc {
namespace {

template <typename Widget>
bool Enabled(QWidget& window, const char* name) {
  return Child<Widget>(window, name).isEnabled();
}

TEST(BurnDialogTest, RulesOfTheParameters) {
  RecordingHost host;
  BurnParameters stored;
  stored.copies = 5;
  stored.normalise = static_cast<std::int32_t>(NormaliseMode::Project);
  BurnDialog dialog(stored, 2, {16, false}, {}, host, nullptr);
  dialog.show();
  EXPECT_EQ(Child<QLineEdit>(dialog, "BurnPrefix").text(), "Job0003_");
  EXPECT_EQ(Child<QLineEdit>(dialog, "BurnPrefix").maxLength(), 12);
  auto& speed = Child<QSpinBox>(dialog, "BurnSpeed");
  EXPECT_EQ(std::pair(speed.minimum(), speed.maximum()), std::pair(2, 16));
  // A recorder without protection.
  EXPECT_FALSE(Enabled<QCheckBox>(dialog, "BurnBurnProof"));
  EXPECT_FALSE(Child<QCheckBox>(dialog, "BurnBurnProof").isChecked());
  // Simulating makes one copy.
  auto& copies = Child<QSpinBox>(dialog, "BurnCopies");
  EXPECT_EQ(copies.value(), 5);
  Child<QRadioButton>(dialog, "BurnMode_0").setChecked(true);
  EXPECT_EQ(copies.value(), 1);
  EXPECT_FALSE(copies.isEnabled());
  Child<QRadioButton>(dialog, "BurnMode_1").setChecked(true);
  EXPECT_TRUE(copies.isEnabled());
  // Track by track there are no choices for files that fail, and no project to be normalised.
  Child<QRadioButton>(dialog, "BurnDisc_at_Once_0").setChecked(true);
  EXPECT_FALSE(Enabled<QWidget>(dialog, "failedGroup"));
  // A folder that is not there keeps the dialog open, on its page.
  Child<QRadioButton>(dialog, "BurnSysTempPath_0").setChecked(true);
  Child<QLineEdit>(dialog, "BurnUserTempPath").setText("/gibt/es/nicht");
  Child<QTabWidget>(dialog, "pages").setCurrentIndex(3);
  EXPECT_EQ(dialog.HelpTopic(), "parm_cd-brenner-Normalisieren.htm");
  {
    const NextMessage message;
    Press(dialog, "okButton");
    EXPECT_EQ(message.Text(), QtText(texts::NoTemporaryFolder));
  }
  EXPECT_TRUE(dialog.isVisible());
  EXPECT_EQ(Child<QTabWidget>(dialog, "pages").currentIndex(), 0);
  Child<QRadioButton>(dialog, "BurnSysTempPath_1").setChecked(true);
  Press(dialog, "okButton");
  EXPECT_FALSE(dialog.isVisible());
  EXPECT_FALSE(dialog.Parameters().atOnce);
  EXPECT_EQ(dialog.Parameters().Normalising(), NormaliseMode::Each);
  EXPECT_EQ(dialog.Parameters().Action(), BurnAction::SimulateThenBurn);
  EXPECT_FALSE(dialog.Parameters().underrunProtection);
}

TEST(CopyDialogTest, OnTheFlyNeedsNoFilesAndDiscAtOnce) {
  RecordingHost host;
  CopyDialog dialog({}, {}, host, nullptr);
  dialog.show();
  EXPECT_TRUE(Enabled<QWidget>(dialog, "CopyDeleteWaves"));
  Child<QCheckBox>(dialog, "CopyOnTheFly").setChecked(true);
  EXPECT_FALSE(Enabled<QWidget>(dialog, "CopyDeleteWaves"));
  Child<QRadioButton>(dialog, "CopyDisc_at_Once_0").setChecked(true);
  EXPECT_FALSE(Enabled<QWidget>(dialog, "CopyOnTheFly"));
  EXPECT_TRUE(Enabled<QWidget>(dialog, "CopyDeleteWaves"));
  Press(dialog, "okButton");
  EXPECT_FALSE(dialog.Parameters().OnTheFly());
}

TEST(GrabDialogTest, NamesAndSpeed) {
  RecordingHost host;
  GrabParameters stored;
  stored.useNames = true;
  stored.names = {"", "Zweites Lied.wav"};
  GrabDialog dialog(stored, 3, {}, host, nullptr);
  dialog.show();
  auto& names = Child<QListWidget>(dialog, "nameList");
  ASSERT_EQ(names.count(), 3);
  EXPECT_EQ(names.item(0)->text(), "Track01.wav");
  EXPECT_EQ(names.item(1)->text(), "Zweites Lied.wav");
  auto& speed = Child<QSpinBox>(dialog, "GrabSpeed");
  EXPECT_EQ(speed.text(), "max");
  EXPECT_EQ(Child<QLabel>(dialog, "speedLabel").text(), QtText(texts::SpeedLabelMax));
  speed.stepDown();
  EXPECT_EQ(speed.text(), "4");
  EXPECT_EQ(Child<QLabel>(dialog, "speedLabel").text(), QtText(texts::SpeedLabel));
  names.item(2)->setText("../drei.wav");
  {
    const NextMessage message;
    Press(dialog, "okButton");
    EXPECT_EQ(message.Text(), QtText(texts::NameHasDirectory));
  }
  EXPECT_TRUE(dialog.isVisible());
  names.item(2)->setText("Drei.wav");
  Press(dialog, "okButton");
  EXPECT_EQ(dialog.Parameters().NameOf(3), "Drei.wav");
  EXPECT_EQ(dialog.Parameters().speed, 2);
  EXPECT_FALSE(Enabled<QAbstractButton>(dialog, "encodeButton"));
}

QStringList Values(QDialog& dialog) {
  QStringList values;
  auto& rows = Child<QFormLayout>(dialog, "rows");
  for (int row = 0; row < rows.rowCount(); ++row)
    values << qobject_cast<QLabel*>(rows.itemAt(row, QFormLayout::FieldRole)->widget())->text();
  return values;
}

class DriveDialogTest : public testing::Test {
 protected:
  const test::Home home_;
  test::TemporaryDirectory place_;
  RecordingHost host_;
};

TEST_F(DriveDialogTest, ATrackAndThePauseBeforeIt) {
  ASSERT_EQ(InsertVirtualDisc(test::DataPath("cd/three_tracks.cue")), Outcome::Success);
  QStringList before;
  QStringList after;
  InNext<TrackInfoDialog>([&](TrackInfoDialog& dialog) {
    EXPECT_EQ(dialog.windowTitle(), "Eigenschaften von Track 2");
    before = Values(dialog);
    Press(dialog, "pauseButton");
    after = Values(dialog);
    dialog.accept();
  });
  ShowTrackInformation(VirtualCdDirectory(), 2, host_, nullptr);
  ASSERT_GE(before.size(), 6);
  EXPECT_EQ(before[0], QtText(texts::TrackAudio));
  EXPECT_EQ(before[5], "0 (?)");
  EXPECT_NE(after[5], before[5]);
  const NextMessage message;
  ShowTrackInformation(VirtualCdDirectory(), 9, host_, nullptr);
  EXPECT_EQ(message.Text(), QtText(texts::TrackInfoFailed));
}

TEST_F(DriveDialogTest, ErasingIsForRewritableDiscs) {
  for (const bool rewritable : {true, false}) {
    ASSERT_EQ(InsertBlankDisc(place_.File(rewritable ? "rw" : "r"), 74, rewritable), Outcome::Success);
    EraseDialog dialog(VirtualRecorderDirectory(), host_, nullptr);
    dialog.show();
    EXPECT_EQ(Child<QPushButton>(dialog, "okButton").text(), "Löschen");
    Child<QCheckBox>(dialog, "ejectCheck").setChecked(true);
    Press(dialog, "okButton");
    static_cast<QDialog&>(dialog).reject();
    EXPECT_TRUE(dialog.isVisible()) << "it cannot be cancelled";
    ASSERT_TRUE(WaitFor([&] { return Enabled<QPushButton>(dialog, "okButton"); }));
    EXPECT_EQ(Child<QLabel>(dialog, "statusLabel").text(),
              QtText(rewritable ? texts::EraseDone : texts::EraseFailed));
    Press(dialog, "okButton");
    EXPECT_EQ(ReadRecorderTray().open, rewritable) << "ejected after success only";
  }
  EraseDialog none(place_.File("weg"), host_, nullptr);
  none.show();
  Press(none, "okButton");
  ASSERT_TRUE(WaitFor([&] { return Enabled<QPushButton>(none, "okButton"); }));
  EXPECT_EQ(Child<QLabel>(none, "statusLabel").text(), QtText(texts::RemarkDriveNotOpened));
}

}  // namespace
}  // namespace ts5::disc
