// The program's texts in the user's language.
#pragma once

#include <QCoreApplication>
#include <QLocale>

namespace desktop {

/// Qt's own texts and this program's, where there are any in the language of
/// `locale`. `folder` is that of the program.
void InstallTranslations(QCoreApplication& application, const QLocale& locale,
                         const QString& folder);

}  // namespace desktop
