// How long it takes from the first line of main to a usable main window, without the second in which the
// splash shows its last text, and the memory that the program holds then. One line, in milliseconds and MiB.
#include <QApplication>
#include <QElapsedTimer>
#include <QTemporaryDir>
#include <cstdio>
#include <ctime>
#include <fstream>
#include <string>

#include "app/look/appearance.h"
#include "app/look/toolkit_texts.h"
#include "app/shell/main_window.h"
#include "app/texts.h"
#include "frame/ui/qt_text.h"
#include "resources/icons.h"

namespace {

// Resident memory of this process, in MiB.
double ResidentMemory() {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) return std::stod(line.substr(6)) / 1024;
  }
  return 0;
}

}  // namespace

int main(int argc, char** argv) {
  using namespace ts5;
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QElapsedTimer time;
  time.start();
  QApplication qt(argc, argv);
  InitializeResources();
  InstallToolkitTexts(qt);
  const QTemporaryDir directory;
  StartOptions options;
  options.registryPath = FromQt(directory.filePath("registry.sqlite"));
  Application application(options);
  ApplyAppearance(qt, application.GetSettings().skinLayout, false);
  MainWindow window(application);
  window.Begin();
  window.show();
  while (window.GetDesk().Prompt() != QtText(texts::StatusReady)) QApplication::processEvents();
  QApplication::processEvents();
  // The processor's time beside it, which other programs on the machine do not lengthen.
  std::printf("start: %lld ms to a usable window (%.0f ms of the processor), %.1f MiB resident\n",
              static_cast<long long>(time.elapsed()),
              1000.0 * static_cast<double>(std::clock()) / CLOCKS_PER_SEC, ResidentMemory());
  window.EndWithoutQuestion();
  return 0;
}
