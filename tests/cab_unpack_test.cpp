// CCabUnpacker: list, texts, unpacking, and what a hostile cabinet cannot reach.
#include <gmock/gmock.h>

#include <cstdlib>

#include "support/cabbuilder.h"
#include "support/rooms.h"
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
  ASSERT_TRUE(OpenFiles({{"TOP.TXT", "t"}}));
  ASSERT_TRUE(OpenFiles({{"TOP.TXT", "t"}}));
  EXPECT_FALSE(unpacker.UnpackCurrentFile(L"TOP.TXT", Target())) << "none was selected";
  EXPECT_TRUE(Unpack(L"TOP.TXT"));
  EXPECT_TRUE(unpacker.UnpackCurrentFile(L"AGAIN.TXT", Target()));
  EXPECT_THAT(Names(), ElementsAre("AGAIN.TXT", "TOP.TXT"));
  EXPECT_TRUE(unpacker.CloseArchive());
  EXPECT_TRUE(unpacker.CloseArchive());
  CABFILESHORTINFO info;
  EXPECT_FALSE(unpacker.GetFileShortInfo(info));
  unpacker.SetIniYesToAll({1, 1, 1, 1});
  EXPECT_FALSE(Open("missing"));
  INIYESTOALL answers;
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllHidden, 1) << "a failed open leaves the answers";
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
  ASSERT_TRUE(OpenFiles({{"DIR\\", "12345", 0x23}, {"D\\N.A.B", "12345", 0x23}}));
  CABFILEFULLINFO info;
  info.nSize = 99;
  EXPECT_TRUE(unpacker.FindNextFile() && unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strPath + L"|" + info.strName, L"DIR\\|");
  EXPECT_TRUE(info.bFolder && !info.bInFolder);
  EXPECT_EQ(info.nSize + info.nAttribs + info.nDate, 0) << "of folders only the path is told";
  EXPECT_FALSE(unpacker.FindNextFile()) << "this is the last";
  ASSERT_TRUE(unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strTitle + L"|" + info.strName + L"|" + info.strExt, L"N.A|N.A.B|B");
  EXPECT_TRUE(info.bInFolder && !info.bFolder);
  EXPECT_EQ(info.nSize, 5);
  EXPECT_EQ(info.nAttribs, 0x23);
  EXPECT_EQ(info.nDate, CabFile{}.date);
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
  EXPECT_THAT(unpacker.GetFileOutputInfo(L"docs\\a.txt"), testing::EndsWith(L", Size - 2 bytes"));
  EXPECT_EQ(unpacker.GetFileOutputInfo(L"A.TXT"), L"");
}

TEST_F(CabUnpack, ListsWhatADamagedTableStillTells) {
  std::string cabinet = CabBuilder().Add(CabMethod::kStored, {{"A", "1"}, {"B", "2"}}).Build();
  cabinet.resize(44 + 18 + 5);
  EXPECT_FALSE(OpenCabinet(cabinet));
  EXPECT_FALSE(unpacker.IsListComplete());
  EXPECT_THAT(Paths(), ElementsAre(L"A"));
}

TEST_F(CabUnpack, UsesTheFirstOfFilesWithOnePath) {
  ASSERT_TRUE(OpenFiles({{"Name", "first"}, {"other", ""}, {"NAME", "second"}}));
  Set({.bUnpackFileNoPath = 1});
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("Name", "second"), Pair("other", "")));
}

TEST_F(CabUnpack, KeepsHostileNamesInsideTheTarget) {
  WriteFile(folder.Path("planted"), "untouched");
  ASSERT_TRUE(OpenFiles({{"../planted", "!"}, {"", "!"}, {"..\\", ""}, {"FINE", "1", 0x8021}}));
  EXPECT_TRUE(Unpack());
  EXPECT_THAT(Out(), ElementsAre(Pair("FINE", "1")));
  EXPECT_EQ(StatusOf("FINE").st_mode & 0777, 0444U) << "a cabinet records no modes";
  EXPECT_EQ(ReadFile(folder.Path("planted")), "untouched");
}

TEST_F(CabUnpack, FindsTheNextCabinetInAnyCaseInItsFolderOnly) {
  const std::string text = std::string(60'000, 'b') + std::string(40'000, 'c');
  CabBuilder builder;
  builder.Add(CabMethod::kStored, {{"A", std::string(50'000, 'a')}, {"B", text}});
  auto set = builder.BuildSet(60'000, {"1.cab", "Split-2.CAB", "Split-3.CAB"});
  WriteFile(folder.Path("1.cab"), set.at(0));
  WriteFile(folder.Path("SPLIT-3.cab"), set.at(2));
  Set({});
  ASSERT_TRUE(Open("1.cab") && unpacker.FindFile());
  Listen();
  EXPECT_FALSE(Unpack()) << "the second is missing";
  EXPECT_THAT(ends, ElementsAre(Pair(morvunp::ItemReason::kMissingVolume, L"Split-2.CAB")));
  WriteFile(folder.Path("split-2.cab"), set.at(1));
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(Out()["B"] == text);

  set = builder.BuildSet(60'000, {"1.cab", "..\\2.cab", "3.cab"});
  for (const auto& [name, i] : {std::pair("sub/1.cab", 0U), {"2.cab", 1U}, {"sub/3.cab", 2U}}) {
    WriteFile(folder.Path(name), set.at(i));
  }
  ASSERT_TRUE(Open("sub/1.cab") && unpacker.FindFile());
  EXPECT_FALSE(Unpack()) << "the set lies in one folder";
}

TEST_F(CabUnpack, NeverOverwritesACabinetOfItsSet) {
  const std::vector<std::string> names{"1.cab", "2.cab", "3.cab"};
  for (const std::string name : {"2.cab", "3.cab"}) {
    CabBuilder builder;
    builder.Add(CabMethod::kStored, {{name, "evil"}, {"BIG", std::string(150'000, 'b')}});
    const auto set = builder.BuildSet(60'000, names);
    ASSERT_EQ(set.size(), names.size());
    for (std::size_t i = 0; i < set.size(); ++i) WriteFile(folder.Path(names[i]), set[i]);
    Set({});
    ASSERT_TRUE(Open("1.cab") && unpacker.FindFile());
    Listen();
    unpacker.UnpackArchive(folder.LibraryPath());
    ASSERT_EQ(told.size(), 2U);
    EXPECT_TRUE(IsOfArchive(told[0])) << name;
    for (std::size_t i = 0; i < set.size(); ++i) {
      EXPECT_TRUE(ReadFile(folder.Path(names[i])) == set[i]) << name;
    }
  }
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
