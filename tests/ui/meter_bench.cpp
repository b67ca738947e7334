// What the playback window costs while a title plays, with its meter and its position 60 times a second: the
// processor's time in per cent of one core, drawn into memory without a display.
#include <QApplication>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <thread>

#include "app/appearance.h"
#include "dialogs_support.h"
#include "frame/ui/playback_window.h"
#include "resources/icons.h"

int main(int argc, char** argv) {
  using namespace ts5;
  using namespace std::chrono_literals;
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication qt(argc, argv);
  InitializeResources();
  ApplyAppearance(qt, SkinLayout::Stavora5, false);
  RecordingHost host;
  PlayerOptions options;
  const auto run = std::make_shared<JobRun>();
  run->state = RunState::Running;
  auto waveform = std::make_shared<Waveform>(1200);
  for (std::size_t i = 0; i < waveform->size(); ++i)
    (*waveform)[i] = std::abs(std::sin(static_cast<float>(i)));
  run->player.Report({.title = "/a/lied.wav", .duration = 300s, .waveform = waveform});
  PlaybackWindow window({.filter = FilterId::AudioPlayer,
                         .title = "Probe",
                         .run = run,
                         .options = [&] { return &options; },
                         .play = {},
                         .stop = {}},
                        host, nullptr);
  window.show();
  QApplication::processEvents();

  // Half a second of samples, over and over, at the pace of a device.
  constexpr int kSeconds = 5;
  std::vector<float> block(2 * 735);
  const std::clock_t before = std::clock();
  const auto start = std::chrono::steady_clock::now();
  for (int tick = 0; tick < kSeconds * 60; ++tick) {
    for (std::size_t i = 0; i < block.size(); ++i)
      block[i] = std::sin(static_cast<float>(i + static_cast<std::size_t>(tick))) *
                 std::abs(std::sin(static_cast<float>(tick) * 0.05F));
    run->player.Levels().Add(block, 2, 44100);
    run->player.ReportPosition(tick * 16'667us, {}, false);
    const auto next = start + (tick + 1) * 16'667us;
    while (std::chrono::steady_clock::now() < next) {
      QApplication::processEvents(QEventLoop::AllEvents, 1);
      std::this_thread::sleep_for(500us);
    }
  }
  const double used = static_cast<double>(std::clock() - before) / CLOCKS_PER_SEC;
  std::printf("meter: %.1f %% of one core at 60 redraws a second\n", 100 * used / kSeconds);
  return 0;
}
