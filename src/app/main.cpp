// stavora-ts5: the desktop workbench.
//
//   stavora-ts5 [FILE.sts]     the file list to begin with
//   stavora-ts5 FILE...        music files for the free file list
//   stavora-ts5 --version|--help   says so and ends, without a display too
//
// Where the workbench runs already, it comes to the front and takes the files.

#include <QApplication>
#include <QFileInfo>
#include <QSessionManager>
#include <QTimer>
#include <algorithm>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <system_error>
#include <vector>

#include "app/look/appearance.h"
#include "app/look/toolkit_texts.h"
#include "app/shell/application.h"
#include "app/shell/end_signals.h"
#include "app/shell/main_window.h"
#include "app/shell/single_instance.h"
#include "app/shell/splash.h"
#include "app/texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/base/text.h"
#include "platform/files/directories.h"
#include "platform/files/music_directory.h"
#include "platform/programs/write_signals.h"
#include "resources/icons.h"

namespace {

constexpr int kLastSplashMilliseconds = 1000;
constexpr int kSplashSteps = 9;

// What is answered without a window; nothing when the workbench is to start.
std::optional<int> AnswerOnTerminal(int argc, char** argv) {
  using namespace ts5;
  for (int i = 1; i < argc; ++i) {
    const std::string_view word = argv[i];
    if (word == "--") break;
    if (word == "--version") {
      std::cout << Format(Text(texts::StartVersion), Text(texts::ApplicationTitle), TS5_VERSION) << '\n';
      return 0;
    }
    if (word == "--help" || word == "-h") {
      std::cout << Text(texts::StartUsage) << '\n';
      return 0;
    }
  }
  return std::nullopt;
}

// What has a name alone, as tracks of a CD have, is made in the current directory: not where the program
// happened to be started, but where its user looks. Paths of the command line are whole by now.
void GoWhereMusicIs() {
  const std::string music = ts5::MusicDirectory();
  std::error_code stays;
  std::filesystem::current_path(music.empty() ? ts5::HomeDirectory() : music, stays);
}

}  // namespace

int main(int argc, char** argv) {
  using namespace ts5;
  if (const auto status = AnswerOnTerminal(argc, argv)) return *status;
  TurnWriteSignalsIntoErrors();
  QApplication qt(argc, argv);
  QApplication::setApplicationName("stavora-ts5");
  QApplication::setDesktopFileName("stavora-ts5");
  InitializeResources();
  InstallToolkitTexts(qt);
  QApplication::setWindowIcon(Icon("stavora-ts5"));

  std::vector<std::string> files;
  for (const QString& argument : QApplication::arguments().mid(1))
    files.push_back(FromQt(QFileInfo(argument).absoluteFilePath()));
  const std::string registry = DefaultRegistryPath();
  SingleInstance instance(registry);
  if (!instance.Claim(files)) return 0;

  auto splash = std::make_unique<Splash>(kSplashSteps);
  splash->show();
  GoWhereMusicIs();
  Application application({.registryPath = registry}, [&](TextId step) { splash->ShowStep(Text(step)); });
  const SkinLayout layout = application.GetSettings().skinLayout;
  ApplyAppearance(qt, layout, DesktopIsDark());
  FollowDesktop(qt, layout);
  MainWindow window(application);
  EndSignals endSignals([&] {
    window.EndWithoutQuestion();
    QCoreApplication::exit();  // also out of the loops of dialogs that wait for an answer
  });
  QObject::connect(&qt, &QGuiApplication::commitDataRequest, &window, [&] { window.EndWithoutQuestion(); });

  window.Begin();
  const auto begin = [&] {
    window.show();
    splash.reset();
    window.ShowNotices();
    instance.Listen([&](const std::vector<std::string>& more) {
      window.ComeToFront();
      window.OpenFiles(more);
    });
  };
  if (files.empty()) {
    splash->ShowStep(Text(texts::StartDone));
    QTimer::singleShot(kLastSplashMilliseconds, &window, begin);
  } else {
    begin();
    window.OpenAtStart(files);
  }
  const int status = QApplication::exec();
  if (application.RunsLeft()) std::_Exit(status);
  return status;
}
