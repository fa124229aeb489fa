// What the windows show of items, apart from the windows.
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <random>

#include "hosts/common/escape.h"
#include "hosts/desktop/archivetree.h"
#include "hosts/desktop/filemodel.h"
#include "hosts/desktop/foldermodel.h"
#include "hosts/desktop/librarydialog.h"
#include "hosts/desktop/shown.h"
#include "morvunp/platform/dialogtemplate.h"

namespace {

using desktop::ArchiveTree;

void Add(ArchiveTree& tree, const std::wstring& path, bool isFolder = false,
         std::uint64_t size = 0) {
  tree.Add({.path = path,
            .name = std::wstring_view(path).substr(path.rfind(L'\\') + 1),
            .isFolder = isFolder,
            .isHidden = false,
            .size = size,
            .packedSize = size,
            .modified = 0,
            .accessed = 0});
}

std::vector<std::wstring> PathsIn(const ArchiveTree& tree, ArchiveTree::Index folder) {
  std::vector<std::wstring> paths;
  for (const ArchiveTree::Index item : tree.Children(folder)) paths.push_back(tree.PathOf(item));
  return paths;
}

TEST(ArchiveTree, KeepsEveryItemUnderItsOwnPathWhateverTheNames) {
  ArchiveTree tree;
  const std::vector<std::wstring> files{L"b\\x.txt", L"a\\y.txt", L"a\\y.txt", L"\\rooted",
                                        L"a\\\\gap", L"..\\up",   L"A\\other", L"top"};
  for (const std::wstring& path : files) Add(tree, path);
  Add(tree, L"a", true);
  Add(tree, L"a10", true);
  Add(tree, L"a9", true);
  tree.Finish();
  EXPECT_EQ(PathsIn(tree, ArchiveTree::kRoot),
            (std::vector<std::wstring>{L"", L"..", L"A", L"a", L"a9", L"a10", L"b", L"top"}));
  std::vector<std::wstring> found;
  for (ArchiveTree::Index item = 1; item < tree.Size(); ++item) {
    if (!tree.At(item).isFolder) found.push_back(tree.PathOf(item));
  }
  EXPECT_EQ(found, files);
}

TEST(ArchiveTree, TakesAPathOfAHundredThousandFoldersInItsStride) {
  ArchiveTree tree;
  std::wstring path;
  for (int i = 0; i < 100'000; ++i) path += L"d\\";
  Add(tree, path + L"file");
  tree.Finish();
  EXPECT_EQ(tree.PathOf(static_cast<ArchiveTree::Index>(tree.Size() - 1)), path + L"file");
}

TEST(Models, AreConsistentForAnyTreeAndOrder) {
  ArchiveTree tree;
  std::mt19937 random(7);
  for (int i = 0; i < 400; ++i) {
    std::wstring path;
    for (unsigned depth = random() % 4; depth > 0; --depth) {
      path += L"f" + std::to_wstring(random() % 3) + L'\\';
    }
    Add(tree, path + L"n" + std::to_wstring(i), random() % 9 == 0, random() % 50);
  }
  tree.Finish();
  desktop::FileIcons icons;
  desktop::FolderModel folders(icons, nullptr);
  desktop::FileModel files(icons, nullptr);
  using Mode = QAbstractItemModelTester::FailureReportingMode;
  const QAbstractItemModelTester folderTester(&folders, Mode::Fatal);
  const QAbstractItemModelTester fileTester(&files, Mode::Fatal);
  folders.Show(&tree, "archive");
  files.Show(&tree, ArchiveTree::kRoot);

  const QPersistentModelIndex kept = files.index(files.rowCount() - 1, 0);
  const QVariant name = kept.data();
  files.sort(desktop::FileModel::kSize, Qt::DescendingOrder);
  EXPECT_EQ(kept.data(), name) << "a selection stays on its item";
  const auto& entry = [&](int row) { return tree.At(files.ItemAt(files.index(row, 0))); };
  for (int row = 1; row < files.rowCount(); ++row) {
    EXPECT_TRUE(entry(row - 1).isFolder || !entry(row).isFolder);
    if (entry(row - 1).isFolder) continue;
    EXPECT_GE(entry(row - 1).size, entry(row).size);
  }
}

TEST(Shown, EscapesWhatWouldMisleadOrBreakALine) {
  EXPECT_EQ(desktop::ShownPath(L"dir\\evil\u202egpj.exe"), "dir/evil\\u202egpj.exe");
  EXPECT_EQ(desktop::ShownName(L"a\nb\x1b"), "a\\x0ab\\x1b");
  EXPECT_EQ(desktop::ShownName(L"\u05e9\u05dc\u05d5\u05dd \U0001F600"), "שלום 😀");
  EXPECT_EQ(desktop::ShownName(std::wstring{static_cast<wchar_t>(0xdcff)}), "\\xff");
  EXPECT_EQ(desktop::ShownReason({.text = "the volume %1 is missing", .path = L"x\\y\u202e"}),
            "the volume x/y\\u202e is missing");
  EXPECT_EQ(desktop::AsToolTip("<img src=x>"), "<p>&lt;img src=x&gt;</p>");
}

/// Dialog units are a quarter of the average letter's width and an eighth of
/// the font's height.
TEST(LibraryDialog, IsLaidOutInUnitsOfItsFont) {
  CDialog model(1001);
  desktop::LibraryDialog dialog(model, nullptr);
  const QFontMetrics metrics(dialog.font());
  EXPECT_EQ(dialog.font().pointSize(), 8);
  EXPECT_NEAR(dialog.width(), 260 * metrics.averageCharWidth() / 4.0, dialog.width() / 4.0);
  EXPECT_NEAR(dialog.height(), 145 * metrics.height() / 8.0, 1);
  const auto place = [&](UINT id) { return dialog.Control(id)->geometry(); };
  EXPECT_EQ(place(1003).top(), place(1001).top());
  EXPECT_LT(place(1003).right(), place(1004).left());
  EXPECT_LT(place(1010).bottom(), place(1003).top());
  // 8 units high: a line of the font, whose descenders must not be cut.
  EXPECT_GE(place(1005).height(), metrics.height());
}

}  // namespace
