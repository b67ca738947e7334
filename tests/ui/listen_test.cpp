// Hearing files at once from the list: what sounds, what stays as it is, and what is said where nothing can.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "app/listen/listener.h"
#include "frame/ui/practice_panel.h"
#include "platform/files/files.h"
#include "platform/sound/synthesizer.h"
#include "support/accessible.h"
#include "workbench_support.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;

// Whether a wave file has anything but silence.
bool HasSound(const std::string& path) {
  const auto bytes = ReadFile(path);
  constexpr std::size_t kHeader = 44;
  return bytes && bytes->size() > kHeader &&
         std::any_of(bytes->begin() + kHeader, bytes->end(), [](std::uint8_t b) { return b != 0; });
}

class ListenTest : public WorkbenchTest {
 protected:
  ListenTest() {
    options_.devices->audioOutputs = {"wave:" + out_};
    options_.devices->midiOutputs = {"wave:" + out_};
  }
  void SetUp() override {
    if (Synthesizer::InstalledSoundFont().empty()) GTEST_SKIP() << "no sound font on this machine";
  }
  void Open(const std::vector<std::string>& files) {
    Start();
    ToListMode();
    Drop(files);
  }
  [[nodiscard]] FileView* Files() { return W().Source().Files(); }
  [[nodiscard]] Listener& Sound() { return W().Listening().Sound(); }
  template <typename T>
  [[nodiscard]] T* Part(const char* name) {
    return W().Listening().Bar()->findChild<T*>(name);
  }
  void PressIn(Qt::Key key) { QTest::keyClick(Files(), key); }
  [[nodiscard]] bool WaitForSound() {
    return WaitFor([this] { return Sound().Control() && !Sound().Control()->Status().title.empty(); });
  }
  [[nodiscard]] bool WaitForEnd() {
    return WaitFor([this] { return !Sound().Busy(); });
  }

  std::string out_ = directory_.File("gehört.wav");
};

TEST_F(ListenTest, EnterPlaysTheFileUnderTheCursorAndNothingElseChanges) {
  Open({WriteMidi("eins.mid"), WriteMidi("zwei.mid")});
  Select({1});
  const FreeFileList before = ActiveJob().files;
  EXPECT_FALSE(W().Listening().Bar()->isVisible());
  PressIn(Qt::Key_Return);
  ASSERT_TRUE(WaitForSound());
  EXPECT_TRUE(W().Listening().Bar()->isVisible());
  EXPECT_EQ(Part<QLabel>("listenTitle")->text(), "zwei.mid");
  EXPECT_EQ(ActiveJob().State(), RunState::Idle);
  EXPECT_EQ(ActiveJob().files, before);
  EXPECT_TRUE(Files()->isEnabled()) << "one goes on looking for files";
  ASSERT_TRUE(WaitForEnd());
  EXPECT_TRUE(HasSound(out_));
}

TEST_F(ListenTest, TheNextDoubleClickPlaysTheNextAndStopEndsIt) {
  Open({WriteMidi("eins.mid"), test::DataPath("../../demo/Bruder Jakob.stv")});
  const auto click = [this](int row) {
    const QPoint place = Files()->visualRect(Files()->model()->index(row, 0)).center();
    QTest::mouseClick(Files()->viewport(), Qt::LeftButton, {}, place);
    QTest::mouseDClick(Files()->viewport(), Qt::LeftButton, {}, place);
  };
  click(0);
  ASSERT_TRUE(WaitForSound());
  click(1);
  ASSERT_TRUE(WaitFor([this] {
    return Sound().Control() && Sound().Control()->Status().title.ends_with("Bruder Jakob.stv");
  }));
  const PlayerStatus status = Sound().Control()->Status();
  ASSERT_NE(status.score, nullptr);
  EXPECT_GE(status.score->bars.size(), 8U);
  Part<QToolButton>("listenStop")->click();
  ASSERT_TRUE(WaitForEnd());
  EXPECT_TRUE(W().Listening().Bar()->isVisible());
  Part<QToolButton>("listenStop")->click();
  EXPECT_FALSE(W().Listening().Bar()->isVisible());
}

TEST_F(ListenTest, PracticeHoldsAtOnceAndIsRememberedForTheFile) {
  Open({test::DataPath("../../demo/Bruder Jakob.stv")});
  Select({0});
  PressIn(Qt::Key_Return);
  ASSERT_TRUE(WaitForSound());
  Part<QToolButton>("listenPractise")->click();
  ASSERT_TRUE(WaitFor([this] { return Part<QSlider>("practiceSpeed")->isEnabled(); }));
  Part<QSlider>("practiceSpeed")->setValue(60);
  Part<QSpinBox>("practiceShift")->setValue(-3);
  Part<QToolButton>("practiceFrom")->click();
  Part<QToolButton>("practiceTo")->click();
  const Practice practice = Sound().Control()->GetPractice();
  EXPECT_EQ(practice.speed, 60);
  EXPECT_EQ(practice.shift, -3);
  ASSERT_TRUE(practice.passage);
  EXPECT_EQ(practice.passage->from, 0s) << "the first bar";
  QMenu* const tracks = Part<QToolButton>("practiceTracks")->menu();
  tracks->popup({});
  QTest::keyClick(tracks, Qt::Key_Escape);
  EXPECT_FALSE(tracks->isVisible());
  EXPECT_TRUE(Sound().Busy()) << "Esc closes the menu of the tracks, not the title";
  PressIn(Qt::Key_Escape);
  ASSERT_TRUE(WaitForEnd());

  Open({test::DataPath("../../demo/Bruder Jakob.stv")});  // another day
  Select({0});
  PressIn(Qt::Key_Enter);
  ASSERT_TRUE(WaitForSound());
  EXPECT_EQ(PracticeText(Sound().Control()->GetPractice()), PracticeText(practice));
  EXPECT_TRUE(WaitFor([this] { return Part<PracticePanel>("practicePanel")->isVisible(); }))
      << "one sees why it is slow";
  for (const int width : {900, 1800}) {
    W().resize(width, 600);
    QApplication::processEvents();
    EXPECT_GE(Part<QSlider>("listenPosition")->width(), 90) << width;
    EXPECT_THAT(NamelessControls(*W().Listening().Bar()), testing::IsEmpty());
    EXPECT_THAT(UnreachableControls(*W().Listening().Bar()), testing::IsEmpty());
    EXPECT_TRUE(WaitFor([this] { return ClippedTexts(*W().Listening().Bar()).isEmpty(); }))
        << ClippedTexts(*W().Listening().Bar()).join(", ").toStdString();
  }
}

TEST_F(ListenTest, VolumeIsKeptAndWhatIsNoMusicIsSaid) {
  Open({directory_.Write("kaputt.mid", "MThd"), WriteMidi("gut.mid")});
  Select({0});
  PressIn(Qt::Key_Return);
  ASSERT_TRUE(WaitFor([this] { return Part<QLabel>("listenTitle")->text().contains("nicht abgespielt"); }));
  EXPECT_TRUE(Part<QSlider>("listenPosition")->isHidden());
  Select({1});
  PressIn(Qt::Key_Return);
  ASSERT_TRUE(WaitForSound()) << "the next file plays";
  EXPECT_FALSE(Part<QSlider>("listenPosition")->isHidden());
  Part<QSlider>("listenVolume")->setValue(-20);
  EXPECT_EQ(Sound().Control()->Sound().volume, -2000);
  Start();
  EXPECT_EQ(Part<QSlider>("listenVolume")->value(), -20);
}

TEST_F(ListenTest, DevicesThatComeLaterAreFound) {
  SoundPlaces places;
  Listener listener(&FindModule, [&places] { return places; });
  QString refused;
  QObject::connect(&listener, &Listener::Refused, [&refused](const QString& why) { refused = why; });
  const FileListEntry midi{.path = WriteMidi("eins.mid")};
  const auto play = [&](const FileListEntry& entry) {
    refused.clear();
    listener.Play(entry, {});
    return WaitFor([&] { return !listener.Busy(); });
  };
  ASSERT_TRUE(play(midi));
  EXPECT_EQ(refused, QtText(texts::ListenNoSound));
  places.audio = "wave:" + out_;
  ASSERT_TRUE(play(midi));
  EXPECT_EQ(refused, QtText(texts::ListenNoSoundFont));
  // One that went away since it was found.
  places.midi = "Keyboard, das es nicht gibt";
  ASSERT_TRUE(play(midi));
  EXPECT_EQ(refused, QtText(texts::ListenNoSound));
  places.midi = places.audio;
  ASSERT_TRUE(play(midi));
  EXPECT_EQ(refused, QString());
  EXPECT_TRUE(HasSound(out_));
  ASSERT_TRUE(play({.path = directory_.Write("bild.png", "")}));
  EXPECT_EQ(refused, QtText(texts::ListenNoPlayer));
}

TEST_F(ListenTest, NewSoundDevicesStandBehindTheOthers) {
  Start();
  const std::vector<std::string> known = application_->Devices().audioOutputs;
  EXPECT_FALSE(application_->AddSoundDevices({.audioOutputs = known}));
  EXPECT_TRUE(
      application_->AddSoundDevices({.audioOutputs = {"Kopfhörer", known[0]}, .midiOutputs = {"Piano"}}));
  EXPECT_EQ(application_->Devices().audioOutputs, (std::vector<std::string>{known[0], "Kopfhörer"}));
  EXPECT_EQ(application_->Devices().midiOutputs.back(), "Piano");
}

}  // namespace
}  // namespace ts5
