// Unpacking UDF images (ECMA-167): data in pieces, holes and entries, progress,
// interruption, and what a hostile image cannot reach.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/stat.h>
#include <unistd.h>

#include "support/bytes.h"
#include "support/imagetest.h"

namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testsupport::FixTag;
using testsupport::kUdfAllocatedOnly;
using testsupport::kUdfContinuation;
using testsupport::kUdfEmbedded;
using testsupport::kUdfLong;
using testsupport::kUdfNotAllocated;
using testsupport::kUdfShort;
using testsupport::MakeUdfAllocationExtent;
using testsupport::MakeUdfDescriptors;
using testsupport::Pattern;
using testsupport::UdfBuilder;
using testsupport::UdfExtent;
using testsupport::UdfNode;
using testsupport::WriteFile;

constexpr std::size_t kBlock = 262144;
constexpr std::size_t kSector = 2048;

class UdfExtract : public testsupport::ImageTest<UdfBuilder> {
 protected:
  /// A refused reference can end in an exception too.
  bool UnpackOne(const std::wstring& path) {
    try {
      return Unpack(path);
    } catch (const CInvalidArgException&) {
      return false;
    }
  }
  std::uint32_t FirstBlockOf(const UdfNode& node) const {
    return builder.ExtentsOf(node)[0].location;
  }
};

TEST_F(UdfExtract, PutsThePiecesTogetherInOrder) {
  std::vector<std::pair<UdfNode*, std::string>> files;
  for (const std::uint8_t allocation : {kUdfShort, kUdfLong}) {
    for (const std::size_t size : {1UL, kSector, kSector * 3 + 1, kBlock * 5 + 77}) {
      for (const bool wholeBlocks : {false, true}) {
        const std::string name = std::to_string(files.size());
        UdfNode& file = builder.Root().AddFile(name, Pattern(size));
        file.allocation = allocation;
        file.fragments = 3;
        file.wholeBlocks = wholeBlocks;
        file.extendedAttributes = std::string(size % 133, '\xEA');
        files.emplace_back(&file, name);
      }
    }
  }
  ASSERT_TRUE(OpenImage());
  ASSERT_EQ(builder.ExtentsOf(*files.back().first).size(), 3U);
  EXPECT_TRUE(Unpack());
  for (const auto& [file, name] : files) {
    EXPECT_EQ(Out(name) == file->content, true) << name << ", " << file->content.size();
  }
}

TEST_F(UdfExtract, EndsAtTheInformationLengthOrTheLastPiece) {
  UdfNode& shorter = builder.Root().AddFile("shorter", Pattern(5000));
  shorter.fragments = 3;
  shorter.informationLength = 3000;
  UdfNode& longer = builder.Root().AddFile("longer", Pattern(5000));
  longer.fragments = 3;
  longer.informationLength = 9000;
  UdfNode& inside = builder.Root().AddFile("inside", Pattern(100));
  inside.allocation = kUdfEmbedded;
  inside.informationLength = std::uint64_t{1} << 40;
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(UnpackOne(L"shorter"));
  EXPECT_EQ(Out("shorter"), Pattern(5000).substr(0, 3000));
  EXPECT_TRUE(UnpackOne(L"longer"));
  EXPECT_EQ(Out("longer"), Pattern(5000));
  UnpackOne(L"inside");
  EXPECT_EQ(Out("inside"), Pattern(100));
}

TEST_F(UdfExtract, ReportsBytesOfTheWholeFileAcrossItsPieces) {
  builder.Root().AddFolder("d").AddFile("big", Pattern(kBlock * 4)).fragments = 4;
  builder.Root().AddFile("odd", Pattern(kSector * 4)).fragments = 2;
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack());
  EXPECT_EQ(host.progressMessages, (std::vector<testsupport::ProgressMessage>{{0, L"big"},
                                                                              {25, L""},
                                                                              {50, L""},
                                                                              {75, L""},
                                                                              {100, L""},
                                                                              {0, L"odd"},
                                                                              {50, L""},
                                                                              {100, L""}}));
}

TEST_F(UdfExtract, WritesDataFromTheEntryAtOnce) {
  UdfNode& file = builder.Root().AddFile("embedded", Pattern(1500));
  file.allocation = kUdfEmbedded;
  file.extendedAttributes = std::string(132, '\xEA');
  ASSERT_TRUE(OpenImage());
  int events = 0;
  host.onPendingEvents = [&] { ++events; };
  EXPECT_TRUE(UnpackOne(L"embedded"));
  EXPECT_EQ(Out("embedded"), Pattern(1500));
  EXPECT_EQ(host.progressMessages,
            (std::vector<testsupport::ProgressMessage>{{0, L"embedded"}, {100, L""}}));
  EXPECT_EQ(events, 0) << "no messages are pumped for such a file";
}

TEST_F(UdfExtract, ReadsZerosWhereNothingIsRecorded) {
  UdfNode& file = builder.Root().AddFile("holes", Pattern(kSector * 4));
  UdfNode& tail = builder.Root().AddFile("tail", Pattern(kSector));
  UdfNode& only = builder.Root().AddFile("only");
  builder.Build();
  const std::uint32_t first = FirstBlockOf(file);
  for (const std::uint8_t allocation : {kUdfShort, kUdfLong}) {
    file.allocation = tail.allocation = only.allocation = allocation;
    file.extents = {{kSector, first, 0},
                    {kSector | kUdfAllocatedOnly, first + 1, 0},
                    {kSector | kUdfNotAllocated, 0, 0},
                    {kSector | kUdfNotAllocated, 0xFFFFFFFF, 0},
                    {100, first + 3, 0}};
    file.informationLength = kSector * 4 + 100;
    tail.extents = {{kSector, FirstBlockOf(tail), 0}, {kSector | kUdfNotAllocated, 0, 0}};
    tail.informationLength = kSector + 1000;
    only.extents = {{5000U | kUdfNotAllocated, 0, 0}};
    only.informationLength = 5000;
    ASSERT_TRUE(OpenImage());
    EXPECT_TRUE(Unpack());
    EXPECT_EQ(Out("holes"), Pattern(kSector) + std::string(kSector * 3, '\0') +
                                Pattern(kSector * 4).substr(kSector * 3, 100));
    EXPECT_EQ(Out("tail"), Pattern(kSector) + std::string(1000, '\0'));
    EXPECT_EQ(Out("only"), std::string(5000, '\0'));
  }
}

TEST_F(UdfExtract, WritesHolesWithoutTakingSpace) {
  constexpr std::uint32_t kLargest = 0x3FFFF800;
  UdfNode& file = builder.Root().AddFile("sparse", "tail\n");
  UdfNode& after = builder.Root().AddFile("all hole");
  builder.Build();
  file.extents.emplace(8, UdfExtent{kLargest | kUdfNotAllocated, 0, 0});
  file.extents->push_back({32768U | kUdfNotAllocated, 0, 0});
  file.extents->push_back(builder.ExtentsOf(file)[0]);
  const std::uint64_t hole = std::uint64_t{kLargest} * 8 + 32768;
  file.informationLength = hole + 5;
  ASSERT_GT(*file.informationLength, std::uint64_t{8} << 30);
  after.extents.emplace(8, UdfExtent{kLargest | kUdfAllocatedOnly, 0, 0});
  after.informationLength = std::uint64_t{kLargest} * 8 - 1;
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack());
  const std::pair<const char*, std::uint64_t> cases[] = {
      {"out/sparse", hole + 5}, {"out/all hole", std::uint64_t{kLargest} * 8 - 1}};
  for (const auto& [name, size] : cases) {
    struct stat status {};
    ASSERT_EQ(stat(folder.Path(name).c_str(), &status), 0);
    EXPECT_EQ(static_cast<std::uint64_t>(status.st_size), size) << name;
    EXPECT_LT(status.st_blocks * 512, 1 << 20) << name;
  }
  char tail[6] = {};
  const int descriptor = open(folder.Path("out/sparse").c_str(), O_RDONLY);
  EXPECT_EQ(pread(descriptor, tail, 5, static_cast<off_t>(hole)), 5);
  close(descriptor);
  EXPECT_STREQ(tail, "tail\n");
  ASSERT_FALSE(host.progressMessages.empty());
  EXPECT_EQ(host.progressMessages.back().percentage, 100U);
}

TEST_F(UdfExtract, StopsInTheMiddleOfAHole) {
  UdfNode& file = builder.Root().AddFile("sparse");
  file.extents.emplace(100, UdfExtent{0x3FFFF800 | kUdfNotAllocated, 0, 0});
  file.informationLength = std::uint64_t{0x3FFFF800} * 100;
  ASSERT_TRUE(OpenImage());
  host.onPendingEvents = [&] {
    if (host.messageBoxes.empty()) host.PostStop();
  };
  host.messageBoxAnswers = {IDYES};
  EXPECT_FALSE(UnpackOne(L"sparse"));
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
    const std::vector<UdfExtent> pieces = other.ExtentsOf(file);
    ASSERT_EQ(pieces.size(), 7U);
    const auto continued = [&](const UdfNode& node) {
      return UdfExtent{kSector | kUdfContinuation, other.ExtentsOf(node)[0].location, 0};
    };
    file.extents = {pieces[0], pieces[1], continued(more)};
    more.content = MakeUdfAllocationExtent(
        MakeUdfDescriptors({pieces[2], pieces[3], pieces[4], continued(most)}, allocation));
    most.content = MakeUdfAllocationExtent(MakeUdfDescriptors({pieces[5], pieces[6]}, allocation));
    const std::size_t used = most.content.size();
    more.content.resize(kSector);
    most.content.resize(kSector, '\x11');
    const std::string image = other.Build();
    ASSERT_EQ(other.ExtentsOf(file)[6].location, pieces[6].location);
    ASSERT_TRUE(OpenBytes(image));
    EXPECT_TRUE(UnpackOne(L"file"));
    EXPECT_TRUE(Out("file") == file.content) << int{allocation};

    // None of these may be taken for the whole file.
    const std::size_t at = other.ContentOffsetOf(most);
    struct Damage {
      const char* what;
      std::size_t offset;
      std::string bytes;
    };
    for (const Damage& damage :
         {Damage{"another tag", at, std::string("\x01\x01", 2)},
          Damage{"descriptors longer than the extent", at + 20, std::string("\xF0\xFF\xFF\x7F")},
          Damage{"part of a descriptor", at + 20,
                 std::string(1, static_cast<char>(used - 24 - 4)) + std::string(3, '\0')},
          Damage{"a loop", at + 24,
                 MakeUdfDescriptors({continued(more)}, allocation) + std::string(1, '\0')}}) {
      std::string bad = image;
      bad.replace(damage.offset, damage.bytes.size(), damage.bytes);
      FixTag(bad, at);
      unlink(folder.Path("out/file").c_str());
      if (OpenBytes(bad) && UnpackOne(L"file")) {
        EXPECT_FALSE(Out("file") == file.content) << damage.what;
        EXPECT_LE(Out("file").size(), file.content.size()) << damage.what;
      }
    }
  }
}

// ECMA-167 4/12: a continuation ends the descriptors of its extent, so what
// stands behind it is refused or ignored. It is never data, nor a hole.
TEST_F(UdfExtract, NeverTakesAContinuationForData) {
  UdfNode& file = builder.Root().AddFile("file", Pattern(kSector * 3));
  UdfNode& more = builder.Root().AddFile("more", std::string(kSector, '\0'));
  file.fragments = 3;
  builder.Build();
  const std::vector<UdfExtent> pieces = builder.ExtentsOf(file);
  more.content = MakeUdfAllocationExtent(MakeUdfDescriptors({pieces[1], pieces[2]}, kUdfShort));
  more.content.resize(kSector);
  file.extents = {pieces[0], {kSector | kUdfContinuation, FirstBlockOf(more), 0}, pieces[2]};
  if (OpenImage() && UnpackOne(L"file")) {
    EXPECT_TRUE(Out("file") == file.content);
  }
}

TEST_F(UdfExtract, FailsForDataOutsideThePartitionAndGoesOn) {
  builder.Root().AddFile("first", "1");
  UdfNode& outside = builder.Root().AddFile("outside", Pattern(kSector * 2));
  UdfNode& far = builder.Root().AddFile("far", "x");
  UdfNode& reference = builder.Root().AddFile("reference", "x");
  UdfNode& last = builder.Root().AddFile("last", Pattern(5));
  last.wholeBlocks = true;
  builder.Build();
  const std::uint32_t blocks = builder.PartitionBlocks();
  ASSERT_EQ(FirstBlockOf(last), blocks - 1);
  outside.extents = {{kSector, FirstBlockOf(outside), 0}, {kSector + 1, blocks - 1, 0}};
  outside.informationLength = kSector * 2 + 1;
  far.extents = {{1, 0xFFFFFFFF, 0}};
  reference.allocation = kUdfLong;
  reference.extents = {{1, 1, 1}};
  // There is something to read behind the partition.
  ASSERT_TRUE(OpenBytes(builder.Build() + std::string(kSector * 4, 'E')));
  EXPECT_FALSE(UnpackOne(L"outside"));
  EXPECT_EQ(Out("outside"), Pattern(kSector)) << "what was written before stays";
  EXPECT_FALSE(UnpackOne(L"far"));
  EXPECT_FALSE(UnpackOne(L"reference"));
  EXPECT_TRUE(UnpackOne(L"last")) << "up to the last byte of the partition";
  unlink(folder.Path("out/last").c_str());
  reference.extents = {{1, 0xFFFFFFFF, 0}};
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(Unpack()) << "the last item succeeded";
  EXPECT_EQ(Out("first"), "1");
  EXPECT_EQ(Out("last"), Pattern(5));
}

TEST_F(UdfExtract, ReadsEachVolumeFromItsOwnPartition) {
  // The same blocks of the two partitions hold different data.
  builder.AddVolume();
  for (const std::size_t volume : {0U, 1U}) {
    const std::string content = Pattern(kSector * 4).substr(volume * 1000, kSector * 2 + 5);
    UdfNode& sub = builder.Root(volume).AddFolder("sub" + std::to_string(volume));
    sub.AddFile("short", content).fragments = 2;
    UdfNode& file = sub.AddFile("long", content);
    file.fragments = 3;
    file.allocation = kUdfLong;
  }
  // A file of the first volume that lies in both partitions.
  UdfNode& both = builder.Root(0).AddFile("both", "in the first,");
  UdfNode& other = builder.Root(1).AddFile("other", " in the second");
  both.allocation = kUdfLong;
  ASSERT_TRUE(OpenImage());
  ASSERT_EQ(builder.ExtentsOf(*builder.Root(0).children[0]->children[0])[0].location,
            builder.ExtentsOf(*builder.Root(1).children[0]->children[0])[0].location);
  EXPECT_TRUE(Unpack());
  for (const std::size_t volume : {0U, 1U}) {
    const auto& files = builder.Root(volume).children[0]->children;
    EXPECT_EQ(Out("sub" + std::to_string(volume) + "/short"), files[0]->content);
    EXPECT_EQ(Out("sub" + std::to_string(volume) + "/long"), files[1]->content);
  }
  both.extents = {builder.ExtentsOf(both)[0], builder.ExtentsOf(other)[0]};
  both.extents->back().partition = 1;
  both.informationLength = both.content.size() + other.content.size();
  builder.Volume(0).maps = {{1, 6, builder.Volume(0).partitionNumber},
                            {1, 6, builder.Volume(1).partitionNumber}};
  std::string image = builder.Build();
  ++image[builder.VolumeDescriptorOffset(1) + 4];
  ASSERT_TRUE(OpenBytes(image));
  EXPECT_TRUE(UnpackOne(L"both"));
  EXPECT_EQ(Out("both"), "in the first, in the second");
}

TEST_F(UdfExtract, ReadsAPartitionBeyondFourGigabytes) {
  UdfNode& file = builder.Root().AddFile("file", Pattern(5000));
  file.fragments = 3;
  std::string image = builder.Build();
  constexpr std::uint32_t kStart = 0x00300000;
  const std::size_t field = builder.PartitionDescriptorOffset() + 188;
  testsupport::Put(image, field, testsupport::Little(kStart, 4));
  const std::string partition = image.substr(builder.PartitionOffset());
  image.resize(builder.PartitionOffset());
  WriteFile(folder.Path("x"), image);
  const int descriptor = open(folder.Path("x").c_str(), O_WRONLY);
  ASSERT_EQ(pwrite(descriptor, partition.data(), partition.size(), off_t{kStart} * 2048),
            static_cast<ssize_t>(partition.size()));
  close(descriptor);
  ASSERT_TRUE(Open());
  EXPECT_TRUE(UnpackOne(L"file"));
  EXPECT_EQ(Out("file"), Pattern(5000));
}

TEST_F(UdfExtract, ReadsNothingOnceTheVolumesAreDropped) {
  builder.Root().AddFile("file", "content");
  ASSERT_TRUE(OpenImage());
  unpacker.RemoveUDFAllItems();
  EXPECT_FALSE(UnpackOne(L"file"));
  ASSERT_TRUE(OpenImage());
  EXPECT_TRUE(UnpackOne(L"file"));
  EXPECT_EQ(Out("file"), "content");
}

}  // namespace
