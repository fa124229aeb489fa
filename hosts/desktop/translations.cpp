#include "hosts/desktop/translations.h"

#include <QLibraryInfo>
#include <QTranslator>

namespace desktop {

void InstallTranslations(QCoreApplication& application, const QLocale& locale,
                         const QString& folder) {
  const auto install = [&](const QString& name, const QString& place) {
    auto* const translator = new QTranslator(&application);
    const bool isThere = translator->load(locale, name, "_", place);
    if (isThere) application.installTranslator(translator);
    return isThere;
  };
  install("qtbase", QLibraryInfo::path(QLibraryInfo::TranslationsPath));
  // Beside a program that was built and not installed.
  if (!install("morvunp-desktop", folder + "/translations")) {
    install("morvunp-desktop", folder + "/" + MORVUNP_TRANSLATIONS);
  }
}

}  // namespace desktop
