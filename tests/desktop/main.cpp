#include <gtest/gtest.h>

#include <QApplication>
#include <QSettings>
#include <cstdlib>

#include "support/tempfolder.h"

int main(int argc, char** argv) {
  testing::InitGoogleTest(&argc, argv);
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const testsupport::TempFolder home;
  QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, home.Path().c_str());
  QApplication application(argc, argv);
  QApplication::setOrganizationName("morvunp");
  QApplication::setApplicationName("morvunp-desktop-tests");
  return RUN_ALL_TESTS();
}
