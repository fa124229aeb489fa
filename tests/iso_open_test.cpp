// Recognition and the directory reader: what an image lists as, and what
// damaged or hostile images cannot do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include <chrono>
#include <random>

#include "support/imagetest.h"
#include "support/isobuilder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::IsoBuilder;
using testsupport::IsoNode;
using testsupport::MakeIsoDescriptor;
using testsupport::PathsOf;
using testsupport::TempFolder;

constexpr std::size_t kSector = 2048;

class IsoOpen : public testsupport::ImageTest<IsoBuilder> {};

TEST_F(IsoOpen, ListsFoldersBeforeTheirContentsInRecordOrder) {
  IsoNode& a = builder.Root().AddFolder("A");
  a.AddFolder("B").AddFile("C.TXT;1", "c");
  a.AddFile("D.TXT;1", "dd");
  builder.Root().AddFolder("EMPTY");
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"A", L"A\\B", L"A\\B\\C.TXT", L"A\\D.TXT", L"EMPTY"));
  EXPECT_TRUE(unpacker.IsListComplete());
  EXPECT_EQ(InfoOf(L"A\\D.TXT").nSize, 2U);
  EXPECT_EQ(InfoOf(L"A\\D.TXT").nLocation,
            builder.LocationOf(*builder.Root().children[0]->children[1]));
}

TEST_F(IsoOpen, CutsOnlyTheVersionSuffixOne) {
  const std::pair<const char*, const wchar_t*> cases[] = {{"README.TXT;1", L"README.TXT"},
                                                          {"MAKEFILE.;1", L"MAKEFILE"},
                                                          {"A;1", L"A"},
                                                          {"NAME;2", L"NAME;2"},
                                                          {"NAME.;12", L"NAME.;12"},
                                                          {"A;01", L"A;01"},
                                                          {"DOT.", L"DOT."},
                                                          {"CUT\0REST;1", L"CUT"}};
  std::vector<std::wstring> expected;
  for (const auto& [identifier, name] : cases) {
    builder.Root().AddFile(std::string(identifier) == "CUT" ? std::string("CUT\0REST;1", 10)
                                                            : identifier);
    expected.emplace_back(name);
  }
  ASSERT_TRUE(Open());
  EXPECT_EQ(PathsOf(unpacker), expected);
}

TEST_F(IsoOpen, DecodesNamesInTheCodePageInForce) {
  builder.Root().AddFile("\xC3\xA9;1");      // UTF-8, valid in the locale's codeset
  builder.Root().AddFile("\xE9\x81;1");      // Latin; 0x81 has no meaning in 1252
  builder.Root().AddFile("\x95\x5C.TXT;1");  // Shift JIS with a backslash byte
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"\u00E9", L"\u00E9\uF781", L"\u2022\\.TXT"));
  ASSERT_TRUE(platform::SetAnsiCodePage("CP932"));
  ASSERT_TRUE(Open());
  EXPECT_EQ(PathsOf(unpacker)[2], L"\u8868.TXT");
  ASSERT_TRUE(platform::SetAnsiCodePage(""));
  EXPECT_FALSE(platform::SetAnsiCodePage("NO-SUCH-PAGE"));
  EXPECT_FALSE(platform::SetAnsiCodePage("UTF-16"));
}

TEST_F(IsoOpen, ReadsDatesAsLocalTimeAndRefusesImpossibleOnes) {
  setenv("TZ", "America/New_York", 1);
  tzset();
  IsoNode& file = builder.Root().AddFile("A;1");
  file.date = {101, 7, 3, 4, 5, 6, 20};  // summer time; the recorded zone is ignored
  ASSERT_TRUE(Open());
  EXPECT_EQ(InfoOf(L"A").timeModified, 994147506);
  file.date = {};
  ASSERT_TRUE(Open());
  EXPECT_NEAR(static_cast<double>(InfoOf(L"A").timeModified), static_cast<double>(time(nullptr)),
              60);
  for (const testsupport::IsoDate& date : {testsupport::IsoDate{69, 12, 31, 23, 59, 59},
                                           {101, 0, 1},
                                           {101, 13, 1},
                                           {101, 1, 0},
                                           {101, 1, 32},
                                           {101, 1, 1, 24},
                                           {101, 1, 1, 0, 60},
                                           {101, 1, 1, 0, 0, 60}}) {
    file.date = date;
    try {
      Open();
      ADD_FAILURE() << "a date was accepted";
    } catch (const CAtlException& error) {
      EXPECT_EQ(error.m_hr, E_FAIL);
    }
  }
  setenv("TZ", "UTC", 1);
  tzset();
}

TEST_F(IsoOpen, FindsTheFirstPrimaryDescriptorAtAnySectorOfTheFile) {
  builder.Root().AddFile("SECOND;1");
  std::string image = builder.Build();
  IsoBuilder early;
  early.Options().descriptorOffset = 3 * kSector;
  early.Root().AddFile("FIRST;1");
  const std::string other = early.Build();
  // Its root lies where the other builder put it, before byte 32768.
  image.replace(3 * kSector, other.size() - 3 * kSector, other.substr(3 * kSector));
  ASSERT_TRUE(Open(image));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"FIRST"));
}

TEST_F(IsoOpen, IgnoresOtherDescriptorsAndTheBigEndianHalves) {
  builder.Options().descriptorsBefore = {MakeIsoDescriptor(0), MakeIsoDescriptor(2),
                                         MakeIsoDescriptor(1, "CD001", 2)};
  builder.Root().AddFile("A;1", "x");
  std::string image = builder.Build();
  const std::size_t record = builder.RecordOffsetOf(*builder.Root().children[0]);
  image.replace(record + 6, 4, "\xFF\xFF\xFF\xFF");
  image.replace(record + 14, 4, "\xFF\xFF\xFF\xFF");
  ASSERT_TRUE(Open(image));
  EXPECT_EQ(InfoOf(L"A").nSize, 1U);
}

TEST_F(IsoOpen, RecognisesUdfBySequenceAndStopsAtAnUnknownIdentifier) {
  builder.Root().AddFile("A;1");
  builder.Options().descriptorsAfter = {
      MakeIsoDescriptor(0, "BEA01"), MakeIsoDescriptor(0, "NSR02"), MakeIsoDescriptor(0, "TEA01")};
  EXPECT_FALSE(Open()) << "an image that carries UDF is never read as ISO 9660";
  EXPECT_TRUE(unpacker.CloseArchive());
  builder.Options().descriptorsAfter = {MakeIsoDescriptor(0, "XXXXX"),
                                        MakeIsoDescriptor(0, "NSR02")};
  EXPECT_TRUE(Open());
}

TEST_F(IsoOpen, RefusesWhatIsNoImage) {
  EXPECT_FALSE(unpacker.OpenArchive(L""));
  EXPECT_FALSE(unpacker.OpenArchive(folder.LibraryPath("missing")));
  EXPECT_FALSE(unpacker.OpenArchive(folder.LibraryPath()));
  EXPECT_FALSE(Open(""));
  EXPECT_FALSE(Open(std::string(70000, 'x')));
  EXPECT_FALSE(Open(builder.Build().substr(0, 32768 + kSector - 1)));
  EXPECT_TRUE(unpacker.CloseArchive());
  builder.Options().hasPrimary = false;
  EXPECT_FALSE(Open());
}

TEST_F(IsoOpen, ReadsBlocksOf512And1024Bytes) {
  for (const std::uint32_t size : {512U, 1024U}) {
    IsoBuilder small;
    small.Options().blockSize = size;
    for (int i = 0; i < 60; ++i) small.Root().AddFile("FILE" + std::to_string(i) + ".TXT;1", "x");
    ASSERT_TRUE(Open(small.Build()));
    EXPECT_EQ(PathsOf(unpacker).size(), 60U) << size;
  }
}

TEST_F(IsoOpen, ContinuesAfterABlockFilledToItsLastByte) {
  // 34 + 34 + 44 * 45 = 2048: the last record ends with the block.
  for (int i = 0; i < 50; ++i) {
    builder.Root().AddFile("F" + std::to_string(100 + i) + ".TX;1").systemUse = "12";
  }
  ASSERT_TRUE(Open());
  EXPECT_EQ(PathsOf(unpacker).size(), 50U);
  EXPECT_TRUE(unpacker.IsListComplete());
}

TEST_F(IsoOpen, ListsAMultiExtentFileOncePerRecord) {
  builder.Root().AddFile("BIG;1", "one").flags = testsupport::kIsoFlagMultiExtent;
  builder.Root().AddFile("BIG;1", "second");
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"BIG", L"BIG"));
}

TEST_F(IsoOpen, ListsAFolderThatLeadsBackButNeverEntersItAgain) {
  IsoNode& sub = builder.Root().AddFolder("SUB");
  IsoNode& loop = sub.AddFolder("LOOP");
  IsoNode& twin = builder.Root().AddFolder("TWIN");
  sub.AddFile("X;1");
  builder.Build();
  loop.location = builder.LocationOf(builder.Root());
  twin.location = builder.LocationOf(sub);
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"SUB", L"SUB\\LOOP", L"SUB\\X", L"TWIN"));
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(IsoOpen, BoundsOverlappingDirectories) {
  // Every folder claims the whole rest of the image, records of the others
  // included: what is listed must stay in proportion to the image.
  for (int i = 0; i < 100; ++i) {
    IsoNode& node = builder.Root().AddFolder("D" + std::to_string(i));
    node.dataLength = 0xFFFFFFFF;
    for (int f = 0; f < 30; ++f) node.AddFile("F" + std::to_string(f) + ";1");
  }
  const std::string image = builder.Build();
  ASSERT_TRUE(Open(image));
  EXPECT_LT(PathsOf(unpacker).size(), image.size() / 34);
}

TEST_F(IsoOpen, EndsDirectoriesAtImpossibleRecords) {
  IsoNode& bad = builder.Root().AddFile("BAD;1");
  builder.Root().AddFile("AFTER;1");
  for (const int length : {1, 33}) {
    bad.recordLength = static_cast<std::uint8_t>(length);
    ASSERT_TRUE(Open());
    EXPECT_THAT(PathsOf(unpacker), IsEmpty());
    EXPECT_FALSE(unpacker.IsListComplete());
  }
  bad.recordLength.reset();
  std::string image = builder.Build();
  image[builder.RecordOffsetOf(bad) + 32] = '\xFF';  // identifier past its record
  ASSERT_TRUE(Open(image));
  EXPECT_THAT(PathsOf(unpacker), IsEmpty());
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(IsoOpen, RefusesBlockSizesThatNoVolumeHas) {
  const std::string image = builder.Build();
  for (const int size : {0, 1, 1000, 4096, 65535}) {
    std::string bad = image;
    bad[builder.PrimaryOffset() + 128] = static_cast<char>(size);
    bad[builder.PrimaryOffset() + 129] = static_cast<char>(size >> 8);
    EXPECT_FALSE(Open(bad)) << size;
  }
}

TEST_F(IsoOpen, SurvivesDeepNesting) {
  // 3,000 levels would be a path that nothing can create.
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 3000; ++i) node = &node->AddFolder("D");
  ASSERT_TRUE(Open());
  EXPECT_GT(PathsOf(unpacker).size(), 1000U);
  EXPECT_FALSE(unpacker.IsListComplete());
}

std::string SmallTree(IsoBuilder& builder) {
  IsoNode& docs = builder.Root().AddFolder("DOCS");
  docs.AddFile("A.TXT;1", "aaa");
  docs.AddFolder("SUB").AddFile("B.TXT;1", std::string(3000, 'b'));
  builder.Root().AddFile("C.TXT;1", "c");
  return builder.Build();
}

TEST_F(IsoOpen, BoundsFoldersWithoutNames) {
  // Their paths never grow, so that only the depth can end them.
  builder.Options().blockSize = 512;
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 20000; ++i) node = &node->AddFolder(std::string(1, '\0'));
  ASSERT_TRUE(Open());
  EXPECT_LT(PathsOf(unpacker).size(), 2000U);
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(IsoOpen, BoundsTheTextOfAllPaths) {
  // Short records in a deep folder: each repeats thousands of characters.
  IsoNode* node = &builder.Root();
  for (int i = 0; i < 18; ++i) node = &node->AddFolder(std::string(215, 'D'));
  for (int i = 0; i < 20000; ++i) node->AddFile("F");
  ASSERT_TRUE(Open());
  std::size_t characters = 0;
  for (const std::wstring& path : PathsOf(unpacker)) characters += path.size();
  EXPECT_LT(characters, 16'000'000U);
  EXPECT_FALSE(unpacker.IsListComplete());
}

/// Opens and walks; a refused date is a proper end too.
void OpenAnyhow(CIsoUnpacker& unpacker, const TempFolder& folder, const std::string& image) {
  testsupport::WriteFile(folder.Path("x.iso"), image);
  try {
    if (unpacker.OpenArchive(folder.LibraryPath("x.iso"))) {
      EXPECT_LE(PathsOf(unpacker).size(), image.size() / 34);
    }
  } catch (const CAtlException&) {
  }
}

TEST_F(IsoOpen, EndsOrderlyForAnImageCutAnywhere) {
  const std::string image = SmallTree(builder);
  for (std::size_t cut = 0; cut < image.size(); cut += 509) {
    OpenAnyhow(unpacker, folder, image.substr(0, cut));
  }
}

TEST_F(IsoOpen, EndsOrderlyForAnyFieldAtItsExtremes) {
  const std::string image = SmallTree(builder);
  const std::size_t directories = builder.LocationOf(builder.Root()) * kSector;
  const std::size_t files = builder.ContentOffsetOf(*builder.Root().children[0]->children[0]);
  ASSERT_LT(directories, files);
  for (std::size_t at = builder.PrimaryOffset(); at < files; ++at) {
    // What follows the root's record in the descriptor is never read, nor are
    // the zeros behind the records of a directory.
    if (at == builder.PrimaryOffset() + 190) at = directories;
    if (image[at] == 0 && at % kSector > 200) continue;
    for (const char value : {'\0', '\xFF'}) {
      std::string bad = image;
      bad[at] = value;
      OpenAnyhow(unpacker, folder, bad);
    }
  }
}

TEST_F(IsoOpen, EndsOrderlyForRandomDamage) {
  const std::string image = SmallTree(builder);
  std::minstd_rand random(7);
  for (int round = 0; round < 500; ++round) {
    std::string bad = image;
    for (int i = 0; i < 8; ++i)
      bad[32768 + random() % (bad.size() - 32768)] = static_cast<char>(random());
    OpenAnyhow(unpacker, folder, bad);
  }
}

TEST_F(IsoOpen, DeniesWritersWhileOpen) {
  builder.Root().AddFile("A;1");
  ASSERT_TRUE(Open());
  const std::wstring path = folder.LibraryPath("x.iso");
  EXPECT_EQ(CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr),
            INVALID_HANDLE_VALUE);
  EXPECT_EQ(GetLastError(), ERROR_SHARING_VIOLATION);
  CIsoUnpacker second;
  EXPECT_TRUE(second.OpenArchive(path)) << "readers share";
}

TEST_F(IsoOpen, ClearsTheAnswersOnlyAfterASuccessfulOpen) {
  INIYESTOALL answers{1, 1, 1, 1};
  unpacker.SetIniYesToAll(answers);
  EXPECT_FALSE(Open("no image"));
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllHidden, 1);
  ASSERT_TRUE(Open());
  unpacker.GetIniYesToAll(answers);
  EXPECT_EQ(answers.bYesToAllNormal + answers.bYesToAllSystem + answers.bYesToAllReadOnly +
                answers.bYesToAllHidden,
            0);
}

}  // namespace
