// Opening, walking and telling about RAR archives.
#include <gmock/gmock.h>

#include "support/rartest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::DialogAnswer;
using testsupport::TypePassword;
using testsupport::WriteFile;

class RarWalk : public testsupport::RarTest {};

TEST_F(RarWalk, FillsBothRecords) {
  ASSERT_TRUE(OpenFixture("tree.rar"));
  RARFILEFULLINFO file;
  EXPECT_FALSE(unpacker.LocateFile(L"DOCS\\A", file));
  ASSERT_TRUE(unpacker.LocateFile(L"docs\\a.txt", file));
  EXPECT_EQ(file.strPath + L"|" + file.strName + L"|" + file.strTitle + L"|" + file.strExt,
            L"DOCS\\A.TXT|A.TXT|A|TXT");
  EXPECT_EQ(file.nUnpSize * 10 + file.nPackSize, 66U);
  EXPECT_EQ(file.nFileAttr, 0100644U);
  EXPECT_EQ(file.bInFolder + file.bFolder + file.bSplitAfter, 0);
  ASSERT_TRUE(unpacker.LocateFile(L"DOCS\\SUB", file));
  EXPECT_TRUE(file.bInFolder && !file.bFolder);
  EXPECT_EQ(file.strName + file.strTitle + file.strExt, L"");
  EXPECT_EQ(file.nFileAttr, 0U) << "of folders only the path is told";
  RARFILESHORTINFO next;
  ASSERT_TRUE(unpacker.GetFileShortInfo(next)) << "a second record is of the following header";
  EXPECT_EQ(next.strPath, L"DOCS");
  EXPECT_TRUE(next.bFolder && !next.bInFolder);
}

TEST_F(RarWalk, AnswersSummaries) {
  ASSERT_TRUE(OpenFixture("tree.rar"));
  EXPECT_TRUE(unpacker.IsFolder(L"OCS\\S")) << "anywhere in the path of a folder";
  EXPECT_FALSE(unpacker.IsFolder(L"TOP"));
  EXPECT_THAT(
      unpacker.GetFileOutputInfo(L"top.txt"),
      testing::HasSubstr(L"Size - 3 bytes, Packed - 3 bytes, Ratio - 100%, CRC - 1ed91fca"));
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"DOCS"),
            L"Files - 2, Folders - 1, Size - 1 498 bytes, Packed - 325 bytes, Ratio - 21%");
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 3, Folders - 3, Size - 1 501 bytes, Packed - 328 bytes, Ratio - 21%");
  EXPECT_EQ(unpacker.GetWalkProblem(), RarProblem::kNone);
}

TEST_F(RarWalk, GivesEachPartOfASplitFile) {
  ASSERT_TRUE(OpenFixture("set.part1.rar"));
  std::vector<int> splits;
  for (const RARFILEFULLINFO& info : Records()) {
    splits.push_back(info.bSplitAfter * 10 + static_cast<int>(info.nFlags & kRarSplitBefore));
  }
  EXPECT_THAT(splits, ElementsAre(10, 11, 11, 1, 0));
}

TEST_F(RarWalk, TurnsNamesIntoPathsThatCannotGrowFolders) {
  // A byte that is no UTF-8, written as packers do (U+FFFE, U+E0FF), a
  // backslash in a name, a character beyond the basic plane.
  const std::string archive =
      testsupport::RarBuilder()
          .Add({.path = "d/x\xef\xbf\xbe\xee\x83\xbf\\y\xf0\x90\x80\x80", .data = "odd"})
          .Build();
  WriteFile(folder.Path("odd \xff\xc3\xa9.rar"), archive);
  ASSERT_TRUE(Open("odd \xff\xc3\xa9.rar"));
  const std::wstring path = std::wstring(L"d\\x\xdcff\xdc5cy") + wchar_t{0x10000};
  EXPECT_THAT(Paths(), ElementsAre(path));
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out("d/x\xff\\y\xf0\x90\x80\x80"), "odd");
}

TEST_F(RarWalk, AsksOnceForThePasswordOfHeaders) {
  host.dialogAnswers = {TypePassword(L"secret")};
  ASSERT_TRUE(OpenFixture("encrypted-headers.rar"));
  EXPECT_EQ(Paths().size(), 6U);
  EXPECT_TRUE(Unpack()) << "the files have the same password";
  unpacker.m_bReusePassword = 1;
  ASSERT_TRUE(OpenFixture("encrypted-headers.rar"));
  EXPECT_EQ(Paths().size(), 6U);
  EXPECT_EQ(host.dialogs.size(), 1U);
  unpacker.m_bReusePassword = 0;
  host.dialogAnswers = {DialogAnswer::Press(IDCANCEL)};
  EXPECT_FALSE(OpenFixture("encrypted-headers.rar")) << "asks again, and is cancelled";
  EXPECT_EQ(unpacker.GetWalkProblem(), RarProblem::kNoPassword);
  ASSERT_TRUE(OpenFixture("solid-encrypted-files.rar"));
  EXPECT_EQ(Paths().size(), 6U) << "a list needs no password of files";
}

TEST_F(RarWalk, TellsOfAWrongPasswordWithTheFirstShortRecord) {
  host.dialogAnswers = {TypePassword(L"wrong")};
  ASSERT_TRUE(OpenFixture("encrypted-headers.rar"));
  EXPECT_THAT(Paths(), IsEmpty()) << "full records tell nothing";
  host.messageBoxAnswers = {IDOK};
  EXPECT_FALSE(unpacker.IsFolder(L"DOCS"));
  EXPECT_EQ(host.messageBoxes.at(0).text, L"The specified password is incorrect.");
  EXPECT_EQ(unpacker.GetWalkProblem(), RarProblem::kWrongPassword);
}

TEST_F(RarWalk, TellsWhyAListIsCutShort) {
  ASSERT_TRUE(OpenFirstTwoVolumes());
  EXPECT_EQ(Paths().size(), 2U);
  EXPECT_EQ(unpacker.GetWalkProblem(), RarProblem::kMissingVolume);

  std::string damaged = testsupport::RarBuilder().Add({.path = "NAME", .data = "a"}).Build();
  damaged[damaged.find("NAME")] ^= 1;
  host.messageBoxAnswers = {IDOK};
  ASSERT_TRUE(OpenBytes(damaged));
  EXPECT_FALSE(unpacker.IsFolder(L"NAME"));
  EXPECT_EQ(host.messageBoxes.at(0).text, L"Corrupt file or wrong password.");
  EXPECT_EQ(unpacker.GetWalkProblem(), RarProblem::kDamaged);
}

TEST_F(RarWalk, CopiesOpenTheArchiveForThemselves) {
  host.dialogAnswers = {TypePassword(L"secret")};
  ASSERT_TRUE(OpenFixture("encrypted-headers.rar"));
  CRarUnpacker copy = unpacker;
  RARFILESHORTINFO info;
  EXPECT_FALSE(copy.GetFileShortInfo(info)) << "not open yet";
  EXPECT_TRUE(copy.FindFile() && copy.FindNextFile() && copy.GetFileShortInfo(info));
  copy = unpacker;
  EXPECT_FALSE(copy.CloseArchive());
  EXPECT_TRUE(unpacker.CloseArchive());
}

TEST_F(RarWalk, ForgetsAnswersWhateverTheOpenGives) {
  INIYESTOALL answers{1, 1, 1, 1};
  unpacker.SetIniYesToAll(answers);
  EXPECT_FALSE(unpacker.OpenArchive(folder.LibraryPath("none.rar")));
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllNormal + answers.bYesToAllHidden, 0);
}

}  // namespace
