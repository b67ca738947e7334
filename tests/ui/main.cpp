// The tests of the windows run without a display, in German whatever the machine speaks. TS5_SCREEN=960x540@2
// gives them a screen of that size, in the dots that windows reckon with, and as many real ones to a dot.
#include <gtest/gtest.h>

#include <QApplication>
#include <QRegularExpression>
#include <QTemporaryFile>
#include <algorithm>

#include "app/look/appearance.h"
#include "app/look/toolkit_texts.h"
#include "resources/icons.h"
#include "support/home.h"

namespace {

// The toolkit reads its screens from a file.
void UseScreen(QTemporaryFile& file) {
  const auto size =
      QRegularExpression("^(\\d+)x(\\d+)(?:@(\\d))?$").match(qEnvironmentVariable("TS5_SCREEN"));
  if (!size.hasMatch() || !file.open()) return;
  const int scale = std::max(size.captured(3).toInt(), 1);
  file.write(QStringLiteral(R"({"screens":[{"name":"S","x":0,"y":0,"width":%1,"height":%2,"logicalDpi":96,)"
                            R"("logicalBaseDpi":96,"dpr":%3}]})")
                 .arg(size.captured(1).toInt())
                 .arg(size.captured(2).toInt())
                 .arg(scale)
                 .toUtf8());
  file.flush();
  qputenv("QT_QPA_PLATFORM", "offscreen:configfile=" + file.fileName().toUtf8());
}

}  // namespace

int main(int argc, char** argv) {
  const ts5::test::OwnEnvironment environment;
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  QTemporaryFile screens;
  UseScreen(screens);
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  ts5::InitializeResources();
  ts5::InstallToolkitTexts(application);
  ts5::ApplyAppearance(application, ts5::SkinLayout::Stavora5, false);
  return RUN_ALL_TESTS();
}
