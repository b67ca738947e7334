// stavora-ts5: the desktop workbench.
//
//   stavora-ts5 [FILE.sts]     the file list to begin with
//   stavora-ts5 FILE...        music files for the free file list
//   stavora-ts5 DIRECTORY      the source to begin with
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
constexpr int kWrongUsage = 2;

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

// Where none of these says so, the toolkit finds no display, and breaks off.
bool HasDisplay(int argc, char** argv) {
  const auto set = [](const char* name) {
    const char* const value = std::getenv(name);
    return value != nullptr && *value != '\0';
  };
  return set("DISPLAY") || set("WAYLAND_DISPLAY") || set("QT_QPA_PLATFORM") ||
         std::any_of(argv, argv + argc,
                     [](std::string_view word) { return word == "-platform" || word == "--platform"; });
}

// The files of the command line, behind the options that the toolkit has taken; nothing after saying which
// one nobody knows.
std::optional<std::vector<std::string>> FilesOf(const QStringList& words) {
  using namespace ts5;
  std::vector<std::string> files;
  bool options = true;
  for (const QString& word : words) {
    if (options && word == "--") {
      options = false;
    } else if (options && word.startsWith('-')) {
      std::cerr << Format(Text(texts::StartUnknownOption), FromQt(word)) << '\n';
      return std::nullopt;
    } else {
      files.push_back(FromQt(QFileInfo(word).absoluteFilePath()));
    }
  }
  return files;
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
  if (!HasDisplay(argc, argv)) {
    std::cerr << Text(texts::StartNoDisplay) << '\n';
    return EXIT_FAILURE;
  }
  TurnWriteSignalsIntoErrors();
  QApplication qt(argc, argv);
  QApplication::setApplicationName("stavora-ts5");
  QApplication::setDesktopFileName("stavora-ts5");
  InitializeResources();
  InstallToolkitTexts(qt);
  QApplication::setWindowIcon(Icon("stavora-ts5"));

  const auto files = FilesOf(QApplication::arguments().mid(1));
  if (!files) return kWrongUsage;
  const std::string registry = DefaultRegistryPath();
  SingleInstance instance(registry);
  if (!instance.Claim(*files)) return 0;

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
  if (files->empty()) {
    splash->ShowStep(Text(texts::StartDone));
    QTimer::singleShot(kLastSplashMilliseconds, &window, begin);
  } else {
    begin();
    window.OpenAtStart(*files);
  }
  const int status = QApplication::exec();
  if (application.RunsLeft()) std::_Exit(status);
  return status;
}
