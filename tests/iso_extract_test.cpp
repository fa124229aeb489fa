// Unpacking images: where things come out, what they are given, progress,
// interruption, and what a hostile image cannot reach.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <time.h>
#include <unistd.h>

#include "support/imagetest.h"
#include "support/isobuilder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::Pair;
using testsupport::IsoBuilder;
using testsupport::IsoNode;
using testsupport::ReadFile;
using testsupport::TempFolder;
using testsupport::TreeOf;
using testsupport::WriteFile;

constexpr std::size_t kBlock = 262144;

class IsoExtract : public testsupport::ImageExtractTest<IsoBuilder> {
 protected:
  void Open(const std::string& image) { ASSERT_TRUE(ImageTest::Open(image)); }
  void Open() { Open(builder.Build()); }

  /// DOCS\SUB\X.TXT, DOCS\A.TXT, DOCS2\B.TXT, EMPTY, TOP.TXT
  void OpenTree() {
    IsoNode& docs = builder.Root().AddFolder("DOCS");
    docs.AddFile("A.TXT;1", "a");
    docs.AddFolder("SUB").AddFile("X.TXT;1", "x");
    builder.Root().AddFolder("DOCS2").AddFile("B.TXT;1", "b");
    builder.Root().AddFolder("EMPTY");
    builder.Root().AddFile("TOP.TXT;1", "top");
    Open();
  }

  void Set(BYTE INIUNPACK::*flag) {
    INIUNPACK settings;
    settings.*flag = 1;
    unpacker.SetIni(settings);
  }
};

TEST_F(IsoExtract, UnpacksTheArchiveWithItsFolders) {
  OpenTree();
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(Out(),
              ElementsAre(Pair("DOCS/", ""), Pair("DOCS/A.TXT", "a"), Pair("DOCS/SUB/", ""),
                          Pair("DOCS/SUB/X.TXT", "x"), Pair("DOCS2/", ""), Pair("DOCS2/B.TXT", "b"),
                          Pair("EMPTY/", ""), Pair("TOP.TXT", "top")));
  EXPECT_THAT(
      host.fileTreePaths,
      ElementsAre(Target() + L"\\DOCS", Target() + L"\\DOCS\\A.TXT", Target() + L"\\DOCS\\SUB",
                  Target() + L"\\DOCS\\SUB\\X.TXT", Target() + L"\\DOCS2",
                  Target() + L"\\DOCS2\\B.TXT", Target() + L"\\EMPTY", Target() + L"\\TOP.TXT"));
}

TEST_F(IsoExtract, UnpacksTheArchiveWithoutPaths) {
  OpenTree();
  Set(&INIUNPACK::bUnpackArchiveNoPaths);
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("A.TXT", "a"), Pair("B.TXT", "b"), Pair("TOP.TXT", "top"),
                                 Pair("X.TXT", "x")));
}

TEST_F(IsoExtract, UnpacksFoldersWithFullOrRelativePaths) {
  OpenTree();
  EXPECT_TRUE(unpacker.UnpackFolder(L"DOCS\\SUB", Target()));
  EXPECT_THAT(Out(),
              ElementsAre(Pair("DOCS/", ""), Pair("DOCS/SUB/", ""), Pair("DOCS/SUB/X.TXT", "x")));
  Set(&INIUNPACK::bUnpackFolderRelative);
  EXPECT_TRUE(unpacker.UnpackFolder(L"DOCS\\SUB", folder.LibraryPath("out/relative")));
  EXPECT_EQ(ReadFile(folder.Path("out/relative/SUB/X.TXT")), "x");
  EXPECT_TRUE(unpacker.UnpackFolder(L"DOCS", folder.LibraryPath("out/top")));
  EXPECT_THAT(TreeOf(folder.Path("out/top")),
              ElementsAre(Pair("DOCS/", ""), Pair("DOCS/A.TXT", "a"), Pair("DOCS/SUB/", ""),
                          Pair("DOCS/SUB/X.TXT", "x")));
  EXPECT_FALSE(unpacker.UnpackFolder(L"NOWHERE", Target()));
}

TEST_F(IsoExtract, UnpacksOneFileWithOrWithoutItsPath) {
  OpenTree();
  EXPECT_TRUE(unpacker.UnpackFile(L"docs\\a.txt", Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/docs/a.txt")), "a");
  Set(&INIUNPACK::bUnpackFileNoPath);
  EXPECT_TRUE(unpacker.UnpackFile(L"DOCS\\SUB\\X.TXT", Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/X.TXT")), "x");
  EXPECT_FALSE(unpacker.UnpackFile(L"DOCS\\NONE", Target()));
  EXPECT_FALSE(unpacker.UnpackFile(L"DOCS", Target())) << "a folder is no file";
}

TEST_F(IsoExtract, UnpacksTheCurrentItemUnderAnotherName) {
  OpenTree();
  ASSERT_TRUE(unpacker.LocateFile(L"TOP.TXT"));
  EXPECT_TRUE(unpacker.UnpackCurrentFile(L"any\\where\\NEW.TXT", Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("NEW.TXT", "top")));
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"", Target()));
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"..", Target()));
  unpacker.FindFile();
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"X", Target())) << "no current item";
}

TEST_F(IsoExtract, WorksWithoutWindows) {
  OpenTree();
  unpacker.SetHandleDialogProgress(nullptr);
  unpacker.SetWndFileTree(nullptr);
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_EQ(Out().size(), 8U);
  EXPECT_THAT(host.progressMessages, IsEmpty());
  EXPECT_THAT(host.fileTreePaths, IsEmpty());
}

TEST_F(IsoExtract, GivesTimesAndTheHiddenAttribute) {
  IsoNode& file = builder.Root().AddFile("A;1", "a");
  file.hidden = true;
  file.date = {101, 2, 3, 4, 5, 6, 0};
  builder.Root().AddFile("EMPTY;1").date = {101, 2, 3, 4, 5, 6, 0};
  Open();
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  for (const char* name : {"out/A", "out/EMPTY"}) {
    struct stat status {};
    ASSERT_EQ(stat(folder.Path(name).c_str(), &status), 0);
    tm local{};
    localtime_r(&status.st_mtime, &local);
    char text[32];
    strftime(text, sizeof text, "%F %T", &local);
    EXPECT_STREQ(text, "2001-02-03 04:05:06") << name;
  }
  EXPECT_EQ(GetFileAttributesW(folder.LibraryPath("out/A").c_str()), FILE_ATTRIBUTE_HIDDEN);
  char attribute[8] = {};
  getxattr(folder.Path("out/A").c_str(), "user.DOSATTRIB", attribute, sizeof attribute);
  EXPECT_STREQ(attribute, "0x2");
}

TEST_F(IsoExtract, ReportsEachBlockAndNamesTheFileFirst) {
  std::string content(kBlock * 2 + 10, 'x');
  for (std::size_t i = 0; i < content.size(); ++i) content[i] = static_cast<char>(i * 31 >> 3);
  builder.Root().AddFolder("D").AddFile("BIG.BIN;1", content);
  builder.Root().AddFile("ZERO;1");
  Open();
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/D/BIG.BIN")), content);
  EXPECT_EQ(host.progressMessages,
            (std::vector<testsupport::ProgressMessage>{
                {0, L"BIG.BIN"}, {49, L""}, {99, L""}, {100, L""}, {0, L"ZERO"}}));
}

TEST_F(IsoExtract, CopiesFilesWhereverTheyLie) {
  // Out of order, so that the shared reads meet each file from either side.
  std::vector<std::string> contents;
  IsoNode& folderNode = builder.Root().AddFolder("F");
  for (int i = 0; i < 40; ++i) {
    contents.emplace_back(static_cast<std::size_t>(i) * 3001, static_cast<char>('A' + i));
    folderNode.AddFile("F" + std::to_string(100 + i) + ";1", contents.back());
  }
  Open();
  for (const int i : {39, 0, 20, 21, 5, 39, 38, 1, 30}) {
    const std::wstring name = L"F\\F" + std::to_wstring(100 + i);
    ASSERT_TRUE(unpacker.UnpackFile(name, Target()));
    EXPECT_EQ(ReadFile(folder.Path("out/F/F" + std::to_string(100 + i))),
              contents[static_cast<std::size_t>(i)]);
  }
}

TEST_F(IsoExtract, AsksWhenStoppedAndGoesOnAfterNo) {
  builder.Root().AddFile("BIG;1", std::string(kBlock * 3, 'x'));
  Open();
  int events = 0;
  host.onPendingEvents = [&] {
    if (++events == 1) host.PostStopFromButton();
  };
  host.messageBoxAnswers = {IDNO};
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  ASSERT_EQ(host.messageBoxes.size(), 1U);
  EXPECT_EQ(host.messageBoxes[0].text, L"Interrupt the unpack?");
  EXPECT_EQ(host.messageBoxes[0].caption, L"Morvane Archiver");
  EXPECT_EQ(host.messageBoxes[0].type, 0x24U);
  EXPECT_EQ(host.fileTreePaths.size(), 1U);
  EXPECT_EQ(ReadFile(folder.Path("out/BIG")).size(), kBlock * 3);
}

TEST_F(IsoExtract, LeavesNothingOfAnInterruptedFileAndEndsTheRun) {
  builder.Root().AddFile("FIRST;1", "1");
  builder.Root().AddFile("BIG;1", std::string(kBlock * 3, 'x'));
  builder.Root().AddFile("LAST;1", "3");
  Open();
  host.onPendingEvents = [&] {
    if (host.fileTreePaths.size() == 1) host.PostStop();
  };
  host.messageBoxAnswers = {IDYES};
  EXPECT_FALSE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("FIRST", "1")));
}

TEST_F(IsoExtract, IgnoresAStopSentToAnotherWindow) {
  builder.Root().AddFile("A;1", "a");
  Open();
  bool seen = false;
  const HWND other = platform::MakeWindow(nullptr, [&](UINT message, WPARAM, LPARAM) {
    seen = seen || message == WM_UNPACK_STOP;
    return LRESULT{0};
  });
  PostMessageW(other, WM_UNPACK_STOP, 0, 0);
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_TRUE(seen) << "it was dispatched to its own window";
  DestroyWindow(other);
}

TEST_F(IsoExtract, KeepsWhatAnImageThatEndsEarlyHolds) {
  builder.Root().AddFile("A;1", std::string(5000, 'a'));
  std::string image = builder.Build();
  image.resize(builder.ContentOffsetOf(*builder.Root().children[0]) + 1000);
  Open(image);
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/A")), std::string(1000, 'a'));
}

TEST_F(IsoExtract, FailsWhereItCannotWriteAndGoesOn) {
  OpenTree();
  WriteFile(folder.Path("out/DOCS"), "in the way");
  mkdir(folder.Path("out/TOP.TXT").c_str(), 0777);
  EXPECT_FALSE(unpacker.UnpackArchive(Target())) << "the last item failed";
  EXPECT_THAT(Out(),
              ElementsAre(Pair("DOCS", "in the way"), Pair("DOCS2/", ""), Pair("DOCS2/B.TXT", "b"),
                          Pair("EMPTY/", ""), Pair("TOP.TXT/", "")));
  EXPECT_FALSE(unpacker.UnpackFile(L"TOP.TXT", folder.LibraryPath("nowhere")));
}

TEST_F(IsoExtract, NeverOverwritesTheImageItself) {
  builder.Root().AddFile("X.ISO;1", "self");
  const std::string image = builder.Build();
  WriteFile(folder.Path("out/X.ISO"), image);
  ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("out/X.ISO")));
  EXPECT_FALSE(unpacker.UnpackArchive(Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/X.ISO")), image);
}

TEST_F(IsoExtract, WritesNothingForHostileNames) {
  WriteFile(folder.Path("planted"), "untouched");
  for (const std::string name :
       {"..", ".", "", "../planted", "..\\planted", "a\\b", "/etc", "C:x"}) {
    builder.Root().AddFile(name, "evil");
    builder.Root().AddFolder(name).AddFile("INSIDE;1", "evil");
  }
  builder.Root().AddFile("GOOD;1", "good");
  Open();
  unpacker.UnpackArchive(Target());
  Set(&INIUNPACK::bUnpackArchiveNoPaths);
  unpacker.UnpackArchive(Target());
  EXPECT_THAT(Out(), ElementsAre(Pair("GOOD", "good")));
  EXPECT_EQ(TreeOf(folder.Path()).size(), 4U) << "x.iso, planted, out and GOOD";
  EXPECT_EQ(ReadFile(folder.Path("planted")), "untouched");
}

TEST_F(IsoExtract, TakesAColonBelowTheRootForAName) {
  builder.Root().AddFolder("SUB").AddFile("A:B", "content");
  Open();
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_EQ(Out("SUB/A:B"), "content");
}

TEST_F(IsoExtract, NeverGoesThroughLinksBelowTheTarget) {
  OpenTree();
  mkdir(folder.Path("outside").c_str(), 0777);
  WriteFile(folder.Path("outside/TOP.TXT"), "planted");
  ASSERT_EQ(symlink("../outside", folder.Path("out/DOCS").c_str()), 0);
  ASSERT_EQ(symlink("../outside/TOP.TXT", folder.Path("out/TOP.TXT").c_str()), 0);
  mkdir(folder.Path("out/DOCS2").c_str(), 0777);
  ASSERT_EQ(symlink("nowhere", folder.Path("out/DOCS2/B.TXT").c_str()), 0);
  unpacker.UnpackArchive(Target());
  EXPECT_FALSE(unpacker.UnpackFile(L"DOCS\\A.TXT", Target()));
  EXPECT_THAT(TreeOf(folder.Path("outside")), ElementsAre(Pair("TOP.TXT", "planted")));
  EXPECT_THAT(Out(), ElementsAre(Pair("DOCS2/", ""), Pair("DOCS2/B.TXT@", "nowhere"),
                                 Pair("DOCS@", "../outside"), Pair("EMPTY/", ""),
                                 Pair("TOP.TXT@", "../outside/TOP.TXT")));
}

TEST_F(IsoExtract, AcceptsATargetThatIsReachedThroughALink) {
  OpenTree();
  ASSERT_EQ(symlink("out", folder.Path("link").c_str()), 0);
  EXPECT_TRUE(unpacker.UnpackArchive(folder.LibraryPath("link")));
  EXPECT_EQ(Out().size(), 8U);
}

TEST_F(IsoExtract, MatchesTheTreeThatToolsPackedInto) {
  WriteFile(folder.Path("tree/DOCS/README.TXT"), "read me");
  WriteFile(folder.Path("tree/DOCS/DEEP/ER/DATA.BIN"), std::string(300000, '\7'));
  WriteFile(folder.Path("tree/EMPTY.TXT"), "");
  mkdir(folder.Path("tree/NOTHING").c_str(), 0777);
  const std::string commands[] = {"genisoimage -quiet -iso-level 1 -J -R -o ",
                                  "xorriso -report_about SORRY -as mkisofs -iso-level 3 -J -r -o "};
  for (const std::string& command : commands) {
    TempFolder fresh;
    const std::string line = command + fresh.Path("x.iso") + " " + folder.Path("tree");
    ASSERT_EQ(system(line.c_str()), 0) << line;
    ASSERT_TRUE(unpacker.OpenArchive(fresh.LibraryPath("x.iso")));
    EXPECT_TRUE(unpacker.UnpackArchive(fresh.LibraryPath("out"))) << command;
    EXPECT_EQ(TreeOf(fresh.Path("out")), TreeOf(folder.Path("tree"))) << command;
  }
}

}  // namespace
