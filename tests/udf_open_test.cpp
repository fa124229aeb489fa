// The UDF volume structure and file tree (ECMA-167): what an image lists as,
// what is refused, and what damaged or hostile images cannot do.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>
#include <unistd.h>

#include <functional>
#include <random>

#include "iso/udfscan.h"
#include "support/imagetest.h"
#include "support/udfbuilder.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::FixTag;
using testsupport::kUdfEmbedded;
using testsupport::kUdfLong;
using testsupport::kUdfShort;
using testsupport::MakeUdfDate;
using testsupport::PathsOf;
using testsupport::TempFolder;
using testsupport::UdfBuilder;
using testsupport::UdfDate;
using testsupport::UdfMap;
using testsupport::UdfNode;

// Offsets in an entry (ECMA-167 4/14.9).
constexpr std::size_t kInformationLength = 56;
constexpr std::size_t kExtendedAttributesLength = 168;
constexpr std::size_t kDescriptorsLength = 172;

/// Little-endian.
void SetNumber(std::string& image, std::size_t offset, std::uint64_t value, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i) {
    image.at(offset + i) = static_cast<char>(value >> (8 * i) & 0xFF);
  }
}

class UdfOpen : public testsupport::ImageTest<UdfBuilder> {};

TEST_F(UdfOpen, ListsFoldersBeforeTheirContentsInRecordOrder) {
  UdfNode& a = builder.Root().AddFolder("a");
  a.AddFolder("Long name of a folder").AddFile("c.txt", "c");
  a.AddFile("d.txt", "dd").hidden = true;
  builder.Root().AddFolder("empty").hidden = true;
  builder.Root().AddFile("Top").allocation = kUdfLong;
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker),
              ElementsAre(L"a", L"a\\Long name of a folder", L"a\\Long name of a folder\\c.txt",
                          L"a\\d.txt", L"empty", L"Top"));
  EXPECT_TRUE(unpacker.IsListComplete());
  EXPECT_EQ(InfoOf(L"a").bFolder * 100 + InfoOf(L"a").bHidden * 10 + InfoOf(L"a").bInFolder, 100);
  EXPECT_EQ(InfoOf(L"empty").bHidden, 1);
  const ISOFILEFULLINFO file = InfoOf(L"a\\d.txt");
  EXPECT_EQ(file.bFolder * 100 + file.bHidden * 10 + file.bInFolder, 11);
}

TEST_F(UdfOpen, TellsSizesFromTheEntry) {
  builder.Root().AddFile("extents", std::string(5000, 'x')).fragments = 3;
  builder.Root().AddFile("embedded", "0123456789").allocation = kUdfEmbedded;
  builder.Root().AddFile("empty");
  UdfNode& huge = builder.Root().AddFile("huge");
  huge.informationLength = 0x1234567890AB;
  huge.blocksRecorded = 0x100000002;
  ASSERT_TRUE(Open());
  const auto sizes = [&](const std::wstring& path) {
    const ISOFILEFULLINFO info = InfoOf(path);
    EXPECT_EQ(info.nSize + info.nLocation, 0U);
    return std::pair(info.nSize64, info.nPackedSize);
  };
  EXPECT_EQ(sizes(L"extents"), std::pair(ULONGLONG{5000}, ULONGLONG{6144}));
  EXPECT_EQ(sizes(L"embedded"), std::pair(ULONGLONG{10}, ULONGLONG{10}));
  EXPECT_EQ(sizes(L"empty"), std::pair(ULONGLONG{0}, ULONGLONG{0}));
  EXPECT_EQ(sizes(L"huge"), std::pair(ULONGLONG{0x1234567890AB}, ULONGLONG{0x100000002} * 2048));
}

TEST_F(UdfOpen, ReadsDirectoriesHoweverTheyAreRecorded) {
  for (const std::uint8_t allocation : {kUdfShort, kUdfLong, kUdfEmbedded}) {
    UdfBuilder other;
    other.Root().allocation = allocation;
    UdfNode& sub = other.Root().AddFolder("sub");
    sub.allocation = allocation;
    sub.wholeBlocks = true;
    // Identifier descriptors cross from one piece to the next.
    other.Root().fragments = sub.fragments = allocation == kUdfEmbedded ? 1 : 4;
    std::vector<std::wstring> expected = {L"sub"};
    const int count = allocation == kUdfEmbedded ? 20 : 200;
    for (int i = 0; i < count; ++i) {
      sub.AddFile("file " + std::to_string(i));
      expected.push_back(L"sub\\file " + std::to_wstring(i));
    }
    for (int i = 0; i < count; ++i) {
      other.Root().AddFile("top " + std::to_string(i));
      expected.push_back(L"top " + std::to_wstring(i));
    }
    ASSERT_TRUE(Open(other.Build())) << int{allocation};
    EXPECT_EQ(PathsOf(unpacker), expected) << int{allocation};
  }
}

TEST_F(UdfOpen, DecodesIdentifiersByTheirCompression) {
  const std::pair<std::string, std::wstring> cases[] = {
      {"\x08\xE9\x80z", L"\u00E9\u0080z"},
      {std::string("\x10\x00\x41\x04\x16", 5), L"A\u0416"},
      {std::string("\x10\xD8\x3D\xDE\x00", 5), L"\U0001F600"},
      {std::string("\x10\x00\x41\x42", 4), L"A\u4200"},
      {std::string("\x09\x41", 2), L""},
      {std::string("\xFE\x41", 2), L""},
      {"\x08", L""},
      {"", L""}};
  std::vector<std::wstring> expected;
  for (const auto& [identifier, name] : cases) {
    builder.Root().AddFile("").identifier = identifier;
    expected.push_back(name);
  }
  ASSERT_TRUE(Open());
  EXPECT_EQ(PathsOf(unpacker), expected);
}

TEST_F(UdfOpen, FindsTheIdentifierBehindTheImplementationUse) {
  builder.Root().AddFile("four").implementationUse = std::string(4, '\xAA');
  builder.Root().AddFile("seven").implementationUse = std::string(7, '\xAA');
  builder.Root().AddFile("many").implementationUse = std::string(1000, '\xAA');
  builder.Root().AddFile("last");
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"four", L"seven", L"many", L"last"));
}

TEST_F(UdfOpen, RequiresZerosUpToAMultipleOfFour) {
  UdfNode& file = builder.Root().AddFile("four");
  UdfNode& next = builder.Root().AddFile("next");
  const std::string image = builder.Build();
  const std::size_t offset = builder.IdentifierOffsetOf(file);
  ASSERT_EQ(builder.IdentifierOffsetOf(next), offset + 44) << "38 + 5, rounded up";
  ASSERT_TRUE(Open(image));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"four", L"next"));
  std::string bad = image;
  bad[offset + 43] = 1;
  EXPECT_FALSE(Open(bad));
  bad = image;
  bad[offset - 1] = 1;  // behind the entry of the parent
  EXPECT_FALSE(Open(bad));
}

TEST_F(UdfOpen, RefusesDirectoriesThatEndInsideADescriptor) {
  UdfNode& root = builder.Root();
  root.AddFile("four");
  for (const std::uint8_t allocation : {kUdfShort, kUdfEmbedded}) {
    root.allocation = allocation;
    root.informationLength.reset();
    ASSERT_TRUE(Open());
    // Behind the 40 bytes of the parent's: in the header, at its end, in the
    // identifier, in the rounding; then past all that is recorded.
    for (const int length : {41, 77, 78, 82, 83, 88, 100, 4096}) {
      root.informationLength = static_cast<unsigned>(length);
      EXPECT_FALSE(Open()) << int{allocation} << ", " << length;
    }
    root.informationLength = std::uint64_t{1} << 40;
    EXPECT_FALSE(Open()) << int{allocation};
    root.informationLength = 40;
    EXPECT_TRUE(Open()) << int{allocation};
    EXPECT_THAT(PathsOf(unpacker), IsEmpty());
  }
}

TEST_F(UdfOpen, GoesByTheEntryWhereTheIdentifierDescriptorSaysOtherwise) {
  builder.Root().AddFolder("no folder").fileType = 5;
  UdfNode& file = builder.Root().AddFile("no file");
  file.fileType = 4;
  file.deleted = true;
  UdfNode& masked = builder.Root().AddFile("masked");
  masked.icbLength = 2048U | testsupport::kUdfAllocatedOnly;
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"no folder", L"no file", L"masked"));
  EXPECT_EQ(InfoOf(L"no folder").bFolder, 0);
  EXPECT_EQ(InfoOf(L"no file").bFolder, 1);
}

TEST_F(UdfOpen, ReadsDatesAsLocalTimeAndRefusesImpossibleOnes) {
  setenv("TZ", "America/New_York", 1);
  tzset();
  UdfNode& file = builder.Root().AddFile("a");
  file.modified = MakeUdfDate(2001, 7, 3, 4, 5, 6);  // summer time; the zone is ignored
  file.accessed = MakeUdfDate(2001, 1, 3, 4, 5, 6);
  ASSERT_TRUE(Open());
  EXPECT_EQ(InfoOf(L"a").timeModified, 994147506);
  EXPECT_EQ(InfoOf(L"a").timeAccessed, 978512706);
  file.modified = {};
  ASSERT_TRUE(Open());
  EXPECT_NEAR(static_cast<double>(InfoOf(L"a").timeModified), static_cast<double>(time(nullptr)),
              60);
  EXPECT_EQ(InfoOf(L"a").timeAccessed, 978512706);
  const UdfDate good = file.accessed;
  for (const UdfDate& date :
       {MakeUdfDate(1969, 12, 31), MakeUdfDate(2001, 0, 1), MakeUdfDate(2001, 13, 1),
        MakeUdfDate(2001, 1, 0), MakeUdfDate(2001, 1, 32), MakeUdfDate(2001, 1, 1, 24),
        MakeUdfDate(2001, 1, 1, 0, 60), MakeUdfDate(2001, 1, 1, 0, 0, 60)}) {
    for (UdfDate UdfNode::*member : {&UdfNode::modified, &UdfNode::accessed}) {
      file.modified = file.accessed = good;
      file.*member = date;
      try {
        Open();
        ADD_FAILURE() << "a date was accepted";
      } catch (const CAtlException& error) {
        EXPECT_EQ(error.m_hr, E_FAIL);
      }
    }
  }
  setenv("TZ", "UTC", 1);
  tzset();
}

TEST_F(UdfOpen, TellsDatesAndSizesInTheSummaryTexts) {
  UdfNode& docs = builder.Root().AddFolder("docs");
  docs.AddFile("a", std::string(5000, 'a'));
  docs.AddFile("b", "0123456789").allocation = kUdfEmbedded;
  docs.AddFolder("sub").AddFile("zero");
  builder.Root().AddFile("half", std::string(4096, 'h')).blocksRecorded = 1;
  ASSERT_TRUE(Open());
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 4, Folders - 2, Size - 9 106 bytes, Packed - 8 202 bytes, Ratio - 90%");
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"docs"),
            L"Files - 3, Folders - 1, Size - 5 010 bytes, Packed - 6 154 bytes, Ratio - 122%");
  const std::wstring text = unpacker.GetFileOutputInfo(L"docs\\a");
  const std::size_t accessed = text.find(L", Accessed - ");
  const std::size_t size = text.find(L", Size - 5 000 bytes, Packed - 6 144 bytes, Ratio - 122%");
  ASSERT_NE(accessed, text.npos) << "in " << testing::PrintToString(text);
  ASSERT_NE(size, text.npos) << "in " << testing::PrintToString(text);
  EXPECT_EQ(text.substr(0, 11), L"Modified - ");
  const std::wstring modifiedDate = text.substr(11, accessed - 11);
  const std::wstring accessedDate = text.substr(accessed + 13, size - accessed - 13);
  EXPECT_NE(modifiedDate, accessedDate);
  EXPECT_NE(modifiedDate.find(L"04:05"), text.npos) << testing::PrintToString(modifiedDate);
  EXPECT_NE(accessedDate.find(L"05:06"), text.npos) << testing::PrintToString(accessedDate);
  EXPECT_NE(unpacker.GetFileOutputInfo(L"half").find(L"Ratio - 50%"), text.npos);
}

TEST_F(UdfOpen, ScansTheRecognitionSequenceUpToAnUnknownIdentifier) {
  builder.Root().AddFile("a");
  using Sequence = std::vector<std::string>;
  for (const Sequence& sequence : {Sequence{"BEA01", "NSR03", "TEA01"}, Sequence{"NSR02"},
                                   Sequence{"CD001", "CD001", "BEA01", "NSR02", "TEA01"},
                                   Sequence{"CDW02", "BOOT2", "TEA01", "NSR03"}}) {
    builder.Options().recognition = sequence;
    EXPECT_TRUE(Open()) << testing::PrintToString(sequence);
  }
  for (const Sequence& sequence :
       {Sequence{}, Sequence{"BEA01", "TEA01"}, Sequence{"BEA01", "NSR04", "NSR03"},
        // As an image with sectors of 4096 bytes has them.
        Sequence{"BEA01", std::string(5, '\0'), "NSR02"}}) {
    builder.Options().recognition = sequence;
    EXPECT_FALSE(Open()) << testing::PrintToString(sequence);
  }
}

TEST_F(UdfOpen, FindsTheSectorSizeByItsAnchor) {
  for (const std::uint32_t size : {512U, 1024U, 2048U, 4096U}) {
    UdfBuilder other;
    other.Options().sectorSize = size;
    // Large enough for an anchor of larger sectors.
    other.Root().AddFile("big", std::string(1200000, 'x'));
    for (int i = 0; i < 60; ++i) other.Root().AddFile("file " + std::to_string(i), "x");
    ASSERT_TRUE(Open(other.Build())) << size;
    EXPECT_EQ(PathsOf(unpacker).size(), 61U) << size;
    EXPECT_EQ(InfoOf(L"file 59").nPackedSize, size);
  }
}

TEST_F(UdfOpen, PrefersSectorsOf2048Bytes) {
  builder.Root().AddFile("of 2048");
  std::string image = builder.Build();
  UdfBuilder other;
  other.Options().sectorSize = 512;
  other.Root().AddFile("of 512");
  const std::string small = other.Build();
  // Both whole: the smaller sectors have their sequence behind the other one.
  constexpr std::size_t kSequence = 65536;
  image.replace(other.AnchorOffset(), small.size() - other.AnchorOffset(),
                small.substr(other.AnchorOffset()));
  image.replace(kSequence, 2048, small.substr(other.SequenceOffset(), 2048));
  SetNumber(image, other.AnchorOffset() + 20, kSequence / 512, 4);
  ASSERT_TRUE(Open(image));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"of 2048"));
  ++image[builder.AnchorOffset() + 4];
  ASSERT_TRUE(Open(image));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"of 512"));
  ++image[other.AnchorOffset() + 4];
  EXPECT_FALSE(Open(image));
}

TEST_F(UdfOpen, NeedsAnAnchorAndTheSectorsUpToIt) {
  builder.Options().partitionStart = 40;
  builder.Root().AddFile("a");
  const std::string image = builder.Build();
  ASSERT_EQ(image.size(), 257U * 2048);
  EXPECT_TRUE(Open(image));
  EXPECT_FALSE(Open(image.substr(0, image.size() - 1)));
  EXPECT_TRUE(unpacker.CloseArchive());
  std::string bad = image;
  bad[builder.AnchorOffset()] = 3;
  FixTag(bad, builder.AnchorOffset());
  EXPECT_FALSE(Open(bad));
  // The sum takes in every byte of the tag but itself.
  for (std::size_t i = 2; i < 16; ++i) {
    bad = image;
    ++bad[builder.AnchorOffset() + i];
    EXPECT_FALSE(Open(bad)) << i;
    if (i == 4) continue;
    FixTag(bad, builder.AnchorOffset());
    EXPECT_TRUE(Open(bad)) << i;
  }
}

TEST_F(UdfOpen, ReadsTheSequenceInAnyOrderUpToTheTerminator) {
  builder.Root().AddFile("a");
  std::string image = builder.Build();
  const auto move = [&](std::size_t from, std::size_t to) {
    image.replace(to, 2048, image.substr(from, 2048));
  };
  // A second copy of the volume takes a partition that is taken already; it
  // does no harm behind the terminator.
  move(builder.VolumeDescriptorOffset(), builder.TerminatorOffset() + 2048);
  EXPECT_TRUE(Open(image));
  image[builder.TerminatorOffset()] = 7;
  FixTag(image, builder.TerminatorOffset());
  EXPECT_FALSE(Open(image)) << "other descriptors are passed over";

  builder.Options().hasTerminator = false;
  EXPECT_TRUE(Open());
  builder.Options().sequenceSectors = 2;
  EXPECT_TRUE(Open());
  builder.Options().sequenceSectors = 1;
  EXPECT_FALSE(Open()) << "the volume lies behind the sequence";

  builder.Options().sequenceSectors = 16;
  image = builder.Build();
  move(builder.VolumeDescriptorOffset(), builder.TerminatorOffset());
  move(builder.PartitionDescriptorOffset(), builder.VolumeDescriptorOffset());
  move(builder.TerminatorOffset(), builder.PartitionDescriptorOffset());
  image.replace(builder.TerminatorOffset(), 2048, std::string(2048, '\0'));
  EXPECT_TRUE(Open(image)) << "the partition stands behind the volume";
}

TEST_F(UdfOpen, RefusesPartitionMapsThatDoNotBind) {
  builder.Root().AddFile("a");
  const std::uint16_t number = builder.Volume().partitionNumber;
  using Maps = std::vector<UdfMap>;
  for (const Maps& maps :
       {Maps{{1, 6, static_cast<std::uint16_t>(number + 1)}}, Maps{{1, 6, number}, {1, 6, number}},
        Maps{{2, 64, number}}, Maps{{1, 6, number}, {2, 64, 0}}, Maps{{0, 6, number}},
        Maps{{1, 0, number}}}) {
    builder.Volume().maps = maps;
    EXPECT_FALSE(Open()) << testing::PrintToString(maps);
  }
  builder.Volume().maps.reset();
  const std::string image = builder.Build();
  ASSERT_TRUE(Open(image));
  std::string bad = image;
  ++bad[builder.PartitionDescriptorOffset() + 4];
  EXPECT_FALSE(Open(bad)) << "a partition with a damaged tag does not count";
  bad = image;
  ++bad[builder.VolumeDescriptorOffset() + 4];
  EXPECT_FALSE(Open(bad)) << "no volume is left";
  for (const std::uint32_t count : {2U, 300U, 0xFFFFFFFFU}) {
    bad = image;
    SetNumber(bad, builder.VolumeDescriptorOffset() + 268, count, 4);
    EXPECT_FALSE(Open(bad)) << count;
  }
}

TEST_F(UdfOpen, ListsTheVolumesOneAfterTheOther) {
  builder.Root(0).AddFile("first", "1");
  builder.AddVolume();
  builder.Root(1).AddFolder("folder").AddFile("second", "22");
  builder.Root(1).AddFile("third", "333").tag = testsupport::kUdfExtendedFileEntryTag;
  EXPECT_TRUE(Open()) << "the first volume was listed whole";
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"first", L"folder", L"folder\\second"));
  EXPECT_FALSE(unpacker.IsListComplete());
  builder.Root(1).children[1]->tag = testsupport::kUdfFileEntryTag;
  const std::string image = builder.Build();
  ASSERT_TRUE(Open(image));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"first", L"folder", L"folder\\second", L"third"));
  EXPECT_TRUE(unpacker.IsListComplete());
  EXPECT_EQ(InfoOf(L"third").nSize64, 3U);

  std::string bad = image;
  ++bad[builder.FileSetOffset(1) + 4];
  EXPECT_TRUE(Open(bad));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"first"));
  EXPECT_FALSE(unpacker.IsListComplete());
  bad = image;
  ++bad[builder.FileSetOffset(0) + 4];
  EXPECT_FALSE(Open(bad));
  for (const int length : {0, 511}) {
    bad = image;
    SetNumber(bad, builder.VolumeDescriptorOffset(1) + 248, static_cast<unsigned>(length), 4);
    EXPECT_TRUE(Open(bad));
    EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"first"));
    SetNumber(bad, builder.VolumeDescriptorOffset(0) + 248, static_cast<unsigned>(length), 4);
    EXPECT_FALSE(Open(bad));
  }
}

TEST_F(UdfOpen, FollowsPartitionReferences) {
  // A volume of two partitions: what the other volume would hold.
  UdfNode& file = builder.Root().AddFile("file");
  builder.AddVolume();
  UdfNode& other = builder.Root(1).AddFile("other", "12345");
  builder.Volume(0).maps = {{1, 6, builder.Volume(0).partitionNumber},
                            {1, 6, builder.Volume(1).partitionNumber}};
  builder.Build();
  file.icbPartition = 1;
  file.icbLocation = builder.EntryBlockOf(other);
  std::string image = builder.Build();
  ++image[builder.VolumeDescriptorOffset(1) + 4];
  ASSERT_TRUE(Open(image));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"file"));
  EXPECT_EQ(InfoOf(L"file").nSize64, 5U);
  file.icbPartition = 2;
  image = builder.Build();
  ++image[builder.VolumeDescriptorOffset(1) + 4];
  try {
    EXPECT_FALSE(Open(image));
  } catch (const CInvalidArgException&) {
  }
}

TEST_F(UdfOpen, AppliesTheRulesOfExtendedAttributes) {
  UdfNode& folderNode = builder.Root().AddFolder("folder");
  UdfNode& file = folderNode.AddFile("file", "1");
  builder.Root().extendedAttributes = std::string(8, '\xEA');
  folderNode.extendedAttributes = std::string(6, '\xEA');
  file.extendedAttributes = std::string(1001, '\xEA');
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"folder", L"folder\\file"));
  builder.Root().extendedAttributes = std::string(6, '\xEA');
  EXPECT_FALSE(Open());
  builder.Root().extendedAttributes.clear();
  std::string image = builder.Build();
  SetNumber(image, builder.EntryOffsetOf(builder.Root()) + kExtendedAttributesLength, 1876, 4);
  EXPECT_FALSE(Open(image)) << "longer than 2048 - 176";
}

TEST_F(UdfOpen, ListsNothingUnderARootThatIsAFile) {
  builder.Root().AddFile("a");
  builder.Root().fileType = 5;
  EXPECT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), IsEmpty());
}

TEST_F(UdfOpen, RefusesATreeWithAnythingItCannotRead) {
  UdfNode& sub = builder.Root().AddFolder("sub");
  sub.AddFile("before", "x");
  UdfNode& node = sub.AddFile("node", "x");
  const std::string image = builder.Build();
  ASSERT_TRUE(Open(image));
  const std::size_t entry = builder.EntryOffsetOf(node);
  const std::size_t identifier = builder.IdentifierOffsetOf(node);
  const std::size_t root = builder.EntryOffsetOf(builder.Root());
  struct Damage {
    const char* what;
    std::size_t tag;
    std::size_t offset;
    std::uint64_t value;
    std::size_t count;
  };
  std::vector<Damage> cases = {
      {"an extended file entry", entry, entry, 266, 2},
      {"no entry", entry, entry, 257, 2},
      {"an extended root entry", root, root, 266, 2},
      {"a symbolic link", entry, entry + 27, 12, 1},
      {"an unspecified file type", entry, entry + 27, 0, 1},
      {"an indirect entry", root, root + 27, 3, 1},
      {"a short descriptor past the end", entry, entry + kDescriptorsLength, 12, 4},
      {"the same in a folder", root, root + kDescriptorsLength, 4, 4},
      {"no identifier descriptor", identifier, identifier, 261, 2},
      {"an entry without length", identifier, identifier + 20, 0, 4},
      {"an entry past its partition", identifier, identifier + 24, builder.PartitionBlocks(), 4},
      {"an entry of 1 GiB", identifier, identifier + 20, 0x3FFFFFFF, 4},
      {"a directory past its partition", root, root + 180, builder.PartitionBlocks(), 4}};
  for (const unsigned type : {2U, 4U, 5U, 6U, 7U}) {
    cases.push_back({"an unknown kind of descriptor", entry, entry + 34, type, 2});
  }
  for (const Damage& damage : cases) {
    std::string bad = image;
    SetNumber(bad, damage.offset, damage.value, damage.count);
    FixTag(bad, damage.tag);
    EXPECT_FALSE(Open(bad)) << damage.what;
  }
  for (const std::size_t tag : {entry, identifier, root, builder.FileSetOffset()}) {
    std::string bad = image;
    ++bad[tag + 4];
    EXPECT_FALSE(Open(bad)) << tag;
  }
  EXPECT_TRUE(unpacker.CloseArchive());
  // A long descriptor is 16 bytes.
  node.allocation = kUdfLong;
  std::string bad = builder.Build();
  SetNumber(bad, builder.EntryOffsetOf(node) + kDescriptorsLength, 24, 4);
  EXPECT_FALSE(Open(bad));
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"sub", L"sub\\before"));
}

TEST_F(UdfOpen, ReadsAnExtentUpToTheLastByteOfItsPartition) {
  // The last thing in the partition is the data of the last folder.
  builder.Root().AddFolder("last").AddFile("empty");
  std::string image = builder.Build();
  ASSERT_TRUE(Open(image));
  const std::size_t descriptor = builder.PartitionDescriptorOffset();
  SetNumber(image, descriptor + 192, builder.PartitionBlocks() - 1, 4);
  EXPECT_FALSE(Open(image));
}

TEST_F(UdfOpen, ListsAFolderThatLeadsBackButNeverEntersItAgain) {
  UdfNode& sub = builder.Root().AddFolder("sub");
  UdfNode& loop = sub.AddFolder("loop");
  UdfNode& twin = builder.Root().AddFolder("twin");
  sub.AddFile("x");
  builder.Build();
  loop.icbLocation = builder.EntryBlockOf(builder.Root());
  twin.icbLocation = builder.EntryBlockOf(sub);
  ASSERT_TRUE(Open());
  EXPECT_THAT(PathsOf(unpacker), ElementsAre(L"sub", L"sub\\loop", L"sub\\x", L"twin"));
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(UdfOpen, BoundsOverlappingDirectories) {
  // A thousand folders, each with an entry of its own, share one directory.
  UdfNode& shared = builder.Root().AddFolder("shared");
  for (int i = 0; i < 300; ++i) shared.AddFile("f" + std::to_string(i)).allocation = kUdfEmbedded;
  builder.Options().sectorSize = 512;
  const std::size_t length = 40 + 300 * 44;
  for (int i = 0; i < 1000; ++i) builder.Root().AddFolder("d" + std::to_string(i));
  builder.Build();
  const auto extents = builder.ExtentsOf(shared);
  for (std::size_t i = 1; i < builder.Root().children.size(); ++i) {
    builder.Root().children[i]->extents = extents;
    builder.Root().children[i]->informationLength = length;
  }
  const std::string image = builder.Build();
  ASSERT_EQ(builder.ExtentsOf(shared)[0].location, extents[0].location);
  try {
    Open(image);
  } catch (const CAtlException&) {
  }
  EXPECT_LT(PathsOf(unpacker).size(), image.size() / 38);
}

/// An image in memory that counts what is read of it.
class CountingSource : public iso::ByteSource {
 public:
  explicit CountingSource(const std::string& image) : m_image(image) {}

  std::int64_t ReadAt(std::uint64_t offset, void* buffer, std::uint32_t length) override {
    if (offset >= m_image.size()) return 0;
    const std::size_t read = m_image.copy(static_cast<char*>(buffer), length, offset);
    bytesRead += read;
    return static_cast<std::int64_t>(read);
  }
  std::uint64_t Size() const override { return m_image.size(); }

  std::size_t bytesRead = 0;

 private:
  const std::string& m_image;
};

// Folders of a few bytes whose extents claim megabytes: only what a folder has
// may be read.
TEST_F(UdfOpen, ReadsNoMoreOfAFolderThanItHas) {
  std::vector<UdfNode*> subs;
  for (int i = 0; i < 20; ++i) {
    subs.push_back(&builder.Root().AddFolder("sub" + std::to_string(i)));
    subs.back()->allocation = kUdfShort;
  }
  builder.Root().AddFile("filler", std::string(4 << 20, 'x'));
  builder.Build();
  for (UdfNode* const sub : subs) {
    auto extents = builder.ExtentsOf(*sub);
    sub->informationLength = extents.at(0).length;
    extents[0].length = 1 << 20;
    sub->extents = extents;
  }
  const std::string image = builder.Build();
  CountingSource source(image);
  iso::UdfVolumes volumes;
  iso::ItemList items;
  ASSERT_TRUE(volumes.Open(source));
  ASSERT_TRUE(iso::UdfScan(source, volumes, items).InitScanUDF());
  EXPECT_TRUE(items.LocateFile(L"sub19"));
  EXPECT_LT(source.bytesRead, std::size_t{2} << 20);
}

TEST_F(UdfOpen, SurvivesDeepNesting) {
  builder.Options().sectorSize = 512;
  UdfNode* node = &builder.Root();
  for (int i = 0; i < 5000; ++i) {
    node = &node->AddFolder("d");
    node->allocation = kUdfEmbedded;
  }
  ASSERT_TRUE(Open());
  EXPECT_GT(PathsOf(unpacker).size(), 1000U);
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(UdfOpen, ListsTheUdfTreeOfAnImageThatHasBoth) {
  testsupport::WriteFile(folder.Path("tree/A long name, with \u0416 in it.text"),
                         std::string(5000, 'x'));
  testsupport::WriteFile(folder.Path("tree/sub folder/lower.txt"), "x");
  const std::string line = "genisoimage -quiet -udf -input-charset utf-8 -o " +
                           folder.Path("x.iso") + " " + folder.Path("tree") + " 2>&1";
  ASSERT_EQ(system(line.c_str()), 0) << line;
  ASSERT_TRUE(unpacker.OpenArchive(folder.LibraryPath("x.iso")));
  EXPECT_THAT(PathsOf(unpacker),
              testing::UnorderedElementsAre(L"A long name, with \u0416 in it.text", L"sub folder",
                                            L"sub folder\\lower.txt"));
  EXPECT_EQ(InfoOf(L"A long name, with \u0416 in it.text").nSize64, 5000U);
  EXPECT_EQ(InfoOf(L"A long name, with \u0416 in it.text").nPackedSize, 6144U);
}

/// An image on disk that is damaged and made whole again, much faster than
/// writing each damaged one.
class UdfDamage : public UdfOpen {
 protected:
  void SetUp() override {
    builder.Options().sectorSize = 512;
    UdfNode& docs = builder.Root().AddFolder("docs");
    docs.AddFile("a", std::string(600, 'a')).fragments = 2;
    UdfNode& sub = docs.AddFolder("sub");
    sub.allocation = kUdfEmbedded;
    sub.AddFile("b", "b").allocation = kUdfEmbedded;
    builder.Root().AddFile("c", "c").allocation = kUdfLong;
    image = builder.Build();
    ASSERT_TRUE(Open(image));
    ASSERT_EQ(PathsOf(unpacker).size(), 5U);
    unpacker.CloseArchive();
    file = open(folder.Path("x.iso").c_str(), O_WRONLY);
    ASSERT_GE(file, 0);
  }
  void TearDown() override { close(file); }

  void Write(std::size_t offset, std::string_view bytes) {
    ASSERT_EQ(pwrite(file, bytes.data(), bytes.size(), static_cast<off_t>(offset)),
              static_cast<ssize_t>(bytes.size()));
  }
  /// Opens and walks; a refused date or reference is a proper end too.
  void OpenAnyhow() {
    try {
      if (unpacker.OpenArchive(folder.LibraryPath("x.iso"))) {
        EXPECT_LE(PathsOf(unpacker).size(), image.size() / 38);
      }
    } catch (const CAtlException&) {
    } catch (const CInvalidArgException&) {
    }
    unpacker.CloseArchive();
  }
  /// With these bytes at `offset` and the tag at `tag` made right again.
  void OpenDamaged(std::size_t tag, std::size_t offset, std::string_view bytes) {
    std::string sector = image.substr(tag, std::max(offset - tag + bytes.size(), std::size_t{16}));
    sector.replace(offset - tag, bytes.size(), bytes);
    if (offset != tag + 4) FixTag(sector, 0);
    Write(tag, sector);
    OpenAnyhow();
    Write(tag, std::string_view(image).substr(tag, sector.size()));
  }
  /// Places of all tags, each with the number of bytes that are read behind it.
  std::vector<std::pair<std::size_t, std::size_t>> Tags() {
    std::vector<std::pair<std::size_t, std::size_t>> tags = {
        {builder.AnchorOffset(), 24},
        {builder.PartitionDescriptorOffset(), 196},
        {builder.VolumeDescriptorOffset(), 446},
        {builder.TerminatorOffset(), 16},
        {builder.FileSetOffset(), 416},
        {builder.EntryOffsetOf(builder.Root()), 192}};
    const std::function<void(const UdfNode&)> add = [&](const UdfNode& node) {
      for (const auto& child : node.children) {
        tags.emplace_back(builder.EntryOffsetOf(*child), 208);
        tags.emplace_back(builder.IdentifierOffsetOf(*child), 44);
        add(*child);
      }
    };
    add(builder.Root());
    return tags;
  }

  std::string image;
  int file = -1;
};

TEST_F(UdfDamage, EndsOrderlyForAnyByteAtItsExtremes) {
  for (const auto& [tag, size] : Tags()) {
    for (std::size_t i = 0; i < size; ++i) {
      for (const char value : {'\0', '\xFF'}) OpenDamaged(tag, tag + i, {&value, 1});
    }
  }
}

TEST_F(UdfDamage, EndsOrderlyForAnyNumberAtItsExtremes) {
  const auto number = [](std::uint64_t value, std::size_t count) {
    std::string bytes(count, '\0');
    SetNumber(bytes, 0, value, count);
    return bytes;
  };
  for (const auto& [tag, size] : Tags()) {
    for (std::size_t i = 16; i + 4 <= size; i += 2) {
      for (const std::uint64_t value :
           {0xFFFFFFFFU, 0x7FFFFFFFU, 0x3FFFFFFFU, 0xFFFFFFF0U, 0x40000000U, 0xFFFFU}) {
        OpenDamaged(tag, tag + i, number(value, 4));
      }
    }
  }
  std::vector<const UdfNode*> nodes = {&builder.Root(), builder.Root().children[0].get()};
  nodes.push_back(nodes[1]->children[1].get());
  for (const UdfNode* node : nodes) {
    const std::size_t entry = builder.EntryOffsetOf(*node);
    for (const std::uint64_t value :
         {std::uint64_t{1} << 40, std::uint64_t{1} << 32, std::uint64_t{0x7FFFFFFFFFFFFFFF},
          std::uint64_t{0xFFFFFFFFFFFFFFFF}, std::uint64_t{37}, std::uint64_t{513}}) {
      OpenDamaged(entry, entry + kInformationLength, number(value, 8));
    }
  }
}

TEST_F(UdfDamage, EndsOrderlyForAnImageCutAnywhere) {
  for (std::size_t cut = image.size(); cut > 0;) {
    cut -= std::min<std::size_t>(cut, cut > builder.AnchorOffset() ? 61 : 4999);
    ASSERT_EQ(ftruncate(file, static_cast<off_t>(cut)), 0);
    OpenAnyhow();
  }
}

TEST_F(UdfDamage, EndsOrderlyForRandomDamage) {
  std::minstd_rand random(7);
  const auto tags = Tags();
  for (int round = 0; round < 1500; ++round) {
    for (int i = 0; i < 4; ++i) {
      const auto& [tag, size] = tags[random() % tags.size()];
      std::string bytes = image.substr(tag, size);
      for (int n = 0; n < 3; ++n) bytes[random() % size] = static_cast<char>(random());
      if (round % 2 == 0) FixTag(bytes, 0);
      Write(tag, bytes);
    }
    OpenAnyhow();
    for (const auto& [tag, size] : tags) Write(tag, std::string_view(image).substr(tag, size));
  }
}

}  // namespace
