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
using testsupport::Little;
using testsupport::MakeUdfMaps;
using testsupport::Put;
using testsupport::UdfBuilder;
using testsupport::UdfNode;

// Offsets in an entry (ECMA-167 4/14.9).
constexpr std::size_t kFileType = 27;
constexpr std::size_t kInformationLength = 56;
constexpr std::size_t kAttributesLength = 168;
constexpr std::size_t kDescriptorsLength = 172;

class UdfOpen : public testsupport::ImageTest<UdfBuilder> {
 protected:
  /// With a number put in the place of another; the sum of `tag` is right again.
  bool OpenWith(std::string image, std::size_t offset, std::uint64_t value, std::size_t count,
                std::optional<std::size_t> tag = std::nullopt) {
    Put(image, offset, Little(value, count));
    if (tag) FixTag(image, *tag);
    return OpenBytes(image);
  }
  /// With the sum of a tag wrong.
  bool OpenWithoutTag(std::string image, std::size_t tag) {
    ++image[tag + 4];
    return OpenBytes(image);
  }
};

TEST_F(UdfOpen, TellsSizesAndBothDates) {
  const testsupport::TimeZone zone("America/New_York");
  UdfNode& docs = builder.Root().AddFolder("docs");
  const UdfNode& a = docs.AddFile("a", std::string(5000, 'a'));
  docs.AddFile("b", "0123456789").allocation = kUdfEmbedded;
  std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
  ISOFILEFULLINFO info = InfoOf(L"docs\\a");
  EXPECT_EQ(info.timeModified, 981191106);
  EXPECT_EQ(info.timeAccessed, 1015236367);
  EXPECT_EQ(info.nSize64, 5000U);
  EXPECT_EQ(info.nPackedSize, 6144U);
  EXPECT_EQ(info.nSize + info.nLocation, 0U);
  EXPECT_EQ(unpacker.GetArchiveOutputInfo(),
            L"Files - 2, Folders - 1, Size - 5 010 bytes, Packed - 6 154 bytes, Ratio - 122%");
  const std::wstring text = unpacker.GetFileOutputInfo(L"docs\\a");
  EXPECT_LT(text.find(L"04:05"), text.find(L", Accessed - "));
  EXPECT_LT(text.find(L", Accessed - "), text.find(L"06:07"));
  EXPECT_THAT(text, testing::EndsWith(L", Size - 5 000 bytes, Packed - 6 144 bytes, Ratio - 122%"));
  Put(image, builder.EntryOffsetOf(a) + kInformationLength,
      Little(0x1234567890AB, 8) + Little(0x100000002, 8));
  ASSERT_TRUE(OpenBytes(image));
  info = InfoOf(L"docs\\a");
  EXPECT_EQ(info.nSize64, 0x1234567890ABU);
  EXPECT_EQ(info.nPackedSize, ULONGLONG{0x100000002} * 2048);
}

TEST_F(UdfOpen, ReadsDirectoriesHoweverTheyAreRecorded) {
  for (const std::uint8_t allocation : {kUdfShort, kUdfLong, kUdfEmbedded}) {
    UdfBuilder other;
    UdfNode& sub = other.Root().AddFolder("sub");
    std::vector<std::wstring> expected = {L"sub"};
    for (UdfNode* const node : {&sub, &other.Root()}) {
      node->allocation = allocation;
      // Identifier descriptors cross from one piece to the next.
      node->fragments = 4;
      for (int i = allocation == kUdfEmbedded ? 180 : 0; i < 200; ++i) {
        node->AddFile("file " + std::to_string(i));
        expected.push_back((node == &sub ? L"sub\\file " : L"file ") + std::to_wstring(i));
      }
    }
    ASSERT_TRUE(OpenBytes(other.Build())) << int{allocation};
    EXPECT_EQ(Paths(), expected) << int{allocation};
  }
}

TEST_F(UdfOpen, FindsAndDecodesIdentifiers) {
  const struct {
    /// Bytes of implementation use in front of it.
    std::size_t use;
    std::string identifier;
    std::wstring name;
  } cases[] = {{4, "\x08\xE9\x80z", L"\u00E9\u0080z"},
               {7, {"\x10\x00\x41\x04\x16", 5}, L"A\u0416"},
               {1000, {"\x10\xD8\x3D\xDE\x00", 5}, L"\U0001F600"},
               {0, {"\x10\x00\x41\x42", 4}, L"A\u4200"},
               {0, "\x09\x41", L""},
               {0, "\xFE\x41", L""},
               {0, "\x08", L""},
               {0, "", L""}};
  std::vector<std::wstring> expected;
  for (const auto& [use, identifier, name] : cases) {
    builder.Root().AddFile("").identifier = std::string(use, '\xAA') + identifier;
    expected.push_back(name);
  }
  std::string image = builder.Build();
  for (std::size_t i = 0; i < std::size(cases); ++i) {
    const std::size_t at = builder.IdentifierOffsetOf(*builder.Root().children[i]);
    Put(image, at + 19, Little(cases[i].identifier.size(), 1));
    Put(image, at + 36, Little(cases[i].use, 2));
  }
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_EQ(Paths(), expected);
}

TEST_F(UdfOpen, RefusesDirectoriesThatEndInsideADescriptor) {
  UdfNode& root = builder.Root();
  root.AddFile("four");
  for (const std::uint8_t allocation : {kUdfShort, kUdfEmbedded}) {
    root.allocation = allocation;
    // Behind the 40 bytes of the parent's: in the header, at its end, in the
    // identifier, in the rounding; then past all that is recorded.
    for (const std::uint64_t length :
         {41ULL, 77ULL, 78ULL, 82ULL, 83ULL, 88ULL, 4096ULL, 1ULL << 40}) {
      root.informationLength = length;
      EXPECT_FALSE(OpenImage()) << int{allocation} << ", " << length;
    }
    root.informationLength = 40;
    EXPECT_TRUE(OpenImage()) << int{allocation};
    EXPECT_THAT(Paths(), IsEmpty());
  }
  // The embedded descriptor is there, but not allocated.
  root.informationLength.reset();
  const std::string image = builder.Build();
  EXPECT_FALSE(OpenWith(image, builder.EntryOffsetOf(root) + kDescriptorsLength, 40, 4));
}

TEST_F(UdfOpen, GoesByTheEntryWhereTheIdentifierDescriptorSaysOtherwise) {
  const UdfNode& noFolder = builder.Root().AddFolder("no folder");
  const UdfNode& noFile = builder.Root().AddFile("no file");
  const UdfNode& masked = builder.Root().AddFile("masked");
  std::string image = builder.Build();
  image[builder.EntryOffsetOf(noFolder) + kFileType] = 5;
  image[builder.EntryOffsetOf(noFile) + kFileType] = 4;
  image[builder.IdentifierOffsetOf(noFile) + 18] = 4;       // deleted
  image[builder.IdentifierOffsetOf(masked) + 23] = '\x40';  // not recorded
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), ElementsAre(L"no folder", L"no file", L"masked"));
  EXPECT_EQ(InfoOf(L"no folder").bFolder, 0);
  EXPECT_EQ(InfoOf(L"no file").bFolder, 1);
  EXPECT_TRUE(OpenWith(image, builder.EntryOffsetOf(builder.Root()) + kFileType, 5, 1));
  EXPECT_THAT(Paths(), IsEmpty()) << "the root is a file";
}

TEST_F(UdfOpen, ScansTheRecognitionSequenceUpToAnUnknownIdentifier) {
  using Sequence = std::vector<std::string>;
  std::string image = builder.Build();
  const auto opensWith = [&](const Sequence& sequence) {
    Put(image, UdfBuilder::kRecognitionOffset, std::string(std::size_t{5} * 2048, '\0'));
    for (std::size_t i = 0; i < sequence.size(); ++i) {
      Put(image, UdfBuilder::kRecognitionOffset + 2048 * i + 1, sequence[i]);
    }
    return OpenBytes(image);
  };
  for (const Sequence& sequence : {Sequence{"BEA01", "NSR03", "TEA01"}, Sequence{"NSR02"},
                                   Sequence{"CD001", "CD001", "BEA01", "NSR02", "TEA01"},
                                   Sequence{"CDW02", "BOOT2", "TEA01", "NSR03"}}) {
    EXPECT_TRUE(opensWith(sequence)) << testing::PrintToString(sequence);
  }
  // The last one as an image with sectors of 4096 bytes has them.
  for (const Sequence& sequence :
       {Sequence{}, Sequence{"BEA01", "TEA01"}, Sequence{"BEA01", "NSR04", "NSR03"},
        Sequence{"BEA01", "", "NSR02"}}) {
    EXPECT_FALSE(opensWith(sequence)) << testing::PrintToString(sequence);
  }
}

TEST_F(UdfOpen, FindsTheSectorSizeByItsAnchor) {
  for (const std::uint32_t size : {512U, 1024U, 2048U, 4096U}) {
    UdfBuilder other(size);
    // Large enough for an anchor of larger sectors.
    other.Root().AddFile("big", std::string(1200000, 'x'));
    for (int i = 0; i < 60; ++i) other.Root().AddFile("file " + std::to_string(i), "x");
    const std::string image = other.Build();
    ASSERT_TRUE(OpenBytes(image)) << size;
    EXPECT_EQ(Paths().size(), 61U) << size;
    EXPECT_EQ(InfoOf(L"file 59").nPackedSize, size);
    EXPECT_FALSE(OpenWith(image, other.AnchorOffset(), 3, 1, other.AnchorOffset()));
    // The sum takes in every byte of the tag but itself.
    for (std::size_t i = 5; i < 16; ++i) {
      EXPECT_FALSE(OpenWith(image, other.AnchorOffset() + i, 0x55, 1)) << i;
    }
  }
}

TEST_F(UdfOpen, ReadsTheSequenceInAnyOrderUpToTheTerminator) {
  const std::string image = builder.Build();
  const std::size_t partition = builder.PartitionDescriptorOffset();
  const std::size_t volume = builder.VolumeDescriptorOffset();
  const std::size_t terminator = builder.TerminatorOffset();
  // A second copy of the volume takes a partition that is taken already; it
  // does no harm behind the terminator.
  std::string twice = image;
  Put(twice, terminator + 2048, image.substr(volume, 2048));
  EXPECT_TRUE(OpenBytes(twice));
  EXPECT_FALSE(OpenWith(twice, terminator, 7, 1, terminator)) << "others are passed over";

  std::string swapped = image;
  Put(swapped, partition, image.substr(volume, 2048) + image.substr(partition, 2048));
  Put(swapped, terminator, std::string(2048, '\0'));
  EXPECT_TRUE(OpenBytes(swapped)) << "the sequence ends without a terminator too";
  for (const std::uint64_t sectors : {1U, 2U}) {
    EXPECT_EQ(OpenWith(image, builder.AnchorOffset() + 16, sectors * 2048, 4), sectors == 2);
  }
}

TEST_F(UdfOpen, RefusesPartitionMapsThatDoNotBind) {
  const std::string image = builder.Build();
  const std::size_t volume = builder.VolumeDescriptorOffset();
  const std::uint16_t number = UdfBuilder::kFirstPartition;
  const std::string map = MakeUdfMaps({number});
  const struct {
    std::string maps;
    std::uint32_t count;
  } cases[] = {{MakeUdfMaps({UdfBuilder::kSecondPartition}), 1},
               {MakeUdfMaps({number, number}), 2},
               {"\2" + map.substr(1), 1},
               {"\1\7" + map.substr(2), 1},
               {map + "\2\x40", 2},
               {map, 0xFFFFFFFF}};
  for (const auto& [maps, count] : cases) {
    std::string bad = image;
    Put(bad, volume + 440, maps);
    EXPECT_FALSE(OpenWith(bad, volume + 268, count, 4)) << testing::PrintToString(maps);
  }
}

TEST_F(UdfOpen, ListsTheVolumesOneAfterTheOther) {
  builder.Root().AddFile("first", "1");
  UdfBuilder second;
  second.Root().AddFolder("folder").AddFile("second", "22");
  const UdfNode& third = second.Root().AddFile("third", "333");
  const std::string image = second.Build(builder.Build());
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_THAT(Paths(), ElementsAre(L"first", L"folder", L"folder\\second", L"third"));
  EXPECT_TRUE(unpacker.IsListComplete());
  EXPECT_TRUE(OpenWithoutTag(image, second.EntryOffsetOf(third))) << "the first was listed whole";
  EXPECT_THAT(Paths(), ElementsAre(L"first", L"folder", L"folder\\second"));
  EXPECT_FALSE(unpacker.IsListComplete());

  EXPECT_FALSE(OpenWithoutTag(image, builder.PartitionOffset()));
  EXPECT_TRUE(OpenWithoutTag(image, second.PartitionOffset()));
  EXPECT_THAT(Paths(), ElementsAre(L"first"));
  for (const std::uint32_t length : {0U, 511U}) {
    EXPECT_FALSE(OpenWith(image, builder.VolumeDescriptorOffset() + 248, length, 4));
    EXPECT_TRUE(OpenWith(image, second.VolumeDescriptorOffset() + 248, length, 4));
    EXPECT_THAT(Paths(), ElementsAre(L"first"));
  }
}

TEST_F(UdfOpen, AppliesTheRulesOfExtendedAttributes) {
  UdfNode& file = builder.Root().AddFolder("folder").AddFile("file", std::string(16, '\0'));
  file.extendedAttributes = std::string(1001, '\xEA');
  builder.Root().extendedAttributes = std::string(8, '\xEA');
  ASSERT_TRUE(OpenImage());
  EXPECT_THAT(Paths(), ElementsAre(L"folder", L"folder\\file"));
  builder.Root().extendedAttributes = std::string(6, '\xEA');
  EXPECT_FALSE(OpenImage()) << "parts of attributes in the root";
  // Descriptors that go on where the block of their entry ends.
  builder.Root().extendedAttributes.clear();
  file.extendedAttributes = std::string(2048 - testsupport::kUdfEntrySize - 16, '\xEA');
  file.allocation = kUdfLong;
  const std::string image = builder.Build();
  const std::size_t entry = builder.EntryOffsetOf(file);
  EXPECT_TRUE(OpenBytes(image));
  EXPECT_FALSE(OpenWith(image, entry + kDescriptorsLength, 32, 4));
  EXPECT_FALSE(OpenWith(image, entry + kAttributesLength, 0xFFFFFFF0, 4));
}

TEST_F(UdfOpen, RefusesATreeWithAnythingItCannotRead) {
  UdfNode& sub = builder.Root().AddFolder("sub");
  sub.AddFile("before", "x");
  UdfNode& node = sub.AddFile("node");
  node.allocation = kUdfLong;
  const std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image));
  const std::size_t entry = builder.EntryOffsetOf(node);
  const std::size_t identifier = builder.IdentifierOffsetOf(node);
  const std::size_t root = builder.EntryOffsetOf(builder.Root());
  const std::size_t partition = builder.PartitionDescriptorOffset();
  const std::uint32_t blocks = builder.PartitionBlocks();
  const struct {
    const char* what;
    std::size_t tag;
    std::size_t offset;
    std::uint64_t value;
    std::size_t count;
  } cases[] = {
      {"an extended file entry", entry, entry, 266, 2},
      {"an extended root entry", root, root, 266, 2},
      {"a symbolic link", entry, entry + kFileType, 12, 1},
      {"an indirect entry", root, root + kFileType, 3, 1},
      {"part of a long descriptor", entry, entry + kDescriptorsLength, 8, 4},
      {"part of a short one in a folder", root, root + kDescriptorsLength, 4, 4},
      {"no identifier descriptor", identifier, identifier, 261, 2},
      // The last byte of its own 38 + 5, rounded up, and that of the one before.
      {"padding that is not zero", identifier, identifier + 43, 1, 1},
      {"the same in the parent's", identifier, builder.ContentOffsetOf(sub) + 39, 1, 1},
      {"an entry without length", identifier, identifier + 20, 0, 4},
      {"an entry past its partition", identifier, identifier + 24, blocks, 4},
      {"an entry of 1 GiB", identifier, identifier + 20, 0x3FFFFFFF, 4},
      {"a directory past its partition", root, root + 180, blocks, 4},
      {"an entry in the block behind its partition", partition, partition + 192, blocks - 1, 4},
      {"a directory that is a hole", root, root + 179, 0x80, 1}};
  for (const auto& [what, tag, offset, value, count] : cases) {
    EXPECT_FALSE(OpenWith(image, offset, value, count, tag)) << what;
  }
  for (const unsigned type : {2U, 4U, 5U, 6U, 7U}) {
    EXPECT_FALSE(OpenWith(image, entry + 34, type, 2)) << "an unknown kind of descriptor";
  }
  for (const std::size_t tag :
       {partition, builder.VolumeDescriptorOffset(), builder.PartitionOffset(), root, identifier}) {
    EXPECT_FALSE(OpenWithoutTag(image, tag)) << tag;
  }
  EXPECT_FALSE(OpenWithoutTag(image, entry));
  EXPECT_THAT(Paths(), ElementsAre(L"sub", L"sub\\before"));
}

TEST_F(UdfOpen, BoundsOverlappingDirectories) {
  // A thousand folders, each with an entry of its own, share one directory.
  UdfBuilder small(512);
  UdfNode& shared = small.Root().AddFolder("shared");
  for (int i = 0; i < 300; ++i) shared.AddFile("f" + std::to_string(i)).allocation = kUdfEmbedded;
  for (int i = 0; i < 1000; ++i) small.Root().AddFolder("d" + std::to_string(i));
  small.Build();
  for (const auto& twin : small.Root().children) {
    twin->extents = shared.pieces;
    twin->informationLength = shared.pieces[0].length;
  }
  const std::string image = small.Build();
  EXPECT_TRUE(OpenBytes(image));
  EXPECT_GT(Paths().size(), 1300U);
  EXPECT_LT(Paths().size(), image.size() / 38);
}

TEST_F(UdfOpen, EntersNoFolderThatTakesTooMuchMemory) {
  builder.Root().AddFolder("large").informationLength = 70 << 20;
  EXPECT_TRUE(OpenSparseImage());
  EXPECT_THAT(Paths(), ElementsAre(L"large"));
  EXPECT_FALSE(unpacker.IsListComplete());
}

TEST_F(UdfOpen, BoundsNamesOfOneLargeEntry) {
  UdfBuilder small(512);
  UdfNode& large = small.Root().AddFile("large", std::string(16000, 'x'));
  large.allocation = kUdfEmbedded;
  for (int i = 0; i < 100; ++i) small.Root().AddFile("f" + std::to_string(i));
  std::string image = small.Build();
  const std::string icb = image.substr(small.LinkOffsetOf(large) - 4, 8);
  for (const auto& file : small.Root().children) Put(image, small.LinkOffsetOf(*file) - 4, icb);
  EXPECT_FALSE(OpenBytes(image));
  EXPECT_LE(Paths().size(), image.size() / 16000);
}

}  // namespace
