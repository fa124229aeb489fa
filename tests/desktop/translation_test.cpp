// The window in other languages.
#include "hosts/desktop/translations.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QTranslator>

#include "hosts/desktop/mainwindow.h"
#include "hosts/desktop/shown.h"

namespace {

struct Language {
  const char* name;
  const char* quit;
  const char* size;
  const char* selected;
  const char* wrongPassword;
};

void PrintTo(const Language& language, std::ostream* stream) { *stream << language.name; }

class TranslationTest : public testing::TestWithParam<Language> {
 protected:
  void SetUp() override {
    if (!MORVUNP_HAS_TRANSLATIONS) GTEST_SKIP() << "built without Qt's lrelease";
    desktop::InstallTranslations(*qApp, QLocale(GetParam().name), MORVUNP_DESKTOP_FOLDER);
  }
  void TearDown() override { qDeleteAll(qApp->findChildren<QTranslator*>()); }
};

bool HasAction(const desktop::MainWindow& window, const QString& text) {
  for (const auto* const action : window.findChildren<QAction*>()) {
    if (action->text() == text) return true;
  }
  return false;
}

TEST_P(TranslationTest, SpeaksTheLanguage) {
  const desktop::MainWindow window;
  EXPECT_TRUE(HasAction(window, GetParam().quit));
  EXPECT_EQ(desktop::FileModel::tr("Size"), GetParam().size);
  EXPECT_EQ(desktop::MainWindow::tr("%n selected item(s)", nullptr, 2), GetParam().selected);
  EXPECT_EQ(desktop::ShownReason(host::Reason::Of("wrong password")), GetParam().wrongPassword);
}

INSTANTIATE_TEST_SUITE_P(
    Languages, TranslationTest,
    testing::Values(Language{"de_AT", "&Beenden", "Größe", "2 ausgewählte Einträge",
                             "falsches Passwort"},
                    Language{"fr_CA", "&Quitter", "Taille", "2 éléments sélectionnés",
                             "mot de passe incorrect"},
                    Language{"en_GB", "&Quit", "Size", "2 selected items", "wrong password"}),
    [](const auto& language) { return std::string(language.param.name); });

}  // namespace
