// The window of the players: what the user does reaches the run.
#include "frame/ui/playback_window.h"

#include <gmock/gmock.h>

#include <QTest>

#include "dialogs_support.h"
#include "frame/ui/level_meter_widget.h"
#include "frame/ui/position_slider.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;

class PlaybackWindowTest : public testing::Test {
 protected:
  std::unique_ptr<PlaybackWindow> Open(FilterId filter) {
    return std::make_unique<PlaybackWindow>(
        PlaybackWindow::Subject{.filter = filter,
                                .title = "Probe",
                                .run = run_,
                                .options = [this] { return gone_ ? nullptr : &options_; },
                                .play = [this] { ++plays_; },
                                .stop = [this] { ++stops_; }},
        host_, nullptr);
  }
  void Playing() {
    run_->state = RunState::Running;
    run_->player.Report({.title = "/a/lied.mid", .position = 10s, .duration = 60s});
  }

  RecordingHost host_;
  std::shared_ptr<JobRun> run_ = std::make_shared<JobRun>();
  PlayerOptions options_;
  bool gone_ = false;
  int plays_ = 0;
  int stops_ = 0;
};

TEST_F(PlaybackWindowTest, OptionsGoIntoTheJobAtOnceAndCanBeChangedWhileStoppedOnly) {
  const auto window = Open(FilterId::MidiPlayer);
  window->show();
  EXPECT_EQ(window->windowTitle(), "Playback-Parameter [Probe]");
  EXPECT_FALSE(Child<QSpinBox>(*window, "shortBox").isEnabled());
  Child<QSpinBox>(*window, "pauseBox").setValue(4);
  Child<QCheckBox>(*window, "shortCheck").setChecked(true);
  Child<QCheckBox>(*window, "resultsCheck").setChecked(true);
  Child<QAbstractButton>(*window, "minutesRadio").setChecked(true);
  EXPECT_EQ(options_.interval, 4);
  EXPECT_TRUE(options_.shortPlay && options_.resultDialog && !options_.timeInBars);
  EXPECT_TRUE(QTest::qWaitFor([&] { return Child<QSpinBox>(*window, "shortBox").isEnabled(); }));
  Playing();
  EXPECT_TRUE(QTest::qWaitFor([&] { return !Child<QWidget>(*window, "PLAYBACK1").isEnabled(); }));
  EXPECT_EQ(Child<QLabel>(*window, "fileLabel").text(), "lied.mid");
  EXPECT_EQ(Child<QAbstractButton>(*window, "playButton").text(), "Pause");
  Child<QAbstractButton>(*window, "playButton").click();
  Child<QAbstractButton>(*window, "stopButton").click();
  EXPECT_EQ(plays_ + stops_, 2);
  gone_ = true;
  EXPECT_TRUE(QTest::qWaitFor([&] { return !window->isVisible(); })) << "the job has gone";
}

TEST_F(PlaybackWindowTest, VolumeBalanceAndPositionReachThePlayer) {
  const auto window = Open(FilterId::AudioPlayer);
  window->show();
  Playing();
  auto* slider = window->findChild<PositionSlider*>();
  ASSERT_NE(slider, nullptr);
  ASSERT_TRUE(QTest::qWaitFor([&] { return slider->value() == 10'000; }));
  (void)run_->player.Take(0ms);
  Child<QSlider>(*window, "volumeSlider").setValue(-12);
  Child<QSlider>(*window, "balanceSlider").setValue(30);
  EXPECT_EQ(run_->player.Sound(), (PlayerSound{-1200, 3000}));
  EXPECT_EQ(options_.volume, -1200);
  EXPECT_TRUE(run_->player.Take(0ms).sound);

  slider->setFocus();
  QTest::keyClick(slider, Qt::Key_Right, Qt::ControlModifier);
  EXPECT_EQ(run_->player.Take(0ms).seek, 10'100ms);
  QTest::keyClick(slider, Qt::Key_PageDown);
  EXPECT_EQ(run_->player.Take(0ms).seek, 9s);
  Child<QSlider>(*window, "volumeSlider").clearFocus();
  QTest::keyClick(window.get(), Qt::Key_PageUp, Qt::ControlModifier);
  EXPECT_EQ(run_->player.Take(0ms).seek, 20s) << "wherever the focus is";
  slider->setValue(30'000);
  EXPECT_EQ(run_->player.Take(0ms).seek, 30s);
}

// What is on the screen after many small repaints is what a whole one would show. (A needle is drawn as a
// whole.)
TEST_F(PlaybackWindowTest, TheMeterRepaintsAllThatHasMoved) {
  for (const MeterStyle style : {MeterStyle::Bars, MeterStyle::Segments}) {
    LevelMeterWidget meter;
    meter.resize(400, 70);
    meter.SetStyle(style);
    meter.show();
    LevelTap tap;
    for (int tick = 0; tick < 66; ++tick) {
      // Towards the end the held peak falls as well; then all has other places.
      if (tick == 58) meter.resize(1200, 70);
      if (tick == 62) meter.SetStyle(style == MeterStyle::Bars ? MeterStyle::Segments : MeterStyle::Bars);
      QApplication::processEvents();
      const float loud = tick == 4 ? 1.0F : 0.02F * static_cast<float>(tick % 5);
      tap.Add(std::vector<float>(2 * 512, loud), 2, 44100);
      QTest::qWait(30);
      meter.Advance(tap);
      QApplication::processEvents();
      const QImage shown = meter.screen()->grabWindow(meter.winId()).toImage();
      const QImage whole = meter.grab().toImage();
      ASSERT_EQ(shown.convertToFormat(QImage::Format_RGB32), whole.convertToFormat(QImage::Format_RGB32))
          << static_cast<int>(style) << " at " << tick;
    }
  }
}

TEST_F(PlaybackWindowTest, TheMeterShowsLevelsInEveryStyle) {
  const std::vector<float> loud(2 * 512, 0.8F);
  for (const MeterStyle style : {MeterStyle::Bars, MeterStyle::Segments, MeterStyle::Needle}) {
    LevelMeterWidget meter;
    meter.resize(400, 70);
    meter.show();
    meter.SetStyle(style);
    const QImage silent = meter.grab().toImage();
    LevelTap tap;
    tap.Add(loud, 2, 512);
    meter.Advance(tap);
    EXPECT_NE(meter.grab().toImage(), silent) << static_cast<int>(style);
  }
  LevelMeterWidget meter;
  meter.SetStyle(MeterStyle::Needle);
  QTest::mouseDClick(&meter, Qt::LeftButton);
  EXPECT_EQ(meter.Style(), MeterStyle::Bars);
}

}  // namespace
}  // namespace ts5
