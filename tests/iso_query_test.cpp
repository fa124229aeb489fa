// The item list: cursor, records, look-ups and summary texts.
#include <gtest/gtest.h>

#include "support/imagetest.h"
#include "support/isobuilder.h"

namespace {

using testsupport::IsoBuilder;
using testsupport::IsoNode;

class IsoQuery : public testsupport::ImageTest<IsoBuilder> {
 protected:
  void Open() { ASSERT_TRUE(ImageTest::Open()); }
};

TEST_F(IsoQuery, WalksOneItemAndRefusesToGoPastIt) {
  builder.Root().AddFile("ONLY;1");
  Open();
  ISOFILESHORTINFO info;
  EXPECT_TRUE(unpacker.FindFile());
  EXPECT_FALSE(unpacker.GetFileShortInfo(info)) << "the cursor is before the first item";
  EXPECT_FALSE(unpacker.FindNextFile());
  EXPECT_TRUE(unpacker.GetFileShortInfo(info));
  EXPECT_EQ(info.strName, L"ONLY");
  EXPECT_THROW(unpacker.FindNextFile(), CInvalidArgException);
}

TEST_F(IsoQuery, AnswersForAnEmptyImage) {
  Open();
  EXPECT_FALSE(unpacker.FindFile());
  EXPECT_FALSE(unpacker.FindNextFile());
  EXPECT_FALSE(unpacker.LocateFile(L"A"));
  EXPECT_FALSE(unpacker.IsFolder(L"A"));
  EXPECT_EQ(unpacker.GetFileOutputInfo(L"A"), L"");
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 0, Folders - 0, Size - 0 bytes, Packed - 0 bytes, Ratio - 0%");
}

TEST_F(IsoQuery, SplitsNamesAtTheLastDotAndClearsRecords) {
  IsoNode& docs = builder.Root().AddFolder("DOCS.OLD");
  docs.AddFile("A.B.C;1", "12345").hidden = true;
  docs.AddFile("PLAIN;1");
  Open();
  ISOFILEFULLINFO info;
  ASSERT_TRUE(unpacker.LocateFile(L"docs.old\\a.b.c"));
  ASSERT_TRUE(unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strTitle + L"|" + info.strExt, L"A.B|C");
  EXPECT_EQ(info.nSize, 5U);
  EXPECT_EQ(info.nSize64 + info.nPackedSize, 0U);
  EXPECT_EQ(info.bHidden + info.bInFolder * 10 + info.bFolder * 100, 11);
  ASSERT_TRUE(unpacker.LocateFile(L"DOCS.OLD"));
  ASSERT_TRUE(unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strTitle + L"|" + info.strExt, L"DOCS|OLD");
  EXPECT_EQ(info.bHidden + info.bInFolder * 10 + info.bFolder * 100, 100);
  ASSERT_TRUE(unpacker.LocateFile(L"DOCS.OLD\\PLAIN"));
  ASSERT_TRUE(unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strTitle + L"|" + info.strExt, L"PLAIN|");
  unpacker.FindFile();
  EXPECT_FALSE(unpacker.GetFileFullInfo(info));
  EXPECT_EQ(info.strPath + info.strName + info.strTitle, L"");
  EXPECT_EQ(info.nSize + info.bInFolder, 0U);
}

// The first look-up walks and the later ones use an index; both must do the
// same to the cursor.
TEST_F(IsoQuery, LocatesTheFirstMatchAndLeavesTheCursorThere) {
  builder.Root().AddFile("A;1", "1");
  builder.Root().AddFile("a;1", "22");
  builder.Root().AddFile("B;1", "333");
  Open();
  for (int round = 0; round < 3; ++round) {
    ISOFILEFULLINFO info;
    ASSERT_TRUE(unpacker.LocateFile(L"a"));
    unpacker.GetFileFullInfo(info);
    EXPECT_EQ(info.nSize, 1U);
    EXPECT_TRUE(unpacker.FindNextFile()) << "the walk goes on behind the match";
    unpacker.GetFileFullInfo(info);
    EXPECT_EQ(info.nSize, 2U);
    EXPECT_FALSE(unpacker.LocateFile(L"MISSING"));
    unpacker.GetFileFullInfo(info);
    EXPECT_EQ(info.nSize, 3U) << "the last item is current";
  }
}

TEST_F(IsoQuery, FindsFoldersBySubstring) {
  builder.Root().AddFolder("MYDOCS").AddFile("README;1");
  Open();
  EXPECT_TRUE(unpacker.IsFolder(L"DOC"));
  EXPECT_FALSE(unpacker.IsFolder(L"doc"));
  EXPECT_FALSE(unpacker.IsFolder(L"README"));
}

TEST_F(IsoQuery, SumsFilesAndCountsFolders) {
  IsoNode& docs = builder.Root().AddFolder("DOCS");
  docs.AddFile("A;1", std::string(1234, 'a'));
  docs.AddFolder("EMPTY");
  docs.AddFolder("SUB").AddFile("B;1", std::string(100000, 'b'));
  builder.Root().AddFolder("DOCS2").AddFile("C;1", "c");
  builder.Root().AddFile("ZERO;1");
  Open();
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 4, Folders - 4, Size - 101 235 bytes, Packed - 101 235 bytes, Ratio - 100%");
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"DOCS"),
            L"Files - 2, Folders - 2, Size - 101 234 bytes, Packed - 101 234 bytes, Ratio - 100%");
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L""), unpacker.GetFolderOutputInfo(L"docs"))
      << "no item lies below a folder without a name";
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"docs"),
            L"Files - 0, Folders - 0, Size - 0 bytes, Packed - 0 bytes, Ratio - 0%");
  const std::wstring text = unpacker.GetFileOutputInfo(L"docs\\a");
  EXPECT_EQ(text.substr(0, 11), L"Modified - ");
  EXPECT_NE(text.find(L", Size - 1 234 bytes, Packed - 1 234 bytes, Ratio - 100%"), text.npos);
  EXPECT_NE(unpacker.GetFileOutputInfo(L"ZERO").find(L"Ratio - 0%"), text.npos);
}

// A name of backslashes is a path of many folders; counting them must not
// take their paths' length squared.
TEST_F(IsoQuery, CountsNamesFullOfBackslashes) {
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 16; ++i) node = &node->AddFolder(std::string(215, '\\'));
  for (int i = 0; i < 300; ++i) node->AddFolder(std::to_string(i) + std::string(200, '\\'));
  Open();
  EXPECT_NE(unpacker.GetArchiveOutputInfo().find(L"Files - 0, Folders - "), std::wstring::npos);
}

TEST_F(IsoQuery, KeepsTheListAfterClosingAndReplacesItOnOpening) {
  builder.Root().AddFile("A;1");
  Open();
  EXPECT_TRUE(unpacker.CloseArchive());
  EXPECT_TRUE(unpacker.LocateFile(L"A"));
  EXPECT_FALSE(unpacker.UnpackFile(L"A", folder.LibraryPath())) << "nothing is read when closed";
  builder.Root().children.clear();
  builder.Root().AddFile("B;1");
  Open();
  EXPECT_FALSE(unpacker.LocateFile(L"A"));
}

}  // namespace
