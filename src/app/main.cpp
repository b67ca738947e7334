// stavora-ts5: the desktop workbench.
//
//   stavora-ts5 [FILE.sts]     the file list to begin with

#include <QApplication>
#include <QSessionManager>
#include <QTimer>
#include <algorithm>
#include <cstring>
#include <memory>

#include "app/appearance.h"
#include "app/application.h"
#include "app/end_signals.h"
#include "app/main_window.h"
#include "app/splash.h"
#include "app/texts.h"
#include "app/toolkit_texts.h"
#include "frame/texts.h"
#include "frame/ui/qt_text.h"
#include "platform/write_signals.h"
#include "resources/icons.h"

namespace {

constexpr int kLastSplashMilliseconds = 1000;
constexpr int kSplashSteps = 9;

}  // namespace

int main(int argc, char** argv) {
  using namespace ts5;
  TurnWriteSignalsIntoErrors();
  QApplication qt(argc, argv);
  QApplication::setApplicationName("stavora-ts5");
  QApplication::setApplicationDisplayName(QtText(texts::ApplicationTitle));
  QApplication::setDesktopFileName("stavora-ts5");
  InitializeResources();
  InstallToolkitTexts(qt);
  QApplication::setWindowIcon(Icon("stavora-ts5"));

  auto splash = std::make_unique<Splash>(kSplashSteps);
  splash->show();
  Application application({}, [&](TextId step) { splash->ShowStep(Text(step)); });
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
  const QStringList arguments = QApplication::arguments();
  if (arguments.size() > 1) {
    splash.reset();
    window.show();
    window.LoadFileList(FromQt(arguments.at(1)));
  } else {
    splash->ShowStep(Text(texts::StartDone));
    QTimer::singleShot(kLastSplashMilliseconds, &window, [&] {
      window.show();
      splash.reset();
    });
  }
  return QApplication::exec();
}
