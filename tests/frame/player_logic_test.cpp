#include <gmock/gmock.h>

#include <array>
#include <cmath>
#include <vector>

#include "frame/level_meter.h"
#include "frame/playback_form.h"
#include "frame/player_control.h"
#include "frame/player_parameters.h"
#include "platform/base/strings.h"

namespace ts5 {
namespace {

using namespace std::chrono_literals;

TEST(PlaybackForm, KeysMoveThePosition) {
  EXPECT_EQ(PositionStep(PositionKey::Right, false), 10ms);
  EXPECT_EQ(PositionStep(PositionKey::Left, true), -100ms);
  EXPECT_EQ(PositionStep(PositionKey::PageUp, false), 1s);
  EXPECT_EQ(PositionStep(PositionKey::PageDown, true), -10s);
}

TEST(PlaybackForm, ShowsTimesAndRules) {
  EXPECT_EQ(PositionText(83'007ms, {}, true), "01:23:007");
  EXPECT_EQ(PositionText(83'007ms, BarBeat{12, 3}, true), "12/3");
  EXPECT_EQ(PositionText(83'007ms, BarBeat{12, 3}, false), "01:23:007");

  PlayerOptions options;
  options.shortPlay = true;
  options.volume = -1250;
  options.balance = -3000;
  PlaybackForm form = PlaybackFormOf(FilterId::MidiPlayer, options, RunState::Idle, {});
  EXPECT_TRUE(form.optionsEnabled && form.shortSecondsEnabled && form.barsEnabled);
  EXPECT_FALSE(form.positionEnabled || form.meterShown);
  EXPECT_EQ(form.title, "Kein Playback.");
  EXPECT_EQ(form.elapsed, "00:00");
  EXPECT_EQ(form.volume, "-12 dB");
  EXPECT_EQ(form.balance, "links 30 %");
  EXPECT_TRUE(form.playEnabled);
  EXPECT_FALSE(PlaybackFormOf(FilterId::MidiPlayer, options, RunState::Waiting, {}).playEnabled);
  const PlayerStatus playing{.title = "/lieder/a.mid", .position = 1s, .duration = 2min};
  form = PlaybackFormOf(FilterId::AudioPlayer, options, RunState::Paused, playing);
  EXPECT_FALSE(form.optionsEnabled || form.shortSecondsEnabled || form.barsEnabled);
  EXPECT_TRUE(form.positionEnabled && form.meterShown);
  EXPECT_EQ(form.title, "a.mid");
  EXPECT_EQ(form.duration, "02:00:000");
}

TEST(PlayerControl, OrdersAreGivenOnceAndAddUp) {
  PlayerControl control;
  control.Seek(5s);
  EXPECT_FALSE(control.Take(0ms).seek) << "nothing plays";
  control.Report({.title = "a", .position = 10s, .duration = 60s});
  control.Move(-1s);
  control.Move(-1s);
  control.TogglePause();
  PlayerOrders orders = control.Take(0ms);
  EXPECT_EQ(orders.seek, 8s);
  EXPECT_TRUE(orders.togglePause);
  orders = control.Take(0ms);
  EXPECT_FALSE(orders.seek || orders.togglePause);
  control.TogglePause();
  control.TogglePause();
  control.Seek(10h);
  orders = control.Take(0ms);
  EXPECT_FALSE(orders.togglePause);
  EXPECT_EQ(orders.seek, 60s);
  control.ReportWaveform("b", std::make_shared<Waveform>());
  EXPECT_EQ(control.Status().waveform, nullptr) << "of a title that is over";
}

TEST(PlayerParameters, AreStoredUnderTheirNamesAndWhatIsOutOfRangeDoesNotCount) {
  FieldTable<PlayerParameters> table;
  AddPlayerFields(table);
  const auto fields = table.Build();
  RegistryValues values;
  for (const auto& [name, text] : {std::pair{"FilterVolume", "-10001"},
                                   {"FilterBalance", "-500"},
                                   {"FilterInterval", "7"},
                                   {"KurzAnspielen?", "1"},
                                   {"Anspielzeit", "25"},
                                   {"ResultDialog", "1"},
                                   {"ShowTimeInBars", "0"}})
    values.SetText(name, text);
  PlayerParameters parameters;
  for (const ParameterField& field : fields) field.load(parameters, values);
  EXPECT_EQ(parameters.volume, 0);
  EXPECT_EQ(parameters.balance, -500);
  EXPECT_EQ(parameters.Pause(), 7s);
  EXPECT_TRUE(parameters.shortPlay && parameters.resultDialog && !parameters.timeInBars);
  EXPECT_EQ(parameters.shortSeconds, 25);
}

TEST(LevelMeter, MeasuresPeakAndRms) {
  LevelTap tap;
  std::vector<float> stereo;
  for (int i = 0; i < 48'000 * 3; ++i) {
    stereo.push_back(0.5F * std::sin(static_cast<float>(i) * 0.05F));
    stereo.push_back(i == 70'000 ? -1.2F : 0.0F);
  }
  for (std::size_t at = 0; at < stereo.size(); at += 960)
    tap.Add(std::span(stereo).subspan(at, 960), 2, 48'000);
  const LevelReading reading = tap.Take();
  EXPECT_NEAR(Decibels(reading.peak[0]), -6.02, 0.02);
  EXPECT_NEAR(Decibels(reading.rms[0]), -9.03, 0.1);
  EXPECT_FLOAT_EQ(reading.peak[1], 1.2F);
  EXPECT_EQ(tap.Take().peak[0], 0) << "since the last reading";
  const std::array<float, 4> mono{0.25F, -0.5F, 0.1F, 0};
  tap.Add(mono, 1, 48'000);
  EXPECT_FLOAT_EQ(tap.Take().peak[1], 0.5F) << "mono counts for both";
}

TEST(LevelMeter, HoldsAndFalls) {
  EXPECT_DOUBLE_EQ(MeterPlace(0), 1);
  EXPECT_DOUBLE_EQ(MeterPlace(-30), 0.5);
  EXPECT_DOUBLE_EQ(MeterPlace(-100), 0);
  MeterBallistics meter;
  EXPECT_FALSE(meter.Update({}, 16ms)) << "silence changes nothing";
  LevelReading loud;
  loud.peak = {1, 0.1F};
  EXPECT_TRUE(meter.Update(loud, 16ms));
  EXPECT_DOUBLE_EQ(meter.Levels()[0].peak, 0);
  EXPECT_TRUE(meter.Levels()[0].over);
  EXPECT_FALSE(meter.Levels()[1].over);
  meter.Update({}, 1s);
  EXPECT_NEAR(meter.Levels()[0].peak, -20, 1e-6);
  EXPECT_NEAR(meter.Levels()[0].hold, 0, 1e-6) << "held";
  meter.Update({}, 1s);
  EXPECT_NEAR(meter.Levels()[0].hold, -20, 1e-6) << "falls after a second and a half";
  for (int i = 0; i < 10; ++i) meter.Update({}, 1s);
  EXPECT_DOUBLE_EQ(meter.Levels()[0].hold, kMeterFloor);
  EXPECT_FALSE(meter.Update({}, 1s));
}

}  // namespace
}  // namespace ts5
