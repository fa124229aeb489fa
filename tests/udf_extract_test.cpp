// Unpacking UDF images (ECMA-167): data in pieces, holes and entries, progress,
// interruption, and what a hostile image cannot reach.
#include <gmock/gmock.h>
#include <unistd.h>

#include <fstream>

#include "support/bytes.h"
#include "support/imagetest.h"

namespace {

using testing::IsEmpty;
using testsupport::FixTag;
using testsupport::kUdfAllocatedOnly;
using testsupport::kUdfContinuation;
using testsupport::kUdfEmbedded;
using testsupport::kUdfLong;
using testsupport::kUdfNotAllocated;
using testsupport::kUdfShort;
using testsupport::Little;
using testsupport::MakeUdfAllocationExtent;
using testsupport::MakeUdfDescriptors;
using testsupport::Pattern;
using testsupport::Put;
using testsupport::UdfBuilder;
using testsupport::UdfExtent;
using testsupport::UdfNode;
using testsupport::WriteFile;

constexpr std::size_t kBlock = 262144;
constexpr std::size_t kSector = 2048;

class UdfExtract : public testsupport::ImageTest<UdfBuilder> {};

TEST_F(UdfExtract, EndsAtTheInformationLengthOrTheLastPiece) {
  const struct {
    const char* name;
    std::uint64_t length;
    std::size_t written;
    std::uint8_t allocation;
  } cases[] = {{"shorter", 3000, 3000, kUdfShort},
               {"longer", 9000, 5000, kUdfShort},
               {"inside", 1ULL << 40, 5000, kUdfEmbedded},
               {"less inside", 1000, 1000, kUdfEmbedded}};
  for (const auto& [name, length, written, allocation] : cases) {
    UdfNode& file = builder.Root().AddFile(name, Pattern(5000));
    file.fragments = 3;
    file.allocation = allocation;
    file.informationLength = length;
  }
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack());
  for (const auto& [name, length, written, allocation] : cases) {
    EXPECT_TRUE(Out(name) == Pattern(5000).substr(0, written)) << name;
  }
}

TEST_F(UdfExtract, ReportsBytesOfTheWholeFileAcrossItsPieces) {
  builder.Root().AddFolder("d").AddFile("big", Pattern(kBlock * 4)).fragments = 2;
  UdfNode& embedded = builder.Root().AddFile("embedded", Pattern(1500));
  embedded.allocation = kUdfEmbedded;
  embedded.extendedAttributes = std::string(132, '\xEA');
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack());
  const std::vector<testsupport::ProgressMessage> all = {
      {0, L"big"}, {25, L""}, {50, L""}, {75, L""}, {100, L""}, {0, L"embedded"}, {100, L""}};
  EXPECT_EQ(host.progressMessages, all);
  EXPECT_EQ(Out("embedded"), Pattern(1500));
}

TEST_F(UdfExtract, ReadsZerosWhereNothingIsRecorded) {
  UdfNode& file = builder.Root().AddFile("holes", Pattern(kSector * 4));
  UdfNode& tail = builder.Root().AddFile("tail", Pattern(kSector));
  builder.Build();
  const std::uint32_t first = file.pieces[0].location;
  file.extents = {{kSector, first, 0},
                  {kSector | kUdfAllocatedOnly, first + 1, 0},
                  {kSector | kUdfNotAllocated, 0, 0},
                  {kSector | kUdfNotAllocated, 0xFFFFFFFF, 0},
                  {100, first + 3, 0}};
  file.informationLength = kSector * 4 + 100;
  tail.extents = {tail.pieces[0], {kSector | kUdfNotAllocated, 0, 0}};
  tail.informationLength = kSector + 1000;
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(Out("holes"), Pattern(kSector) + std::string(kSector * 3, '\0') +
                              Pattern(kSector * 4).substr(kSector * 3, 100));
  EXPECT_EQ(Out("tail"), Pattern(kSector) + std::string(1000, '\0'));
}

TEST_F(UdfExtract, WritesHolesWithoutTakingSpace) {
  constexpr std::uint32_t kLargest = 0x3FFFF800;
  constexpr std::uint64_t kHole = std::uint64_t{kLargest} * 9;
  UdfNode& file = builder.Root().AddFile("sparse", "tail\n");
  builder.Build();
  file.extents.emplace(9, UdfExtent{kLargest | kUdfNotAllocated, 0, 0});
  file.extents->push_back(file.pieces[0]);
  file.informationLength = kHole + 5;
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(static_cast<std::uint64_t>(StatusOf("sparse").st_size), kHole + 5);
  EXPECT_LT(StatusOf("sparse").st_blocks * 512, 1 << 20);
  std::ifstream written(folder.Path("out/sparse"));
  written.seekg(kHole);
  std::string tail;
  EXPECT_TRUE(std::getline(written, tail));
  EXPECT_EQ(tail, "tail");
  EXPECT_EQ(host.progressMessages.back().percentage, 100U);

  unlink(folder.Path("out/sparse").c_str());
  host.onPendingEvents = [&] {
    if (host.messageBoxes.empty()) host.PostStop();
  };
  host.messageBoxAnswers = {IDYES};
  EXPECT_FALSE(Unpack(L"sparse")) << "stopped in the middle of the hole";
  EXPECT_THAT(Out(), IsEmpty());
}

TEST_F(UdfExtract, FollowsContinuedDescriptors) {
  for (const std::uint8_t allocation : {kUdfShort, kUdfLong}) {
    UdfBuilder other;
    UdfNode& file = other.Root().AddFile("file", Pattern(kSector * 6 + 10));
    UdfNode& more = other.Root().AddFile("more", std::string(kSector, '\0'));
    UdfNode& most = other.Root().AddFile("most", std::string(kSector, '\0'));
    file.allocation = allocation;
    file.fragments = 7;
    other.Build();
    const std::vector<UdfExtent> pieces = file.pieces;
    ASSERT_EQ(pieces.size(), 7U);
    const auto continuedIn = [](const UdfNode& node) {
      return UdfExtent{kSector | kUdfContinuation, node.pieces[0].location, 0};
    };
    file.extents = {pieces[0], pieces[1], continuedIn(more)};
    more.content = MakeUdfAllocationExtent(
        MakeUdfDescriptors({pieces[2], pieces[3], pieces[4], continuedIn(most)}, allocation));
    most.content = MakeUdfAllocationExtent(MakeUdfDescriptors({pieces[5], pieces[6]}, allocation));
    const std::size_t used = most.content.size() - 24;
    more.content.resize(kSector);
    most.content.resize(kSector, '\x11');
    const std::string image = other.Build();
    ASSERT_TRUE(OpenBytes(image));
    EXPECT_TRUE(Unpack(L"file"));
    EXPECT_TRUE(Out("file") == file.content) << int{allocation};

    // None of these may be taken for the whole file.
    const std::size_t at = other.ContentOffsetOf(most);
    const struct {
      const char* what;
      std::size_t offset;
      std::string bytes;
    } damages[] = {{"another tag", at, {"\x01\x01", 2}},
                   {"descriptors longer than the extent", at + 20, Little(0x7FFFFFF0, 4)},
                   {"part of a descriptor", at + 20, Little(used - 4, 4)},
                   {"a loop", at + 24, MakeUdfDescriptors({continuedIn(more)}, allocation) + '\0'}};
    for (const auto& [what, offset, bytes] : damages) {
      std::string bad = image;
      Put(bad, offset, bytes);
      FixTag(bad, at);
      unlink(folder.Path("out/file").c_str());
      if (!OpenBytes(bad) || !Unpack(L"file")) continue;
      EXPECT_FALSE(Out("file") == file.content) << what;
      EXPECT_LE(Out("file").size(), file.content.size()) << what;
    }

    // ECMA-167 4/12: a continuation ends the descriptors of its extent, so what
    // stands behind it is refused or ignored. It is never data, nor a hole.
    file.extents->push_back(pieces[2]);
    if (OpenBytes(other.Build()) && Unpack(L"file")) {
      EXPECT_TRUE(Out("file") == file.content);
    }
  }
}

TEST_F(UdfExtract, FailsForDataOutsideThePartitionAndGoesOn) {
  UdfNode& outside = builder.Root().AddFile("outside", Pattern(kSector));
  UdfNode& far = builder.Root().AddFile("far", "x");
  UdfNode& reference = builder.Root().AddFile("reference", "x");
  UdfNode& last = builder.Root().AddFile("last");
  builder.Build();
  const std::uint32_t blocks = builder.PartitionBlocks();
  outside.extents = {outside.pieces[0], {kSector + 1, blocks - 1, 0}};
  outside.informationLength = kSector * 2 + 1;
  far.extents = {{1, 0xFFFFFFFF, 0}};
  reference.allocation = kUdfLong;
  reference.extents = {{1, 1, 1}};
  last.extents = {{kSector, blocks - 1, 0}};
  last.informationLength = kSector;
  // There is something to read behind the partition.
  const std::string image = builder.Build();
  ASSERT_TRUE(OpenBytes(image + std::string(kSector * 4, 'E')));
  EXPECT_FALSE(Unpack(L"outside"));
  EXPECT_EQ(Out("outside"), Pattern(kSector)) << "what was written before stays";
  EXPECT_FALSE(Unpack(L"far"));
  EXPECT_FALSE(Unpack(L"reference"));
  EXPECT_TRUE(Unpack()) << "the last item succeeded";
  EXPECT_EQ(Out("last"), image.substr(image.size() - kSector)) << "up to the last byte";
  unpacker.RemoveUDFAllItems();
  EXPECT_FALSE(Unpack(L"last")) << "no partition is left";
}

TEST_F(UdfExtract, FollowsPartitionReferences) {
  // The same blocks of the two partitions hold different data.
  UdfBuilder second;
  std::size_t start = 0;
  for (UdfBuilder* const volume : {&builder, &second}) {
    for (const std::uint8_t allocation : {kUdfShort, kUdfLong}) {
      const std::string content = Pattern(kSector * 4).substr(start += 1000, kSector * 2 + 5);
      UdfNode& file = volume->Root().AddFile(std::to_string(start), content);
      file.allocation = allocation;
      file.fragments = 2;
    }
  }
  std::string image = second.Build(builder.Build());
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_TRUE(Unpack());
  for (std::size_t i = 1000; i <= start; i += 1000) {
    EXPECT_EQ(Out(std::to_string(i)), Pattern(kSector * 4).substr(i, kSector * 2 + 5)) << i;
  }

  // One volume of both partitions, with a file that lies in both, and one
  // whose entry lies in the other.
  UdfNode& both = *builder.Root().children[1];
  const UdfNode& there = *second.Root().children[1];
  both.extents = {both.pieces[0], there.pieces[1]};
  both.extents->back().partition = 1;
  both.informationLength = both.pieces[0].length + there.pieces[1].length;
  image = second.Build(builder.Build());
  ++image[second.VolumeDescriptorOffset() + 4];
  const std::size_t volume = builder.VolumeDescriptorOffset();
  Put(image, volume + 268, Little(2, 4));
  Put(image, volume + 440,
      testsupport::MakeUdfMaps({UdfBuilder::kFirstPartition, UdfBuilder::kSecondPartition}));
  const std::size_t icb = builder.IdentifierOffsetOf(*builder.Root().children[0]) + 20;
  Put(image, icb, MakeUdfDescriptors({{kSector, there.icb.location, 1}}, kUdfLong));
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_EQ(InfoOf(L"1000").nSize64, there.content.size());
  EXPECT_TRUE(Unpack(L"2000"));
  EXPECT_EQ(Out("2000"), both.content.substr(0, both.pieces[0].length) +
                             there.content.substr(there.pieces[0].length));
  ++image[icb + 8];
  EXPECT_THROW(OpenBytes(image), CInvalidArgException) << "there is no third partition";
}

TEST_F(UdfExtract, ReadsAPartitionBeyondFourGigabytes) {
  builder.Root().AddFile("file", Pattern(5000)).fragments = 3;
  std::string image = builder.Build();
  constexpr std::uint32_t kStart = 0x00300000;
  Put(image, builder.PartitionDescriptorOffset() + 188, Little(kStart, 4));
  const std::string partition = image.substr(builder.PartitionOffset());
  WriteFile(folder.Path("x"), image.substr(0, builder.PartitionOffset()));
  std::fstream(folder.Path("x")).seekp(std::int64_t{kStart} * 2048) << partition;
  ASSERT_TRUE(Open());
  EXPECT_TRUE(Unpack(L"file"));
  EXPECT_EQ(Out("file"), Pattern(5000));
}

}  // namespace
