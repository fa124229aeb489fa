// CCabUnpacker: list, texts, unpacking, and what a hostile cabinet cannot reach.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

#include "morvunp/morvunp.h"
#include "support/cabbuilder.h"
#include "support/fakehost.h"
#include "support/tempfolder.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using testsupport::CabBuilder;
using testsupport::CabFile;
using testsupport::CabMethod;
using testsupport::DialogAnswer;
using testsupport::Exists;
using testsupport::ReadFile;
using testsupport::TempFolder;
using testsupport::TreeOf;
using testsupport::WriteFile;

constexpr UINT kButtonCancel = 1001;
constexpr UINT kButtonNo = 1002;
constexpr UINT kButtonYes = 1003;

class CabUnpack : public testing::Test {
 protected:
  void SetUp() override {
    mkdir(folder.Path("out").c_str(), 0777);
    host.Attach(unpacker);
  }

  bool OpenBytes(const std::string& cabinet) {
    WriteFile(folder.Path("x.cab"), cabinet);
    return unpacker.OpenArchive(folder.LibraryPath("x.cab")) && unpacker.FindFile();
  }
  bool Open(std::vector<CabFile> files, CabMethod method = CabMethod::kStored) {
    return OpenBytes(CabBuilder().Add(method, std::move(files)).Build());
  }
  bool OpenTree() {
    return Open({{"A\\B\\C\\F.TXT", "f"}, {"A\\X.TXT", "x"}, {"AB\\Y.TXT", "y"}, {"TOP.TXT", "t"}});
  }
  std::map<std::string, std::string> Out() const { return TreeOf(folder.Path("out")); }
  std::wstring Target() const { return folder.LibraryPath("out"); }
  void Set(BYTE INIUNPACK::*flag) {
    INIUNPACK settings;
    settings.*flag = 1;
    unpacker.SetIni(settings);
  }

  TempFolder folder;
  testsupport::FakeHost host;
  CCabUnpacker unpacker;
};

TEST_F(CabUnpack, OpensAndClosesAsOftenAsAsked) {
  EXPECT_FALSE(unpacker.CloseArchive()) << "nothing was bound yet";
  EXPECT_FALSE(unpacker.FindFile());
  ASSERT_TRUE(OpenTree());
  ASSERT_TRUE(OpenTree());
  EXPECT_TRUE(unpacker.CloseArchive());
  EXPECT_TRUE(unpacker.CloseArchive());
  CABFILESHORTINFO info;
  info.strPath = L"kept";
  EXPECT_FALSE(unpacker.GetFileShortInfo(info));
  EXPECT_EQ(info.strPath, L"kept");
  unpacker.SetIniYesToAll({1, 1, 1, 1});
  WriteFile(folder.Path("text"), "not a cabinet");
  EXPECT_FALSE(unpacker.OpenArchive(folder.LibraryPath("text")));
  EXPECT_FALSE(unpacker.OpenArchive(folder.LibraryPath("missing")));
  INIYESTOALL answers;
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllHidden, 1) << "a failed open leaves the answers";
  EXPECT_FALSE(unpacker.FindFile());
}

TEST_F(CabUnpack, OpensPathsThatTheCodePageLacks) {
  ASSERT_TRUE(platform::SetAnsiCodePage("CP932"));
  const std::string name = "\xC3\xBC\xE8\xA1\xA8\x01 \xFF/" + std::string(200, 'n') + "/" +
                           std::string(200, 'm') + ".cab";
  WriteFile(folder.Path(name), CabBuilder().Add(CabMethod::kStored, {{"\x95\x5C", "1"}}).Build());
  ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath(name)));
  EXPECT_TRUE(unpacker.UnpackFile(L"\u8868", Target()));
  platform::SetAnsiCodePage("");
}

TEST_F(CabUnpack, FillsTheRecords) {
  const struct {
    const char* stored;
    const wchar_t* title;
    const wchar_t* name;
    const wchar_t* ext;
    int flags;
  } cases[] = {{"DATA.V2\\README", L"README", L"README", L"V2\\README", 1},
               {"A.TXT", L"A", L"A.TXT", L"TXT", 0},
               {"DIR\\", L"", L"", L"", 10},
               {"D\\N.A.B", L"N.A", L"N.A.B", L"B", 1}};
  std::vector<CabFile> files;
  for (const auto& item : cases) files.push_back({item.stored, "12345", 0x23});
  ASSERT_TRUE(Open(files));
  bool more = true;
  for (const auto& item : cases) {
    SCOPED_TRACE(item.stored);
    ASSERT_TRUE(more);
    more = unpacker.FindNextFile();
    CABFILEFULLINFO info;
    info.nSize = 99;
    ASSERT_TRUE(unpacker.GetFileFullInfo(info));
    EXPECT_EQ(info.strTitle + L"|" + info.strName + L"|" + info.strExt,
              item.title + std::wstring(L"|") + item.name + L"|" + item.ext);
    EXPECT_EQ(info.bInFolder + 10 * info.bFolder, item.flags);
    const bool isFolder = item.flags == 10;
    EXPECT_EQ(info.nSize, isFolder ? 0 : 5);
    EXPECT_EQ(info.nAttribs, isFolder ? 0 : 0x23);
    EXPECT_EQ(info.nDate, isFolder ? 0 : CabFile{}.date);
  }
  EXPECT_FALSE(more);
  EXPECT_THROW(unpacker.FindNextFile(), CInvalidArgException);
}

TEST_F(CabUnpack, AnswersQueriesAfterARescan) {
  ASSERT_TRUE(Open({{"X\\DOCS\\A.TXT", "1"},
                    {"DOCS\\A.TXT", "22"},
                    {"DOCS\\SUB\\B.TXT", "333"},
                    {"DOCS\\SUB\\C.TXT", "4444"},
                    {"DOCS.TXT", "5"}}));
  EXPECT_TRUE(unpacker.IsFolder(L"DOCS") && unpacker.IsFolder(L"SUB"));
  EXPECT_FALSE(unpacker.IsFolder(L"docs") || unpacker.IsFolder(L"DOCS.TXT"));
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"DOCS"), L"Files - 3, Folders - 1, Size - 9 bytes");
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(), L"Files - 5, Folders - 4, Size - 11 bytes");
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"NONE"), L"Files - 0, Folders - 0, Size - 0 bytes");
  EXPECT_THAT(
      unpacker.GetFileOutputInfo(L"docs\\a.txt"),
      testing::AllOf(testing::StartsWith(L"Modified - "), testing::EndsWith(L", Size - 2 bytes")));
  EXPECT_EQ(unpacker.GetFileOutputInfo(L"A.TXT"), L"");
}

TEST_F(CabUnpack, ListsWhatADamagedTableStillTells) {
  std::string cabinet = CabBuilder().Add(CabMethod::kStored, {{"A", "1"}, {"B", "2"}}).Build();
  cabinet.resize(44 + 18 + 5);
  EXPECT_FALSE(OpenBytes(cabinet));
  EXPECT_FALSE(unpacker.IsListComplete());
  std::wstring paths;
  WalkItems<CABFILESHORTINFO>(unpacker, [&](const CABFILESHORTINFO& info) {
    paths += info.strPath + L" ";
    return true;
  });
  EXPECT_EQ(paths, L"A ");
}

TEST_F(CabUnpack, PutsFilesWhereTheSettingsSay) {
  ASSERT_TRUE(OpenTree());
  EXPECT_TRUE(unpacker.UnpackFile(L"a\\x.txt", Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("a/", ""), Pair("a/x.txt", "x")));
  Set(&INIUNPACK::bUnpackFileNoPath);
  EXPECT_TRUE(unpacker.UnpackFile(L"A\\X.TXT", folder.LibraryPath("out/a")));
  EXPECT_EQ(ReadFile(folder.Path("out/a/X.TXT")), "x");

  mkdir(folder.Path("out/1").c_str(), 0777);
  EXPECT_TRUE(unpacker.UnpackFolder(L"A\\B", folder.LibraryPath("out/1")));
  EXPECT_THAT(
      TreeOf(folder.Path("out/1")),
      ElementsAre(Pair("A/", ""), Pair("A/B/", ""), Pair("A/B/C/", ""), Pair("A/B/C/F.TXT", "f")));
  Set(&INIUNPACK::bUnpackFolderRelative);
  mkdir(folder.Path("out/2").c_str(), 0777);
  EXPECT_TRUE(unpacker.UnpackFolder(L"A\\B", folder.LibraryPath("out/2")));
  EXPECT_THAT(TreeOf(folder.Path("out/2")),
              ElementsAre(Pair("B/", ""), Pair("B/C/", ""), Pair("B/C/F.TXT", "f")));
  EXPECT_FALSE(unpacker.UnpackFolder(L"NONE", Target()));

  Set(&INIUNPACK::bUnpackArchiveNoPaths);
  mkdir(folder.Path("out/3").c_str(), 0777);
  EXPECT_TRUE(unpacker.UnpackArchive(folder.LibraryPath("out/3")));
  EXPECT_THAT(TreeOf(folder.Path("out/3")), ElementsAre(Pair("F.TXT", "f"), Pair("TOP.TXT", "t"),
                                                        Pair("X.TXT", "x"), Pair("Y.TXT", "y")));
}

TEST_F(CabUnpack, ReportsFilesTimesAndAttributes) {
  ASSERT_TRUE(Open({{"D\\A", "1", 0x21}, {"E\\", ""}}));
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(host.fileTreePaths,
              ElementsAre(Target() + L"\\D", Target() + L"\\D\\A", Target() + L"\\E"));
  EXPECT_THAT(host.progressMessages, ElementsAre(testsupport::ProgressMessage{0, L"A"},
                                                 testsupport::ProgressMessage{100, L""}));
  struct stat status {};
  ASSERT_EQ(stat(folder.Path("out/D/A").c_str(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0444U);
  std::tm local{};
  localtime_r(&status.st_mtime, &local);
  char text[32];
  std::strftime(text, sizeof text, "%F %T", &local);
  EXPECT_STREQ(text, "2001-02-03 04:05:06");
  host.fileTreePaths.clear();
  EXPECT_TRUE(unpacker.UnpackFile(L"D\\A", folder.LibraryPath("out/E")));
  EXPECT_THAT(host.fileTreePaths,
              ElementsAre(Target() + L"\\E\\D", Target() + L"\\E\\D\\A", Target() + L"\\E\\D\\A"));
}

TEST_F(CabUnpack, WritesNothingWithoutASelectedFile) {
  ASSERT_TRUE(OpenTree());
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"TOP.TXT", Target()));
  EXPECT_FALSE(unpacker.UnpackFile(L"NONE", Target()));
  EXPECT_TRUE(Out().empty());
  EXPECT_TRUE(unpacker.UnpackFile(L"TOP.TXT", Target()));
  EXPECT_TRUE(unpacker.UnpackCurrentFile(L"AGAIN.TXT", Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/AGAIN.TXT")), "t");
}

TEST_F(CabUnpack, AsksBeforeItReplaces) {
  ASSERT_TRUE(Open({{"A", "new"}, {"B", "new"}, {"C", "new"}}));
  for (const char* name : {"out/A", "out/B", "out/C"}) WriteFile(folder.Path(name), "old");
  host.dialogAnswers = {DialogAnswer::Press(kButtonNo), DialogAnswer::Press(kButtonYes),
                        DialogAnswer::Press(kButtonCancel)};
  EXPECT_FALSE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "old"), Pair("B", "new"), Pair("C", "old")))
      << "the file that the user kept is still there";
  host.dialogAnswers.assign(3, DialogAnswer::Press(kButtonNo));
  EXPECT_FALSE(unpacker.UnpackArchive(Target())) << "no file was written";
  host.dialogAnswers = {DialogAnswer::Press(kButtonCancel)};
  EXPECT_FALSE(unpacker.UnpackFile(L"A", Target()));
  EXPECT_EQ(ReadFile(folder.Path("out/A")), "old");
}

TEST_F(CabUnpack, LeavesNothingOfAnInterruptedFile) {
  ASSERT_TRUE(Open({{"A", "1"}, {"B", std::string(100'000, 'b')}, {"C", "3"}}));
  const auto stopInB = [&] {
    if (host.progressMessages.back() == testsupport::ProgressMessage{32, L""}) host.PostStop();
  };
  host.onProgress = stopInB;
  host.messageBoxAnswers = {IDNO, IDYES, IDYES, IDYES};
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_EQ(Out().size(), 3U);
  ASSERT_EQ(host.messageBoxes.size(), 1U);
  EXPECT_EQ(host.messageBoxes[0].text, L"Interrupt the unpack?");
  Set(&INIUNPACK::bUnpackFileNoPath);
  EXPECT_FALSE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("A", "1"), Pair("C", "3"))) << "C is from the run before";
  EXPECT_FALSE(unpacker.UnpackFile(L"B", Target()));
  EXPECT_FALSE(Exists(folder.Path("out/B")));
}

TEST_F(CabUnpack, UsesTheFirstOfFilesWithOnePath) {
  ASSERT_TRUE(Open({{"Name", "first"}, {"other", ""}, {"NAME", "second"}}));
  Set(&INIUNPACK::bUnpackFileNoPath);
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("Name", "second"), Pair("other", "")));
}

TEST_F(CabUnpack, KeepsHostileNamesInsideTheTarget) {
  WriteFile(folder.Path("planted"), "untouched");
  symlink("..", folder.Path("out/link").c_str());
  ASSERT_TRUE(Open({{"..\\planted", "!"},
                    {"\\planted", "!"},
                    {"A\\..\\..\\planted", "!"},
                    {"C:\\planted", "!"},
                    {"../planted", "!"},
                    {"link\\planted", "!"},
                    {"", "!"},
                    {".", "!"},
                    {"A\\\\B", "!"},
                    {"link", "!"},
                    {"..\\", ""},
                    {"FINE", "1"}}));
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_THAT(Out(), ElementsAre(Pair("FINE", "1"), Pair("link@", "..")));
  for (const wchar_t* path : {L"..\\planted", L"\\planted", L"link\\planted", L"../planted"}) {
    EXPECT_FALSE(unpacker.UnpackFile(path, Target()));
  }
  EXPECT_EQ(ReadFile(folder.Path("planted")), "untouched");
}

TEST_F(CabUnpack, DoesNotOverwriteTheCabinetThatItReads) {
  const std::string cabinet =
      CabBuilder().Add(CabMethod::kStored, {{"x.cab", std::string(300'000, 'x')}}).Build();
  ASSERT_TRUE(OpenBytes(cabinet));
  Set(&INIUNPACK::bUnpackFileNoPath);
  unpacker.UnpackArchive(folder.LibraryPath());
  EXPECT_TRUE(ReadFile(folder.Path("x.cab")) == cabinet);
}

class CabUnpackSet : public CabUnpack {
 protected:
  void Write(const std::vector<std::string>& recordedNames,
             const std::vector<std::string>& namesOnDisk) {
    CabBuilder builder;
    builder.Add(CabMethod::kStored, {{"A", std::string(50'000, 'a')}, {"B", text}});
    const auto cabinets = builder.BuildSet(60'000, recordedNames);
    ASSERT_EQ(cabinets.size(), 3U);
    for (std::size_t i = 0; i < 3; ++i) WriteFile(folder.Path(namesOnDisk[i]), cabinets[i]);
    ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath(namesOnDisk[0])) && unpacker.FindFile());
  }

  const std::string text = std::string(60'000, 'b') + std::string(40'000, 'c');
};

TEST_F(CabUnpackSet, FindsTheNextCabinetInAnyCase) {
  Write({"1.cab", "Split-2.CAB", "Split-3.CAB"}, {"1.cab", "split-2.cab", "SPLIT-3.cab"});
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_TRUE(Out()["B"] == text);
}

TEST_F(CabUnpackSet, FailsWithoutTheRightNextCabinet) {
  Set(&INIUNPACK::bUnpackFileNoPath);
  Write({"1.cab", "2.cab", "3.cab"}, {"1.cab", "2.cab", "3.cab"});
  WriteFile(folder.Path("2.cab"), ReadFile(folder.Path("3.cab")));
  EXPECT_FALSE(unpacker.UnpackArchive(Target()));
  unlink(folder.Path("2.cab").c_str());
  EXPECT_FALSE(unpacker.UnpackFile(L"B", Target()));
  Write({"1.cab", "..\\2.cab", "3.cab"}, {"sub/1.cab", "2.cab", "sub/3.cab"});
  EXPECT_FALSE(unpacker.UnpackArchive(Target())) << "the set lies in one folder";
}

TEST_F(CabUnpack, UnpacksWhatAnotherProgramMade) {
  const std::string files = folder.Path("in");
  std::string text;
  for (int i = 0; i < 40'000; ++i) text += std::to_string(i * i) + "\n";
  WriteFile(files + "/docs/numbers.txt", text);
  WriteFile(files + "/top", "top");
  const std::string command =
      "cd '" + files + "' && gcab -c -z '" + folder.Path("g.cab") + "' docs/numbers.txt top";
  ASSERT_EQ(std::system(command.c_str()), 0);
  ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("g.cab")) && unpacker.FindFile());
  EXPECT_TRUE(unpacker.UnpackArchive(Target()));
  EXPECT_TRUE(Out() == TreeOf(files));
}

}  // namespace
