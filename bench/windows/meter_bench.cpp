// What the playback window costs while a title plays, with its meter and its position 60 times a second: the
// processor's time of the window's thread in per cent of one core, drawn into memory without a display.
#include <QApplication>
#include <QTimer>
#include <cmath>
#include <cstdio>
#include <ctime>
#include <thread>

#include "app/look/appearance.h"
#include "frame/ui/playback_window.h"
#include "resources/icons.h"
#include "ui/dialogs_support.h"

namespace {

// Processor time of the calling thread.
double ThreadSeconds() {
  timespec time{};
  (void)clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace

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

  // Samples at the pace of a device, from a thread of their own as in a player.
  constexpr int kSeconds = 10;
  std::jthread device([&](const std::stop_token& stop) {
    std::vector<float> block(2 * 735);
    const auto start = std::chrono::steady_clock::now();
    for (int tick = 0; !stop.stop_requested(); ++tick) {
      for (std::size_t i = 0; i < block.size(); ++i)
        block[i] = std::sin(static_cast<float>(i + static_cast<std::size_t>(tick))) *
                   std::abs(std::sin(static_cast<float>(tick) * 0.05F));
      run->player.Levels().Add(block, 2, 44100);
      run->player.ReportPosition(tick * 16'667us, {}, false);
      std::this_thread::sleep_until(start + (tick + 1) * 16'667us);
    }
  });
  const double before = ThreadSeconds();
  QTimer::singleShot(std::chrono::seconds(kSeconds), &qt, &QCoreApplication::quit);
  QApplication::exec();
  std::printf("meter: %.1f %% of one core at 60 redraws a second\n",
              100 * (ThreadSeconds() - before) / kSeconds);
  return 0;
}
