// The desktop program's windows as a user drives them.
#include "hosts/desktop/mainwindow.h"

#include <gtest/gtest.h>

#include <QAction>
#include <QDropEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QMessageBox>
#include <QMimeData>
#include <QProgressBar>
#include <QSettings>
#include <QTreeView>
#include <filesystem>
#include <map>

#include "desktop/script.h"
#include "hosts/desktop/elidedlabel.h"
#include "hosts/desktop/librarydialog.h"
#include "hosts/desktop/outcomewindow.h"
#include "hosts/desktop/progresswindow.h"
#include "hosts/desktop/unpackdialog.h"
#include "support/isobuilder.h"
#include "support/tempfolder.h"

namespace {

using desktop::LibraryDialog;
using desktop::OutcomeWindow;
using desktop::ProgressWindow;
using desktop::UnpackDialog;
using testsupport::Click;
using testsupport::IsoBuilder;
using testsupport::Script;
using testsupport::TempFolder;
using testsupport::TreeOf;
using testsupport::WriteFile;

using Tree = std::map<std::string, std::string>;
constexpr std::size_t kLargeSize = std::size_t{48} << 20;

class MainWindowTest : public testing::Test {
 protected:
  void SetUp() override {
    QSettings().clear();
    window_.show();
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window_));
  }

  std::string MakeImage() const {
    IsoBuilder builder;
    builder.Root().AddFile("A.TXT;1", "alpha");
    builder.Root().AddFile("B.TXT;1", "beta");
    auto& docs = builder.Root().AddFolder("DOCS");
    docs.AddFile("C.TXT;1", std::string(1234, 'c'));
    docs.AddFolder("DEEP").AddFile("D.TXT;1", "delta");
    WriteFile(folder_.Path("test.iso"), builder.Build());
    return folder_.Path("test.iso");
  }
  std::string MakeLargeImage() const {
    IsoBuilder builder;
    builder.Root().AddFile("LARGE.BIN;1", std::string(kLargeSize, 'x'));
    builder.Root().AddFile("LAST.TXT;1", "last");
    WriteFile(folder_.Path("large.iso"), builder.Build());
    return folder_.Path("large.iso");
  }
  std::string Out(const std::string& sub = "") const {
    return folder_.Path(sub.empty() ? "out" : "out/" + sub);
  }

  template <class Widget>
  Widget& Child(const char* name) {
    return *window_.findChild<Widget*>(name);
  }
  QTreeView& Files() { return Child<QTreeView>("files"); }
  QTreeView& Folders() { return Child<QTreeView>("folders"); }

  static QStringList RowsOf(const QAbstractItemView& view, const QModelIndex& parent = {}) {
    QStringList rows;
    const QAbstractItemModel& model = *view.model();
    for (int row = 0; row < model.rowCount(parent); ++row) {
      QStringList cells;
      for (int column = 0; column < std::min(model.columnCount(parent), 2); ++column) {
        cells += model.index(row, column, parent).data().toString();
      }
      rows += cells.join("|");
    }
    return rows;
  }
  void SelectFiles(const QStringList& names) {
    Files().clearSelection();
    for (int row = 0; row < Files().model()->rowCount(); ++row) {
      const QModelIndex index = Files().model()->index(row, 0);
      if (!names.contains(index.data().toString())) continue;
      Files().selectionModel()->select(index,
                                       QItemSelectionModel::Select | QItemSelectionModel::Rows);
    }
  }
  QString Summary() {
    QTest::qWait(200);
    return Child<desktop::ElidedLabel>("summary").Whole();
  }
  void Press(Qt::Key key) {
    for (auto* const action : window_.findChildren<QAction*>()) {
      if (action->shortcut() != QKeySequence(Qt::CTRL | key)) continue;
      EXPECT_TRUE(action->isEnabled());
      action->trigger();
    }
  }

  /// Chooses the target of an unpack that is about to begin.
  Script& ChooseTarget(Script& script) {
    return script.On<UnpackDialog>([this](UnpackDialog& dialog) {
      dialog.findChild<QLineEdit*>("target")->setText(Out().c_str());
      Click(dialog, "Unpack");
    });
  }
  /// Reads the summary and closes it.
  Script& ReadOutcome(Script& script) {
    return script.On<OutcomeWindow>([this](OutcomeWindow& outcome) {
      sentence_ = outcome.findChild<QLabel*>("sentence")->text();
      if (auto* const list = outcome.findChild<QTreeView*>("missing")) missing_ = RowsOf(*list);
      written_ = RowsOf(*outcome.findChild<QListView*>("written"));
      Click(outcome, "Close");
    });
  }

  TempFolder folder_;
  desktop::MainWindow window_;
  QString sentence_;
  QStringList missing_;
  QStringList written_;
};

TEST_F(MainWindowTest, ShowsFoldersBesideFilesAndTheLibrarysSummaries) {
  window_.Open(MakeImage());
  EXPECT_EQ(window_.windowTitle(), "test.iso — morvunp");
  EXPECT_EQ(RowsOf(Files()), (QStringList{"DOCS|", "A.TXT|5", "B.TXT|4"}));
  EXPECT_EQ(RowsOf(Folders(), Folders().model()->index(0, 0)), QStringList{"DOCS"});
  EXPECT_TRUE(Summary().startsWith("Files - 4, Folders - 2, Size - 1 248 bytes"))
      << Summary().toStdString();
  SelectFiles({"A.TXT"});
  EXPECT_TRUE(Summary().contains("Size - 5 bytes")) << Summary().toStdString();
  SelectFiles({"DOCS"});
  EXPECT_TRUE(Summary().startsWith("Files - 2, Folders - 1, Size - 1 239 bytes"))
      << Summary().toStdString();

  emit Files().activated(Files().model()->index(0, 0));
  EXPECT_EQ(RowsOf(Files()), (QStringList{"DEEP|", "C.TXT|1,234"}));
  EXPECT_EQ(Folders().currentIndex().data(), "DOCS");
}

TEST_F(MainWindowTest, OpensWhatIsDroppedAndTellsWhyItCannot) {
  QMimeData data;
  data.setUrls({QUrl::fromLocalFile(MakeImage().c_str())});
  QDragEnterEvent enter(QPoint(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window_, &enter);
  QDropEvent drop(QPointF(50, 50), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(&window_, &drop);
  EXPECT_EQ(window_.windowTitle(), "test.iso — morvunp");

  WriteFile(folder_.Path("<b>no.iso"), "no archive at all");
  Script script;
  script.On<QMessageBox>([](QMessageBox& box) {
    EXPECT_TRUE(box.text().contains("<b>no.iso")) << box.text().toStdString();
    EXPECT_TRUE(box.text().contains("not an archive that morvunp knows"));
    EXPECT_EQ(box.textFormat(), Qt::PlainText);
    Click(box, "OK");
  });
  window_.Open(folder_.Path("<b>no.iso"));
  EXPECT_EQ(window_.windowTitle(), "test.iso — morvunp") << "the open archive stays";
}

TEST_F(MainWindowTest, UnpacksEverythingAFolderOrWhatIsSelected) {
  window_.Open(MakeImage());
  {
    Script script;
    ReadOutcome(ChooseTarget(script));
    Press(Qt::Key_E);
  }
  const Tree all{{"A.TXT", "alpha"}, {"B.TXT", "beta"},
                 {"DOCS/", ""},      {"DOCS/C.TXT", std::string(1234, 'c')},
                 {"DOCS/DEEP/", ""}, {"DOCS/DEEP/D.TXT", "delta"}};
  EXPECT_EQ(TreeOf(Out()), all);
  EXPECT_EQ(sentence_, "Unpacked. Files: 4, folders: 2, bytes: 1,248.");
  EXPECT_TRUE(missing_.isEmpty());
  EXPECT_EQ(written_.size(), 6);
  EXPECT_TRUE(written_.contains("DOCS/DEEP/D.TXT"));

  std::filesystem::remove_all(Out());
  SelectFiles({"A.TXT", "B.TXT"});
  {
    Script script;
    ReadOutcome(ChooseTarget(script));
    Press(Qt::Key_U);
  }
  EXPECT_EQ(TreeOf(Out()), (Tree{{"A.TXT", "alpha"}, {"B.TXT", "beta"}}));

  std::filesystem::remove_all(Out());
  emit Files().activated(Files().model()->index(0, 0));
  emit Files().activated(Files().model()->index(0, 0));
  {
    Script script;
    ReadOutcome(ChooseTarget(script));
    Press(Qt::Key_D);
  }
  EXPECT_EQ(TreeOf(Out()), (Tree{{"DEEP/", ""}, {"DEEP/D.TXT", "delta"}}))
      << "the folders above the selected one are left out unless told otherwise";
}

TEST_F(MainWindowTest, RemembersTheFourSettingsAndTheTarget) {
  window_.Open(MakeImage());
  Script script;
  script.On<UnpackDialog>([this](UnpackDialog& dialog) {
    dialog.findChild<QLineEdit*>("target")->setText(Out().c_str());
    Click(dialog, "Everything: put all files into one folder");
    Click(dialog, "A folder: leave out the folders above it");
    Click(dialog, "Selected files: leave out their folders");
    Click(dialog, "Ask before an existing file is replaced");
    Click(dialog, "Unpack");
  });
  ReadOutcome(script);
  Press(Qt::Key_E);
  EXPECT_EQ(TreeOf(Out()), (Tree{{"A.TXT", "alpha"},
                                 {"B.TXT", "beta"},
                                 {"C.TXT", std::string(1234, 'c')},
                                 {"D.TXT", "delta"}}));
  const desktop::Options options = desktop::LoadOptions();
  EXPECT_EQ(options.settings.bUnpackArchiveNoPaths, 1);
  EXPECT_EQ(options.settings.bUnpackFolderRelative, 0);
  EXPECT_EQ(options.settings.bUnpackFileNoPath, 1);
  EXPECT_EQ(options.settings.bConfirmReplace, 0);
  EXPECT_EQ(options.target, Out().c_str());
}

struct ReplaceCase {
  const char* name;
  /// Null presses Escape.
  const char* button;
  /// How often the dialog appears for two existing files.
  int questions;
  Tree result;
  QStringList missing;
};

void PrintTo(const ReplaceCase& tested, std::ostream* stream) { *stream << tested.name; }

class ReplaceQuestion : public MainWindowTest, public testing::WithParamInterface<ReplaceCase> {};

TEST_P(ReplaceQuestion, IsAnsweredByItsButtons) {
  WriteFile(Out("A.TXT"), "old a");
  WriteFile(Out("B.TXT"), "old b");
  window_.Open(MakeImage());
  SelectFiles({"A.TXT", "B.TXT"});
  Script script;
  ChooseTarget(script);
  for (int i = 0; i < GetParam().questions; ++i) {
    script.On<LibraryDialog>([](LibraryDialog& dialog) {
      EXPECT_EQ(dialog.windowTitle(), "Confirm File Replace");
      if (GetParam().button != nullptr) {
        Click(dialog, GetParam().button);
      } else {
        QTest::keyClick(&dialog, Qt::Key_Escape);
      }
    });
  }
  ReadOutcome(script);
  Press(Qt::Key_U);
  EXPECT_EQ(TreeOf(Out()), GetParam().result);
  EXPECT_EQ(missing_, GetParam().missing);
}

const Tree kOld{{"A.TXT", "old a"}, {"B.TXT", "old b"}};
const Tree kNew{{"A.TXT", "alpha"}, {"B.TXT", "beta"}};
const QStringList kStopped{"A.TXT|kept the existing file", "B.TXT|not reached"};

INSTANTIATE_TEST_SUITE_P(
    Answers, ReplaceQuestion,
    testing::Values(
        ReplaceCase{"Yes", "Yes", 2, kNew, {}}, ReplaceCase{"YesToAll", "Yes To All", 1, kNew, {}},
        ReplaceCase{
            "No", "No", 2, kOld, {"A.TXT|kept the existing file", "B.TXT|kept the existing file"}},
        ReplaceCase{"Cancel", "Cancel", 1, kOld, kStopped},
        ReplaceCase{"Escape", nullptr, 1, kOld, kStopped}),
    [](const auto& tested) { return tested.param.name; });

TEST_F(MainWindowTest, StopsInTheMiddleOfAFileAfterAskingAndNothingElseStartsMeanwhile) {
  window_.Open(MakeLargeImage());
  const auto isInFile = [](ProgressWindow& progress) {
    progress.Redraw();
    return progress.findChild<desktop::ElidedLabel*>("name")->Whole() == "LARGE.BIN" &&
           progress.findChild<QProgressBar*>("file")->value() < 100;
  };
  Script script;
  ChooseTarget(script)
      .On<ProgressWindow>(
          [this](ProgressWindow& progress) {
            window_.Open(MakeImage());
            EXPECT_EQ(window_.windowTitle(), "large.iso — morvunp");
            window_.close();
            EXPECT_TRUE(window_.isVisible()) << "the library is in the middle of a call";
            Click(progress, "Stop");
          },
          isInFile)
      .On<QMessageBox>([](QMessageBox& box) {
        EXPECT_EQ(box.text(), "Interrupt the unpack?");
        EXPECT_EQ(box.windowTitle(), "Morvane Archiver");
        EXPECT_EQ(box.icon(), QMessageBox::Question);
        Click(box, "No");
      })
      .On<ProgressWindow>(
          [](ProgressWindow& progress) { QTest::keyClick(&progress, Qt::Key_Escape); }, isInFile)
      .On<QMessageBox>([](QMessageBox& box) { Click(box, "Yes"); });
  ReadOutcome(script);
  Press(Qt::Key_E);
  EXPECT_EQ(TreeOf(Out()), Tree{}) << "no half-written file stays";
  EXPECT_EQ(missing_, (QStringList{"LARGE.BIN|interrupted", "LAST.TXT|not reached"}));
  EXPECT_TRUE(sentence_.startsWith("Stopped."));
}

TEST_F(MainWindowTest, AsksForAPasswordAgainWhenItWasWrongAndOpensNothingWithoutOne) {
  if (!MORVUNP_HAS_RAR) GTEST_SKIP() << "built without the RAR engine";
  const std::string archive = MORVUNP_FIXTURES "/rar/encrypted-headers.rar";
  const auto type = [](const char* password) {
    return [password](LibraryDialog& dialog) {
      EXPECT_EQ(dialog.windowTitle(), "Enter Password");
      auto* const edit = qobject_cast<QLineEdit*>(dialog.focusWidget());
      ASSERT_NE(edit, nullptr) << "the focus is in the edit";
      EXPECT_EQ(edit->echoMode(), QLineEdit::Password);
      QTest::keyClicks(edit, password);
      QTest::keyClick(edit, Qt::Key_Return);
    };
  };
  const auto dismiss = [](QMessageBox& box) { Click(box, "OK"); };
  {
    Script script;
    script.On<LibraryDialog>(
        [](LibraryDialog& dialog) { QTest::keyClick(&dialog, Qt::Key_Escape); });
    window_.Open(archive);
  }
  EXPECT_EQ(window_.windowTitle(), "morvunp");
  {
    Script script;
    script.On<LibraryDialog>(type("wrong"))
        .On<QMessageBox>(dismiss)
        .On<LibraryDialog>(type("secret"));
    window_.Open(archive);
  }
  EXPECT_EQ(window_.windowTitle(), "encrypted-headers.rar — morvunp");
  // The password that was right serves for unpacking too.
  Script script;
  ReadOutcome(ChooseTarget(script));
  Press(Qt::Key_E);
  EXPECT_TRUE(missing_.isEmpty());
  EXPECT_FALSE(TreeOf(Out()).empty());
}

}  // namespace
