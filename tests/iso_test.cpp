// ISO 9660 (ECMA-119): recognition, names, directories, and the item list that
// both kinds of images fill.
#include <gmock/gmock.h>

#include "support/bytes.h"
#include "support/imagetest.h"
#include "support/rooms.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::IsoBuilder;
using testsupport::IsoNode;
using testsupport::Little;
using testsupport::Put;

constexpr std::size_t kSector = 2048;
constexpr std::size_t kPrimary = IsoBuilder::kPrimaryOffset;

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
  std::string image = builder.Build();
  const std::string primary = image.substr(kPrimary, kSector);
  Put(image, kPrimary, std::string("\0CD001\1", 7));
  Put(image, kPrimary + kSector, "\2CD001\1");
  Put(image, kPrimary + 2 * kSector, "\1CD001\2");
  Put(image, kPrimary + 4 * kSector, primary);
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), ElementsAre(L"SECOND"));
  std::string early = primary;
  Put(early, 156 + 10, Little(0, 4));  // an empty root
  Put(image, 3 * kSector, early);
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), IsEmpty());
}

TEST_F(Iso, IsNeverReadFromAnImageThatCarriesUdf) {
  std::string image = builder.Build();
  EXPECT_FALSE(OpenBytes(image.substr(0, kPrimary + kSector - 1)));
  Put(image, kPrimary + 2 * kSector + 1, "XXXXX");
  Put(image, kPrimary + 3 * kSector + 1, "NSR02");
  EXPECT_TRUE(OpenBytes(image)) << "an unknown identifier ends the sequence";
  Put(image, kPrimary + 2 * kSector + 1, "BEA01");
  EXPECT_FALSE(OpenBytes(image));
}

TEST_F(Iso, ReadsBlocksOfTheSizesThatVolumesHave) {
  for (const std::uint32_t size : {512U, 1024U, 2048U}) {
    IsoBuilder other(size);
    for (int i = 0; i < 60; ++i) other.Root().AddFile("FILE" + std::to_string(i) + ".TXT;1", "x");
    ASSERT_TRUE(OpenBytes(other.Build())) << size;
    EXPECT_EQ(Paths().size(), 60U) << size;
  }
  std::string bad = builder.Build();
  for (const unsigned size : {0U, 1U, 1000U, 4096U, 65535U}) {
    Put(bad, kPrimary + 128, Little(size, 2));
    EXPECT_FALSE(OpenBytes(bad)) << size;
  }
}

TEST_F(Iso, ContinuesAfterABlockFilledToItsLastByte) {
  // 34 + 34 + 44 * 45 = 2048: the last record ends with the block.
  for (int i = 0; i < 50; ++i) {
    builder.Root().AddFile("F" + std::to_string(10'000'000 + i) + ";1");
  }
  // A file of two extents has two records.
  const IsoNode& first = builder.Root().AddFile("BIG;1", "one");
  builder.Root().AddFile("BIG;1", "second");
  std::string image = builder.Build();
  image[builder.RecordOffsetOf(first) + 25] = '\x80';
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_EQ(Paths().size(), 52U);
  EXPECT_TRUE(unpacker.IsListComplete());
}

TEST_F(Iso, EndsDirectoriesAtImpossibleRecords) {
  builder.Root().AddFile("BEFORE;1");
  const IsoNode& bad = builder.Root().AddFile("BAD;1");
  builder.Root().AddFile("AFTER;1");
  const std::string image = builder.Build();
  const std::size_t record = builder.RecordOffsetOf(bad);
  const struct {
    const char* what;
    std::size_t offset;
    std::uint64_t value;
    std::size_t count;
  } cases[] = {{"no room for a record", record, 1, 1},
               {"no room for an identifier", record, 33, 1},
               {"an identifier past its record", record + 32, 6, 1},
               {"a directory that ends inside", kPrimary + 166,
                record + 37 - builder.ContentOffsetOf(builder.Root()), 4}};
  for (const auto& [what, offset, value, count] : cases) {
    std::string other = image;
    Put(other, offset, Little(value, count));
    ASSERT_TRUE(OpenBytes(other));
    EXPECT_THAT(Paths(), ElementsAre(L"BEFORE")) << what;
    EXPECT_FALSE(unpacker.IsListComplete()) << what;
  }
  std::string longer = image;
  Put(longer, kPrimary + 166, Little(2 * kSector, 4));
  ASSERT_TRUE(OpenBytes(longer));
  EXPECT_EQ(Paths().size(), 3U);
  EXPECT_FALSE(unpacker.IsListComplete()) << "the image ends before the directory does";
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

TEST_F(Iso, BoundsWhatIsInMemoryOfFoldersThatLieInEachOther) {
  IsoNode* node = &builder.Root();
  for (const char* name : {"A", "B"}) {
    node = &node->AddFolder(name);
    node->dataLength = 40 << 20;
    // What follows the records of a directory ends it.
    node->AddFile("ZEROS", std::string(4096, '\0'));
  }
  ASSERT_TRUE(OpenSparseImage());
  EXPECT_THAT(Paths(), ElementsAre(L"A", L"A\\ZEROS", L"A\\B", L"A\\B\\ZEROS"));
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(Iso, BoundsTheTextOfAllPaths) {
  // Short records in a deep folder: each repeats thousands of characters.
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 18; ++i) node = &node->AddFolder(std::string(215, 'D'));
  for (int i = 0; i < 20000; ++i) node->AddFile("F");
  ASSERT_TRUE(OpenImage());
  EXPECT_LT(Paths().size(), 5000U);
  EXPECT_FALSE(unpacker.IsListComplete());
}

// The item list.

TEST_F(Iso, KeepsACursorInTheList) {
  ASSERT_TRUE(OpenImage());
  EXPECT_FALSE(unpacker.FindFile() || unpacker.FindNextFile() || unpacker.LocateFile(L"A"));
  EXPECT_EQ(unpacker.GetFileOutputInfo(L"A"), L"");
  builder.Root().AddFile("A;1", "1");
  builder.Root().AddFile("a;1", "22");
  builder.Root().AddFile("B;1", "333");
  ASSERT_TRUE(OpenImage());
  ISOFILEFULLINFO info;
  info.strPath = L"old";
  EXPECT_TRUE(unpacker.FindFile());
  EXPECT_FALSE(unpacker.GetFileFullInfo(info)) << "it is before the first item";
  EXPECT_EQ(info.strPath, L"");
  // The first look-up walks and the later ones use an index.
  for (int round = 0; round < 3; ++round) {
    EXPECT_EQ(InfoOf(L"a").nSize, 1U);
    EXPECT_TRUE(unpacker.FindNextFile()) << "the walk goes on behind the match";
    unpacker.GetFileFullInfo(info);
    EXPECT_EQ(info.nSize, 2U);
    EXPECT_FALSE(unpacker.LocateFile(L"MISSING"));
    unpacker.GetFileFullInfo(info);
    EXPECT_EQ(info.nSize, 3U) << "the last item is current";
    EXPECT_THROW(unpacker.FindNextFile(), CInvalidArgException);
  }
}

TEST_F(Iso, SumsFilesAndCountsFolders) {
  IsoNode& docs = builder.Root().AddFolder("MYDOCS");
  docs.AddFile("A;1", std::string(1234, 'a'));
  docs.AddFolder("SUB").AddFile("B;1", std::string(100000, 'b'));
  builder.Root().AddFolder("MYDOCS2").AddFile("C;1", "c");
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(unpacker.IsFolder(L"DOC")) << "any part of a path will do";
  EXPECT_FALSE(unpacker.IsFolder(L"doc") || unpacker.IsFolder(L"A"));
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 3, Folders - 3, Size - 101 235 bytes, Packed - 101 235 bytes, Ratio - 100%");
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"MYDOCS"),
            L"Files - 2, Folders - 1, Size - 101 234 bytes, Packed - 101 234 bytes, Ratio - 100%");
  for (const wchar_t* none : {L"", L"mydocs"}) {
    EXPECT_EQ(unpacker.GetFolderOutputInfo(none),
              L"Files - 0, Folders - 0, Size - 0 bytes, Packed - 0 bytes, Ratio - 0%");
  }
  EXPECT_THAT(unpacker.GetFileOutputInfo(L"mydocs\\a"), testing::Not(testing::HasSubstr(L"Acc")));
}

// Unpacking.

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

}  // namespace
