#include <QApplication>
#include <QCommandLineParser>
#include <QIcon>
#include <QLocale>
#include <cstdlib>

#include "hosts/desktop/mainwindow.h"
#include "hosts/desktop/translations.h"

namespace {

/// The archive that the program is to open; null for none. The bytes as they
/// were given: a name need not be text.
const char* ArchiveArgument(int argc, char** argv) {
  bool isPath = false;
  for (int i = 1; i < argc; ++i) {
    if (isPath || argv[i][0] != '-') return argv[i];
    isPath = QString(argv[i]) == "--";
  }
  return nullptr;
}

}  // namespace

int main(int argc, char** argv) {
  // Unless the zone is named, each conversion of a time looks at its file anew.
  setenv("TZ", ":/etc/localtime", 0);
  QApplication application(argc, argv);
  QApplication::setOrganizationName("morvunp");
  QApplication::setApplicationName("morvunp-desktop");
  QApplication::setApplicationVersion(MORVUNP_VERSION);
  QGuiApplication::setDesktopFileName("morvunp-desktop");
  QGuiApplication::setWindowIcon(QIcon::fromTheme("morvunp-desktop"));
  desktop::InstallTranslations(application, QLocale(), QCoreApplication::applicationDirPath());
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QApplication::translate("main", "Shows and unpacks 7z, cabinet, ISO/UDF and RAR archives."));
  parser.addHelpOption();
  parser.addVersionOption();
  parser.addPositionalArgument("archive", QApplication::translate("main", "The archive to open."),
                               "[archive]");
  parser.process(application);

  desktop::MainWindow window;
  window.show();
  if (const char* const archive = ArchiveArgument(argc, argv)) window.Open(archive);
  return QApplication::exec();
}
