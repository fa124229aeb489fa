// The UDF volume structure and file tree (ECMA-167): what an image lists as,
// what is refused, and what damaged or hostile images cannot do.
#include <gmock/gmock.h>

#include "support/bytes.h"
#include "support/imagetest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::FixTag;
using testsupport::kUdfEmbedded;
using testsupport::kUdfLong;
using testsupport::kUdfShort;
using testsupport::MakeUdfDate;
using testsupport::UdfBuilder;
using testsupport::UdfDate;
using testsupport::UdfMap;
using testsupport::UdfNode;

// Offsets in an entry (ECMA-167 4/14.9).
constexpr std::size_t kExtendedAttributesLength = 168;
constexpr std::size_t kDescriptorsLength = 172;

class UdfOpen : public testsupport::ImageTest<UdfBuilder> {
 protected:
  /// With a number put in the place of another; the sum of `tag` is right again.
  bool OpenWith(std::string image, std::size_t offset, std::uint64_t value, std::size_t count,
                std::optional<std::size_t> tag = std::nullopt) {
    testsupport::Put(image, offset, testsupport::Little(value, count));
    if (tag) FixTag(image, *tag);
    return OpenBytes(image);
  }
  /// With the sum of a tag wrong.
  bool OpenWithoutTag(std::string image, std::size_t tag) {
    ++image[tag + 4];
    return OpenBytes(image);
  }
};

TEST_F(UdfOpen, TellsSizesFromTheEntry) {
  builder.Root().AddFile("extents", std::string(5000, 'x')).fragments = 3;
  builder.Root().AddFile("embedded", "0123456789").allocation = kUdfEmbedded;
  builder.Root().AddFile("empty");
  UdfNode& huge = builder.Root().AddFile("huge");
  huge.informationLength = 0x1234567890AB;
  huge.blocksRecorded = 0x100000002;
  ASSERT_TRUE(OpenImage());
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
    UdfNode& sub = other.Root().AddFolder("sub");
    sub.wholeBlocks = true;
    std::vector<std::wstring> expected = {L"sub"};
    for (UdfNode* const node : {&sub, &other.Root()}) {
      node->allocation = allocation;
      // Identifier descriptors cross from one piece to the next.
      node->fragments = allocation == kUdfEmbedded ? 1 : 4;
      for (int i = allocation == kUdfEmbedded ? 180 : 0; i < 200; ++i) {
        node->AddFile("file " + std::to_string(i));
        expected.push_back((node == &sub ? L"sub\\file " : L"file ") + std::to_wstring(i));
      }
    }
    ASSERT_TRUE(OpenBytes(other.Build())) << int{allocation};
    EXPECT_EQ(Paths(), expected) << int{allocation};
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
  ASSERT_TRUE(OpenImage());
  EXPECT_EQ(Paths(), expected);
}

TEST_F(UdfOpen, FindsTheIdentifierBehindTheImplementationUse) {
  builder.Root().AddFile("four").implementationUse = std::string(4, '\xAA');
  builder.Root().AddFile("seven").implementationUse = std::string(7, '\xAA');
  builder.Root().AddFile("many").implementationUse = std::string(1000, '\xAA');
  builder.Root().AddFile("last");
  ASSERT_TRUE(OpenImage());
  EXPECT_THAT(Paths(), ElementsAre(L"four", L"seven", L"many", L"last"));
}

TEST_F(UdfOpen, RequiresZerosUpToAMultipleOfFour) {
  UdfNode& file = builder.Root().AddFile("four");
  builder.Root().AddFile("next");
  const std::string image = builder.Build();
  const std::size_t offset = builder.IdentifierOffsetOf(file);
  ASSERT_TRUE(OpenBytes(image));
  // The last byte of its own 38 + 5, rounded up, and that of the parent's.
  for (const std::size_t padding : {offset + 43, offset - 1}) {
    std::string bad = image;
    bad[padding] = 1;
    EXPECT_FALSE(OpenBytes(bad));
  }
}

TEST_F(UdfOpen, RefusesDirectoriesThatEndInsideADescriptor) {
  UdfNode& root = builder.Root();
  root.AddFile("four");
  for (const std::uint8_t allocation : {kUdfShort, kUdfEmbedded}) {
    root.allocation = allocation;
    // Behind the 40 bytes of the parent's: in the header, at its end, in the
    // identifier, in the rounding; then past all that is recorded.
    for (const std::uint64_t length :
         {41ULL, 77ULL, 78ULL, 82ULL, 83ULL, 88ULL, 100ULL, 4096ULL, 1ULL << 40}) {
      root.informationLength = length;
      EXPECT_FALSE(OpenImage()) << int{allocation} << ", " << length;
    }
    root.informationLength = 40;
    EXPECT_TRUE(OpenImage()) << int{allocation};
    EXPECT_THAT(Paths(), IsEmpty());
  }
}

TEST_F(UdfOpen, GoesByTheEntryWhereTheIdentifierDescriptorSaysOtherwise) {
  builder.Root().AddFolder("no folder").fileType = 5;
  UdfNode& file = builder.Root().AddFile("no file");
  file.fileType = 4;
  file.deleted = true;
  UdfNode& masked = builder.Root().AddFile("masked");
  masked.icbLength = 2048U | testsupport::kUdfAllocatedOnly;
  ASSERT_TRUE(OpenImage());
  EXPECT_THAT(Paths(), ElementsAre(L"no folder", L"no file", L"masked"));
  EXPECT_EQ(InfoOf(L"no folder").bFolder, 0);
  EXPECT_EQ(InfoOf(L"no file").bFolder, 1);
}

TEST_F(UdfOpen, TellsBothDatesAndSizesInTheSummaryTexts) {
  const testsupport::TimeZone zone("America/New_York");
  UdfNode& docs = builder.Root().AddFolder("docs");
  UdfNode& file = docs.AddFile("a", std::string(5000, 'a'));
  docs.AddFile("b", "0123456789").allocation = kUdfEmbedded;
  docs.AddFolder("sub").AddFile("zero");
  builder.Root().AddFile("half", std::string(4096, 'h')).blocksRecorded = 1;
  ASSERT_TRUE(OpenImage());
  EXPECT_EQ(InfoOf(L"docs\\a").timeModified, 981191106);
  EXPECT_EQ(InfoOf(L"docs\\a").timeAccessed, 1015236367);
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 4, Folders - 2, Size - 9 106 bytes, Packed - 8 202 bytes, Ratio - 90%");
  EXPECT_EQ(unpacker.GetFolderOutputInfo(L"docs"),
            L"Files - 3, Folders - 1, Size - 5 010 bytes, Packed - 6 154 bytes, Ratio - 122%");
  const std::wstring text = unpacker.GetFileOutputInfo(L"docs\\a");
  const std::wstring rest = text.substr(std::min(text.find(L", Accessed - "), text.size()));
  EXPECT_THAT(text, testing::StartsWith(L"Modified - "));
  EXPECT_THAT(text.substr(0, text.size() - rest.size()), testing::HasSubstr(L"04:05"));
  EXPECT_THAT(rest, testing::HasSubstr(L"05:06"));
  EXPECT_THAT(rest, testing::EndsWith(L", Size - 5 000 bytes, Packed - 6 144 bytes, Ratio - 122%"));
  EXPECT_THAT(unpacker.GetFileOutputInfo(L"half"), testing::HasSubstr(L"Ratio - 50%"));
  file.accessed = MakeUdfDate(2001, 13, 1);
  EXPECT_EQ(ErrorOfOpening(), E_FAIL);
}

TEST_F(UdfOpen, ScansTheRecognitionSequenceUpToAnUnknownIdentifier) {
  builder.Root().AddFile("a");
  using Sequence = std::vector<std::string>;
  for (const Sequence& sequence : {Sequence{"BEA01", "NSR03", "TEA01"}, Sequence{"NSR02"},
                                   Sequence{"CD001", "CD001", "BEA01", "NSR02", "TEA01"},
                                   Sequence{"CDW02", "BOOT2", "TEA01", "NSR03"}}) {
    builder.Options().recognition = sequence;
    EXPECT_TRUE(OpenImage()) << testing::PrintToString(sequence);
  }
  for (const Sequence& sequence :
       {Sequence{}, Sequence{"BEA01", "TEA01"}, Sequence{"BEA01", "NSR04", "NSR03"},
        // As an image with sectors of 4096 bytes has them.
        Sequence{"BEA01", std::string(5, '\0'), "NSR02"}}) {
    builder.Options().recognition = sequence;
    EXPECT_FALSE(OpenImage()) << testing::PrintToString(sequence);
  }
}

TEST_F(UdfOpen, FindsTheSectorSizeByItsAnchor) {
  for (const std::uint32_t size : {512U, 1024U, 2048U, 4096U}) {
    UdfBuilder other;
    other.Options().sectorSize = size;
    // Large enough for an anchor of larger sectors.
    other.Root().AddFile("big", std::string(1200000, 'x'));
    for (int i = 0; i < 60; ++i) other.Root().AddFile("file " + std::to_string(i), "x");
    ASSERT_TRUE(OpenBytes(other.Build())) << size;
    EXPECT_EQ(Paths().size(), 61U) << size;
    EXPECT_EQ(InfoOf(L"file 59").nPackedSize, size);
  }
}

TEST_F(UdfOpen, NeedsAnAnchorAndTheSectorsUpToIt) {
  builder.Options().partitionStart = 40;
  builder.Root().AddFile("a");
  const std::string image = builder.Build();
  const std::size_t anchor = builder.AnchorOffset();
  ASSERT_EQ(image.size(), 257U * 2048);
  EXPECT_TRUE(OpenBytes(image));
  EXPECT_FALSE(OpenBytes(image.substr(0, image.size() - 1)));
  EXPECT_FALSE(OpenWith(image, anchor, 3, 1, anchor));
  // The sum takes in every byte of the tag but itself.
  for (std::size_t i = 2; i < 16; ++i) {
    const auto other = static_cast<unsigned char>(image[anchor + i] + 1);
    EXPECT_FALSE(OpenWith(image, anchor + i, other, 1)) << i;
    EXPECT_TRUE(OpenWith(image, anchor + i, other, 1, anchor)) << i;
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
  EXPECT_TRUE(OpenBytes(image));
  image[builder.TerminatorOffset()] = 7;
  FixTag(image, builder.TerminatorOffset());
  EXPECT_FALSE(OpenBytes(image)) << "other descriptors are passed over";

  builder.Options().hasTerminator = false;
  EXPECT_TRUE(OpenImage());
  builder.Options().sequenceSectors = 2;
  EXPECT_TRUE(OpenImage());
  builder.Options().sequenceSectors = 1;
  EXPECT_FALSE(OpenImage()) << "the volume lies behind the sequence";

  builder.Options().sequenceSectors = 16;
  image = builder.Build();
  move(builder.VolumeDescriptorOffset(), builder.TerminatorOffset());
  move(builder.PartitionDescriptorOffset(), builder.VolumeDescriptorOffset());
  move(builder.TerminatorOffset(), builder.PartitionDescriptorOffset());
  image.replace(builder.TerminatorOffset(), 2048, std::string(2048, '\0'));
  EXPECT_TRUE(OpenBytes(image)) << "the partition stands behind the volume";
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
    EXPECT_FALSE(OpenImage()) << testing::PrintToString(maps);
  }
  builder.Volume().maps.reset();
  const std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_FALSE(OpenWithoutTag(image, builder.PartitionDescriptorOffset()));
  EXPECT_FALSE(OpenWithoutTag(image, builder.VolumeDescriptorOffset()));
  for (const std::uint32_t count : {2U, 300U, 0xFFFFFFFFU}) {
    EXPECT_FALSE(OpenWith(image, builder.VolumeDescriptorOffset() + 268, count, 4)) << count;
  }
}

TEST_F(UdfOpen, ListsTheVolumesOneAfterTheOther) {
  builder.Root(0).AddFile("first", "1");
  builder.AddVolume();
  builder.Root(1).AddFolder("folder").AddFile("second", "22");
  builder.Root(1).AddFile("third", "333").tag = testsupport::kUdfExtendedFileEntryTag;
  EXPECT_TRUE(OpenImage()) << "the first volume was listed whole";
  EXPECT_THAT(Paths(), ElementsAre(L"first", L"folder", L"folder\\second"));
  EXPECT_FALSE(unpacker.IsListComplete());
  builder.Root(1).children[1]->tag = testsupport::kUdfFileEntryTag;
  const std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), ElementsAre(L"first", L"folder", L"folder\\second", L"third"));
  EXPECT_TRUE(unpacker.IsListComplete());
  EXPECT_EQ(InfoOf(L"third").nSize64, 3U);

  EXPECT_FALSE(OpenWithoutTag(image, builder.FileSetOffset(0)));
  EXPECT_TRUE(OpenWithoutTag(image, builder.FileSetOffset(1)));
  EXPECT_THAT(Paths(), ElementsAre(L"first"));
  EXPECT_FALSE(unpacker.IsListComplete());
  for (const std::uint32_t length : {0U, 511U}) {
    EXPECT_FALSE(OpenWith(image, builder.VolumeDescriptorOffset(0) + 248, length, 4));
    EXPECT_TRUE(OpenWith(image, builder.VolumeDescriptorOffset(1) + 248, length, 4));
    EXPECT_THAT(Paths(), ElementsAre(L"first"));
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
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), ElementsAre(L"file"));
  EXPECT_EQ(InfoOf(L"file").nSize64, 5U);
  file.icbPartition = 2;
  image = builder.Build();
  ++image[builder.VolumeDescriptorOffset(1) + 4];
  try {
    EXPECT_FALSE(OpenBytes(image));
  } catch (const CInvalidArgException&) {
  }
}

TEST_F(UdfOpen, AppliesTheRulesOfExtendedAttributes) {
  UdfNode& folderNode = builder.Root().AddFolder("folder");
  UdfNode& file = folderNode.AddFile("file", "1");
  builder.Root().extendedAttributes = std::string(8, '\xEA');
  folderNode.extendedAttributes = std::string(6, '\xEA');
  file.extendedAttributes = std::string(1001, '\xEA');
  ASSERT_TRUE(OpenImage());
  EXPECT_THAT(Paths(), ElementsAre(L"folder", L"folder\\file"));
  builder.Root().extendedAttributes = std::string(6, '\xEA');
  EXPECT_FALSE(OpenImage());
  builder.Root().extendedAttributes.clear();
  const std::string image = builder.Build();
  const std::size_t attributes = builder.EntryOffsetOf(builder.Root()) + kExtendedAttributesLength;
  EXPECT_FALSE(OpenWith(image, attributes, 1876, 4)) << "longer than 2048 - 176";
  // Descriptors that go on where the block of their entry ends.
  file.extendedAttributes = std::string(2048 - 176 - 8, '\xEA');
  file.icbLength = 2048;
  std::string full = builder.Build();
  const std::size_t entry = builder.EntryOffsetOf(file);
  testsupport::Put(full, entry + 2048, std::string(8, '\0'));
  EXPECT_TRUE(OpenBytes(full));
  EXPECT_FALSE(OpenWith(full, entry + kDescriptorsLength, 16, 4));
}

TEST_F(UdfOpen, RefusesATreeWithAnythingItCannotRead) {
  UdfNode& sub = builder.Root().AddFolder("sub");
  sub.AddFile("before", "x");
  UdfNode& node = sub.AddFile("node", "x");
  const std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
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
      {"part of a descriptor", entry, entry + kDescriptorsLength, 12, 4},
      {"the same in a folder", root, root + kDescriptorsLength, 4, 4},
      {"no identifier descriptor", identifier, identifier, 261, 2},
      {"an entry without length", identifier, identifier + 20, 0, 4},
      {"an entry past its partition", identifier, identifier + 24, builder.PartitionBlocks(), 4},
      {"an entry of 1 GiB", identifier, identifier + 20, 0x3FFFFFFF, 4},
      {"a directory past its partition", root, root + 180, builder.PartitionBlocks(), 4}};
  for (const unsigned type : {2U, 4U, 5U, 6U, 7U}) {
    cases.push_back({"an unknown kind of descriptor", entry, entry + 34, type, 2});
  }
  for (const auto& [what, tag, offset, value, count] : cases) {
    EXPECT_FALSE(OpenWith(image, offset, value, count, tag)) << what;
  }
  for (const std::size_t tag : {entry, identifier, root, builder.FileSetOffset()}) {
    EXPECT_FALSE(OpenWithoutTag(image, tag)) << tag;
  }
  // A long descriptor is 16 bytes.
  node.allocation = kUdfLong;
  const std::string longer = builder.Build();
  EXPECT_FALSE(OpenWith(longer, builder.EntryOffsetOf(node) + kDescriptorsLength, 24, 4));
  EXPECT_THAT(Paths(), ElementsAre(L"sub", L"sub\\before"));
}

TEST_F(UdfOpen, ReadsAnExtentUpToTheLastByteOfItsPartition) {
  // The last thing in the partition is the data of the last folder.
  builder.Root().AddFolder("last").AddFile("empty");
  const std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_FALSE(
      OpenWith(image, builder.PartitionDescriptorOffset() + 192, builder.PartitionBlocks() - 1, 4));
  builder.Root().fileType = 5;
  EXPECT_TRUE(OpenImage());
  EXPECT_THAT(Paths(), IsEmpty()) << "the root is a file";
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
    OpenBytes(image);
  } catch (const CAtlException&) {
  }
  EXPECT_LT(Paths().size(), image.size() / 38);
}

}  // namespace
