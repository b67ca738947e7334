// Pictures of every window in the three appearances, light and dark, and of each its tree for screen readers:
//   QT_QPA_PLATFORM=offscreen screenshots DIRECTORY [SCALE]
#include <QApplication>
#include <QDir>
#include <QFile>
#include <QPixmap>
#include <cstdio>

#include "app/look/appearance.h"
#include "app/look/toolkit_texts.h"
#include "dialogs_support.h"
#include "resources/icons.h"
#include "support/accessible.h"
#include "workbench_sample.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "screenshots DIRECTORY [SCALE]\n");
    return 2;
  }
  if (argc > 2) qputenv("QT_SCALE_FACTOR", argv[2]);
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  ts5::InitializeResources();
  ts5::InstallToolkitTexts(application);
  const QDir directory(QString::fromLocal8Bit(argv[1]));
  directory.mkpath(QStringLiteral("."));

  ts5::RecordingHost host;
  const std::pair<ts5::SkinLayout, const char*> layouts[] = {{ts5::SkinLayout::Windows, "windows"},
                                                             {ts5::SkinLayout::Stavora4, "ts4"},
                                                             {ts5::SkinLayout::Stavora5, "ts5"}};
  for (const auto& [layout, layoutName] : layouts) {
    for (const bool dark : {false, true}) {
      ts5::ApplyAppearance(application, layout, dark);
      for (const bool list : {false, true}) {
        ts5::SampleWorkbench workbench(TS5_DEMO, layout, list);
        const QString file = QStringLiteral("hauptfenster-%1-%2-%3.png")
                                 .arg(QLatin1String(list ? "liste" : "verzeichnis"),
                                      QLatin1String(layoutName), QLatin1String(dark ? "dunkel" : "hell"));
        if (!workbench.Window().grab().save(directory.filePath(file))) {
          std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
          return 1;
        }
      }
      for (const ts5::WindowSample& sample : ts5::WindowSamples()) {
        const auto window = sample.make(host);
        window->show();
        QApplication::processEvents();
        QFile tree(directory.filePath(QLatin1String(sample.name) + QStringLiteral(".txt")));
        if (tree.open(QIODevice::WriteOnly))
          tree.write(ts5::AccessibleTree(QAccessible::queryAccessibleInterface(window.get())).toUtf8());
        for (QWidget* const stop : ts5::TabStops(*window)) {
          const QPoint place = stop->mapTo(window.get(), QPoint());
          tree.write(QStringLiteral("Tab %1,%2 %3\n")
                         .arg(place.x())
                         .arg(place.y())
                         .arg(QAccessible::queryAccessibleInterface(stop)->text(QAccessible::Name))
                         .toUtf8());
        }
        const QString file = QStringLiteral("%1-%2-%3.png")
                                 .arg(QLatin1String(sample.name), QLatin1String(layoutName),
                                      QLatin1String(dark ? "dunkel" : "hell"));
        if (!window->grab().save(directory.filePath(file))) {
          std::fprintf(stderr, "cannot write %s\n", qPrintable(file));
          return 1;
        }
      }
    }
  }
  return 0;
}
