// ISO 9660 (ECMA-119): recognition, names, directories, and the item list that
// both kinds of images fill.
#include <gmock/gmock.h>

#include <cstdlib>

#include "support/imagetest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::IsoBuilder;
using testsupport::IsoNode;
using testsupport::MakeIsoDescriptor;
using testsupport::TempFolder;
using testsupport::TreeOf;

constexpr std::size_t kSector = 2048;

class Iso : public testsupport::ImageTest<IsoBuilder> {};

TEST_F(Iso, CutsOnlyTheVersionSuffixOne) {
  const std::pair<std::string, const wchar_t*> cases[] = {{"README.TXT;1", L"README.TXT"},
                                                          {"MAKEFILE.;1", L"MAKEFILE"},
                                                          {"A;1", L"A"},
                                                          {"NAME;2", L"NAME;2"},
                                                          {"NAME.;12", L"NAME.;12"},
                                                          {"A;01", L"A;01"},
                                                          {"DOT.", L"DOT."},
                                                          {{"CUT\0REST;1", 10}, L"CUT"}};
  std::vector<std::wstring> expected;
  for (const auto& [identifier, name] : cases) {
    builder.Root().AddFile(identifier);
    expected.emplace_back(name);
  }
  ASSERT_TRUE(OpenImage());
  EXPECT_EQ(Paths(), expected);
}

TEST_F(Iso, DecodesNamesInTheCodePageInForce) {
  builder.Root().AddFile("\xC3\xA9;1");      // UTF-8, valid in the locale's codeset
  builder.Root().AddFile("\xE9\x81;1");      // Latin; 0x81 has no meaning in 1252
  builder.Root().AddFile("\x95\x5C.TXT;1");  // Shift JIS with a backslash byte
  ASSERT_TRUE(OpenImage());
  EXPECT_THAT(Paths(), ElementsAre(L"\u00E9", L"\u00E9\uF781", L"\u2022\\.TXT"));
  ASSERT_TRUE(platform::SetAnsiCodePage("CP932"));
  ASSERT_TRUE(OpenImage());
  EXPECT_EQ(Paths()[2], L"\u8868.TXT");
  ASSERT_TRUE(platform::SetAnsiCodePage(""));
  EXPECT_FALSE(platform::SetAnsiCodePage("NO-SUCH-PAGE"));
  EXPECT_FALSE(platform::SetAnsiCodePage("UTF-16"));
}

TEST_F(Iso, TellsSizeAndLocationFromTheLittleEndianHalves) {
  IsoNode& file = builder.Root().AddFile("A;1", "x");
  std::string image = builder.Build();
  const std::size_t record = builder.RecordOffsetOf(file);
  image.replace(record + 6, 4, "\xFF\xFF\xFF\xFF");
  image.replace(record + 14, 4, "\xFF\xFF\xFF\xFF");
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_EQ(InfoOf(L"A").nSize, 1U);
  EXPECT_EQ(InfoOf(L"A").nLocation, builder.LocationOf(file));
  EXPECT_EQ(InfoOf(L"A").nSize64 + InfoOf(L"A").nPackedSize, 0U);
}

TEST_F(Iso, FindsTheFirstPrimaryDescriptorAtAnySectorOfTheFile) {
  builder.Root().AddFile("SECOND;1");
  builder.Options().descriptorsBefore = {MakeIsoDescriptor(0), MakeIsoDescriptor(2),
                                         MakeIsoDescriptor(1, "CD001", 2)};
  std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), ElementsAre(L"SECOND"));
  IsoBuilder early;
  early.Options().descriptorOffset = 3 * kSector;
  early.Root().AddFile("FIRST;1");
  const std::string other = early.Build();
  image.replace(3 * kSector, other.size() - 3 * kSector, other.substr(3 * kSector));
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), ElementsAre(L"FIRST"));
}

TEST_F(Iso, IsNeverReadFromAnImageThatCarriesUdf) {
  const auto opensWith = [&](std::vector<std::string> identifiers) {
    builder.Options().descriptorsAfter.clear();
    for (const std::string& identifier : identifiers) {
      builder.Options().descriptorsAfter.push_back(MakeIsoDescriptor(0, identifier));
    }
    return OpenImage();
  };
  EXPECT_FALSE(opensWith({"BEA01", "NSR02", "TEA01"}));
  EXPECT_TRUE(opensWith({"XXXXX", "NSR02"})) << "an unknown identifier ends the sequence";
  EXPECT_FALSE(OpenBytes(builder.Build().substr(0, 32768 + kSector - 1)));
  builder.Options().hasPrimary = false;
  EXPECT_FALSE(OpenImage());
}

TEST_F(Iso, ReadsBlocksOfTheSizesThatVolumesHave) {
  for (int i = 0; i < 60; ++i) builder.Root().AddFile("FILE" + std::to_string(i) + ".TXT;1", "x");
  for (const std::uint32_t size : {512U, 1024U, 2048U}) {
    builder.Options().blockSize = size;
    ASSERT_TRUE(OpenImage()) << size;
    EXPECT_EQ(Paths().size(), 60U) << size;
  }
  std::string bad = builder.Build();
  for (const int size : {0, 1, 1000, 4096, 65535}) {
    bad[builder.PrimaryOffset() + 128] = static_cast<char>(size);
    bad[builder.PrimaryOffset() + 129] = static_cast<char>(size >> 8);
    EXPECT_FALSE(OpenBytes(bad)) << size;
  }
}

TEST_F(Iso, ContinuesAfterABlockFilledToItsLastByte) {
  // 34 + 34 + 44 * 45 = 2048: the last record ends with the block.
  for (int i = 0; i < 50; ++i) {
    builder.Root().AddFile("F" + std::to_string(100 + i) + ".TX;1").systemUse = "12";
  }
  // A file of two extents has two records.
  builder.Root().AddFile("BIG;1", "one").flags = testsupport::kIsoFlagMultiExtent;
  builder.Root().AddFile("BIG;1", "second");
  ASSERT_TRUE(OpenImage());
  EXPECT_EQ(Paths().size(), 52U);
  EXPECT_TRUE(unpacker.IsListComplete());
}

TEST_F(Iso, EndsDirectoriesAtImpossibleRecords) {
  IsoNode& bad = builder.Root().AddFile("BAD;1");
  builder.Root().AddFile("AFTER;1");
  std::vector<std::string> images;
  for (const int length : {1, 33}) {
    bad.recordLength = static_cast<std::uint8_t>(length);
    images.push_back(builder.Build());
  }
  bad.recordLength.reset();
  images.push_back(builder.Build());
  images.back()[builder.RecordOffsetOf(bad) + 32] = '\xFF';  // identifier past its record
  for (const std::string& image : images) {
    ASSERT_TRUE(OpenBytes(image));
    EXPECT_THAT(Paths(), IsEmpty());
    EXPECT_FALSE(unpacker.IsListComplete());
  }
}

TEST_F(Iso, BoundsOverlappingDirectories) {
  // Every folder claims the whole rest of the image, records of the others
  // included: what is listed must stay in proportion to the image.
  for (int i = 0; i < 100; ++i) {
    IsoNode& node = builder.Root().AddFolder("D" + std::to_string(i));
    node.dataLength = 0xFFFFFFFF;
    for (int f = 0; f < 30; ++f) node.AddFile("F" + std::to_string(f) + ";1");
  }
  const std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_LT(Paths().size(), image.size() / 34);
}

TEST_F(Iso, BoundsFoldersWithoutNames) {
  // Their paths never grow, so that only the depth can end them.
  builder.Options().blockSize = 512;
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 20000; ++i) node = &node->AddFolder(std::string(1, '\0'));
  ASSERT_TRUE(OpenImage());
  EXPECT_LT(Paths().size(), 2000U);
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(Iso, BoundsTheTextOfAllPaths) {
  // Short records in a deep folder: each repeats thousands of characters.
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 18; ++i) node = &node->AddFolder(std::string(215, 'D'));
  for (int i = 0; i < 20000; ++i) node->AddFile("F");
  ASSERT_TRUE(OpenImage());
  std::size_t characters = 0;
  for (const std::wstring& path : Paths()) characters += path.size();
  EXPECT_LT(characters, 16'000'000U);
  EXPECT_FALSE(unpacker.IsListComplete());
}

// The item list.

TEST_F(Iso, WalksOneItemAndRefusesToGoPastIt) {
  ASSERT_TRUE(OpenImage());
  EXPECT_FALSE(unpacker.FindFile() || unpacker.FindNextFile() || unpacker.LocateFile(L"A"));
  EXPECT_EQ(unpacker.GetFileOutputInfo(L"A"), L"");
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 0, Folders - 0, Size - 0 bytes, Packed - 0 bytes, Ratio - 0%");
  builder.Root().AddFile("ONLY;1");
  ASSERT_TRUE(OpenImage());
  ISOFILESHORTINFO info;
  EXPECT_TRUE(unpacker.FindFile());
  info.strPath = L"old";
  EXPECT_FALSE(unpacker.GetFileShortInfo(info)) << "the cursor is before the first item";
  EXPECT_EQ(info.strPath, L"");
  EXPECT_FALSE(unpacker.FindNextFile());
  EXPECT_TRUE(unpacker.GetFileShortInfo(info));
  EXPECT_EQ(info.strName, L"ONLY");
  EXPECT_THROW(unpacker.FindNextFile(), CInvalidArgException);
}

// The first look-up walks and the later ones use an index; both must do the
// same to the cursor.
TEST_F(Iso, LocatesTheFirstMatchAndLeavesTheCursorThere) {
  builder.Root().AddFile("A;1", "1");
  builder.Root().AddFile("a;1", "22");
  builder.Root().AddFile("B;1", "333");
  ASSERT_TRUE(OpenImage());
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(InfoOf(L"a").nSize, 1U);
    ISOFILEFULLINFO info;
    EXPECT_TRUE(unpacker.FindNextFile()) << "the walk goes on behind the match";
    unpacker.GetFileFullInfo(info);
    EXPECT_EQ(info.nSize, 2U);
    EXPECT_FALSE(unpacker.LocateFile(L"MISSING"));
    unpacker.GetFileFullInfo(info);
    EXPECT_EQ(info.nSize, 3U) << "the last item is current";
  }
}

TEST_F(Iso, SumsFilesAndCountsFolders) {
  IsoNode& docs = builder.Root().AddFolder("MYDOCS");
  docs.AddFile("A;1", std::string(1234, 'a'));
  docs.AddFolder("EMPTY");
  docs.AddFolder("SUB").AddFile("B;1", std::string(100000, 'b'));
  builder.Root().AddFolder("MYDOCS2").AddFile("C;1", "c");
  builder.Root().AddFile("ZERO;1");
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(unpacker.IsFolder(L"DOC")) << "any part of a path will do";
  EXPECT_FALSE(unpacker.IsFolder(L"doc") || unpacker.IsFolder(L"ZERO"));
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 4, Folders - 4, Size - 101 235 bytes, Packed - 101 235 bytes, Ratio - 100%");
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"MYDOCS"),
            L"Files - 2, Folders - 2, Size - 101 234 bytes, Packed - 101 234 bytes, Ratio - 100%");
  for (const wchar_t* none : {L"", L"mydocs"}) {
    EXPECT_EQ(unpacker.GetFolderOutputInfo(none),
              L"Files - 0, Folders - 0, Size - 0 bytes, Packed - 0 bytes, Ratio - 0%");
  }
  EXPECT_THAT(unpacker.GetFileOutputInfo(L"mydocs\\a"),
              testing::AllOf(
                  testing::StartsWith(L"Modified - "),
                  testing::HasSubstr(L", Size - 1 234 bytes, Packed - 1 234 bytes, Ratio - 100%")));
  EXPECT_THAT(unpacker.GetFileOutputInfo(L"ZERO"), testing::HasSubstr(L"Ratio - 0%"));
}

// A name of backslashes is a path of many folders; counting them must not
// take their paths' length squared.
TEST_F(Iso, CountsNamesFullOfBackslashes) {
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 16; ++i) node = &node->AddFolder(std::string(215, '\\'));
  for (int i = 0; i < 300; ++i) node->AddFolder(std::to_string(i) + std::string(200, '\\'));
  ASSERT_TRUE(OpenImage());
  EXPECT_THAT(unpacker.GetArchiveOutputInfo(), testing::StartsWith(L"Files - 0, Folders - "));
}

// Unpacking.

TEST_F(Iso, ReportsEachBlockAndNamesTheFileFirst) {
  builder.Root().AddFolder("D").AddFile("BIG.BIN;1", std::string(262144 * 2 + 10, 'x'));
  builder.Root().AddFile("ZERO;1");
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(host.progressMessages,
            (std::vector<testsupport::ProgressMessage>{
                {0, L"BIG.BIN"}, {49, L""}, {99, L""}, {100, L""}, {0, L"ZERO"}}));
}

TEST_F(Iso, IgnoresAStopSentToAnotherWindow) {
  builder.Root().AddFile("A;1", "a");
  ASSERT_TRUE(OpenImage());
  bool seen = false;
  const HWND other = platform::MakeWindow(nullptr, [&](UINT message, WPARAM, LPARAM) {
    seen = seen || message == WM_UNPACK_STOP;
    return LRESULT{0};
  });
  PostMessageW(other, WM_UNPACK_STOP, 0, 0);
  EXPECT_TRUE(Unpack());
  EXPECT_TRUE(seen) << "it was dispatched to its own window";
  DestroyWindow(other);
  host.PostStopFromButton();
  host.messageBoxAnswers = {IDYES};
  EXPECT_FALSE(Unpack()) << "a button of the progress window counts";
}

TEST_F(Iso, MatchesTheTreeThatToolsPackedInto) {
  testsupport::WriteFile(folder.Path("tree/DOCS/README.TXT"), "read me");
  testsupport::WriteFile(folder.Path("tree/DOCS/DEEP/ER/DATA.BIN"), std::string(300000, '\7'));
  testsupport::WriteFile(folder.Path("tree/EMPTY.TXT"), "");
  mkdir(folder.Path("tree/NOTHING").c_str(), 0777);
  for (const std::string command :
       {"genisoimage -quiet -iso-level 1 -J -R -o ",
        "xorriso -report_about SORRY -as mkisofs -iso-level 3 -J -r -o "}) {
    TempFolder fresh;
    const std::string line = command + fresh.Path("x.iso") + " " + folder.Path("tree");
    ASSERT_EQ(system(line.c_str()), 0) << line;
    ASSERT_TRUE(unpacker.OpenArchive(fresh.LibraryPath("x.iso")));
    EXPECT_TRUE(unpacker.UnpackArchive(fresh.LibraryPath("out"))) << command;
    EXPECT_EQ(TreeOf(fresh.Path("out")), TreeOf(folder.Path("tree"))) << command;
  }
}

}  // namespace
