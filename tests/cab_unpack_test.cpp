// CCabUnpacker: list, texts, unpacking, and what a hostile cabinet cannot reach.
#include <gmock/gmock.h>
#include <unistd.h>

#include <cstdlib>

#include "support/cabbuilder.h"
#include "support/unpacktest.h"

namespace {

using testing::ElementsAre;
using testing::Pair;
using testsupport::CabBuilder;
using testsupport::CabFile;
using testsupport::CabMethod;
using testsupport::ReadFile;
using testsupport::TreeOf;
using testsupport::WriteFile;

class CabUnpack : public testsupport::UnpackTest<CCabUnpacker> {
 protected:
  bool OpenCabinet(const std::string& cabinet) { return OpenBytes(cabinet) && unpacker.FindFile(); }
  bool OpenFiles(std::vector<CabFile> files) {
    return OpenCabinet(CabBuilder().Add(CabMethod::kStored, std::move(files)).Build());
  }
};

TEST_F(CabUnpack, OpensAndClosesAsOftenAsAsked) {
  EXPECT_FALSE(unpacker.CloseArchive()) << "nothing was bound yet";
  EXPECT_FALSE(unpacker.FindFile());
  ASSERT_TRUE(OpenFiles({{"TOP.TXT", "t"}}));
  ASSERT_TRUE(OpenFiles({{"TOP.TXT", "t"}}));
  EXPECT_TRUE(unpacker.CloseArchive());
  EXPECT_TRUE(unpacker.CloseArchive());
  CABFILESHORTINFO info;
  info.strPath = L"kept";
  EXPECT_FALSE(unpacker.GetFileShortInfo(info));
  EXPECT_EQ(info.strPath, L"kept");
  unpacker.SetIniYesToAll({1, 1, 1, 1});
  WriteFile(folder.Path("text"), "not a cabinet");
  EXPECT_FALSE(Open("text"));
  EXPECT_FALSE(Open("missing"));
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
  ASSERT_TRUE(Open(name));
  EXPECT_TRUE(Unpack(L"\u8868"));
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
  ASSERT_TRUE(OpenFiles(files));
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
  ASSERT_TRUE(OpenFiles({{"X\\DOCS\\A.TXT", "1"},
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
  EXPECT_FALSE(OpenCabinet(cabinet));
  EXPECT_FALSE(unpacker.IsListComplete());
  EXPECT_THAT(Paths(), ElementsAre(L"A"));
}

TEST_F(CabUnpack, ReportsFilesAndKeepsAttributes) {
  ASSERT_TRUE(OpenFiles({{"D\\A", "1", 0x21}, {"E\\", ""}}));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(host.fileTreePaths,
              ElementsAre(Target() + L"\\D", Target() + L"\\D\\A", Target() + L"\\E"));
  EXPECT_THAT(host.progressMessages, ElementsAre(testsupport::ProgressMessage{0, L"A"},
                                                 testsupport::ProgressMessage{100, L""}));
  EXPECT_EQ(StatusOf("D/A").st_mode & 0777, 0444U);
  host.fileTreePaths.clear();
  EXPECT_TRUE(unpacker.UnpackFile(L"D\\A", folder.LibraryPath("out/E")));
  EXPECT_THAT(host.fileTreePaths,
              ElementsAre(Target() + L"\\E\\D", Target() + L"\\E\\D\\A", Target() + L"\\E\\D\\A"));
}

TEST_F(CabUnpack, WritesNothingWithoutASelectedFile) {
  ASSERT_TRUE(OpenFiles({{"TOP.TXT", "t"}}));
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"TOP.TXT", Target()));
  EXPECT_FALSE(Unpack(L"NONE"));
  EXPECT_TRUE(Out().empty());
  EXPECT_TRUE(Unpack(L"TOP.TXT"));
  EXPECT_TRUE(unpacker.UnpackCurrentFile(L"AGAIN.TXT", Target()));
  EXPECT_EQ(Out("AGAIN.TXT"), "t");
}

TEST_F(CabUnpack, UsesTheFirstOfFilesWithOnePath) {
  ASSERT_TRUE(OpenFiles({{"Name", "first"}, {"other", ""}, {"NAME", "second"}}));
  Set({.bUnpackFileNoPath = 1});
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("Name", "second"), Pair("other", "")));
}

TEST_F(CabUnpack, KeepsHostileNamesInsideTheTarget) {
  WriteFile(folder.Path("planted"), "untouched");
  symlink("..", folder.Path("out/link").c_str());
  ASSERT_TRUE(OpenFiles({{"..\\planted", "!"},
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
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("FINE", "1"), Pair("link@", "..")));
  for (const wchar_t* path : {L"..\\planted", L"\\planted", L"link\\planted", L"../planted"}) {
    EXPECT_FALSE(Unpack(path));
  }
  EXPECT_EQ(ReadFile(folder.Path("planted")), "untouched");
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
    ASSERT_TRUE(Open(namesOnDisk[0]) && unpacker.FindFile());
  }

  const std::string text = std::string(60'000, 'b') + std::string(40'000, 'c');
};

TEST_F(CabUnpackSet, FindsTheNextCabinetInAnyCase) {
  Write({"1.cab", "Split-2.CAB", "Split-3.CAB"}, {"1.cab", "split-2.cab", "SPLIT-3.cab"});
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(Out()["B"] == text);
}

TEST_F(CabUnpackSet, FailsWithoutTheRightNextCabinet) {
  Set({.bUnpackFileNoPath = 1});
  Write({"1.cab", "2.cab", "3.cab"}, {"1.cab", "2.cab", "3.cab"});
  WriteFile(folder.Path("2.cab"), ReadFile(folder.Path("3.cab")));
  EXPECT_FALSE(Unpack());
  unlink(folder.Path("2.cab").c_str());
  EXPECT_FALSE(Unpack(L"B"));
  Write({"1.cab", "..\\2.cab", "3.cab"}, {"sub/1.cab", "2.cab", "sub/3.cab"});
  EXPECT_FALSE(Unpack()) << "the set lies in one folder";
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
  ASSERT_TRUE(Open("g.cab") && unpacker.FindFile());
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(Out() == TreeOf(files));
}

}  // namespace
