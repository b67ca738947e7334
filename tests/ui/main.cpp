// The tests of the windows run without a display, in German whatever the machine speaks.
#include <gtest/gtest.h>

#include <QApplication>

#include "app/look/appearance.h"
#include "app/look/toolkit_texts.h"
#include "resources/icons.h"
#include "support/home.h"

int main(int argc, char** argv) {
  const ts5::test::OwnEnvironment environment;
  if (!qEnvironmentVariableIsSet("QT_QPA_PLATFORM")) qputenv("QT_QPA_PLATFORM", "offscreen");
  testing::InitGoogleTest(&argc, argv);
  QApplication application(argc, argv);
  ts5::InitializeResources();
  ts5::InstallToolkitTexts(application);
  ts5::ApplyAppearance(application, ts5::SkinLayout::Stavora5, false);
  return RUN_ALL_TESTS();
}
