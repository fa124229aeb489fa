// UDF images (ECMA-167 volume and file structure) written byte by byte, for
// what no tool makes.
//
//   UdfBuilder builder;
//   UdfNode& file = builder.Root().AddFolder("docs").AddFile("a.txt", "content");
//   file.fragments = 3;
//   std::string image = builder.Build();
//   image[builder.EntryOffsetOf(file) + 27] = 12;  // damage its file type
//   FixTag(image, builder.EntryOffsetOf(file));
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "support/bytes.h"
#include "support/treenode.h"

namespace testsupport {

// Tag identifiers (ECMA-167 3/7.2.1 and 4/7.2.1).
inline constexpr std::uint16_t kUdfAllocationExtentTag = 258;
inline constexpr std::uint16_t kUdfFileEntryTag = 261;
inline constexpr std::uint16_t kUdfExtendedFileEntryTag = 266;

// Allocation descriptor types of an entry (ECMA-167 4/14.6.8).
inline constexpr std::uint8_t kUdfShort = 0;
inline constexpr std::uint8_t kUdfLong = 1;
inline constexpr std::uint8_t kUdfEmbedded = 3;

// Extent types, the two high bits of a length (ECMA-167 4/14.14.1.1).
inline constexpr std::uint32_t kUdfAllocatedOnly = 1U << 30;
inline constexpr std::uint32_t kUdfNotAllocated = 2U << 30;
inline constexpr std::uint32_t kUdfContinuation = 3U << 30;

// Where an entry has what (ECMA-167 4/14.9) and an identifier (4/14.4).
inline constexpr std::size_t kUdfEntrySize = 176;
inline constexpr std::size_t kUdfIdentifierSize = 38;

/// Type and zone (2 bytes), year (2), month, day, hour, minute, second and
/// three fractions of a second.
using UdfDate = std::array<std::uint8_t, 12>;
constexpr UdfDate MakeUdfDate(std::uint16_t year, std::uint8_t month, std::uint8_t day,
                              std::uint8_t hour = 0, std::uint8_t minute = 0,
                              std::uint8_t second = 0) {
  return {0x3C,
          0x10,
          static_cast<std::uint8_t>(year & 0xFF),
          static_cast<std::uint8_t>(year >> 8),
          month,
          day,
          hour,
          minute,
          second,
          1,
          2,
          3};
}

/// An allocation descriptor. A short one has no partition.
struct UdfExtent {
  /// In bytes; the extent type in the two high bits.
  std::uint32_t length = 0;
  /// Logical block in the partition.
  std::uint32_t location = 0;
  std::uint16_t partition = 0;
};

/// Allocation descriptors as recorded.
std::string MakeUdfDescriptors(const std::vector<UdfExtent>& extents, std::uint8_t type);
/// An allocation extent descriptor with these behind it (ECMA-167 4/14.5).
std::string MakeUdfAllocationExtent(const std::string& descriptors);
/// Puts the right checksum into the descriptor tag at `offset`.
void FixTag(std::string& image, std::size_t offset);

/// One file entry and the identifier descriptor that leads to it. The name is
/// recorded behind the compression identifier. An override changes what is written, never where
/// things are laid out.
struct UdfNode : TreeNode<UdfNode> {
  // The identifier descriptor.
  std::uint8_t compression = 8;
  /// The whole identifier, in place of compression and name.
  std::optional<std::string> identifier;
  bool deleted = false;
  std::string implementationUse;
  std::optional<std::uint32_t> icbLength;
  std::optional<std::uint32_t> icbLocation;
  std::optional<std::uint16_t> icbPartition;

  // The entry.
  std::uint16_t tag = kUdfFileEntryTag;
  std::optional<std::uint8_t> fileType;
  /// Data is embedded for kUdfEmbedded, else in extents. Types that are none
  /// of the three have short descriptors.
  std::uint8_t allocation = kUdfShort;
  /// The content is cut into as many pieces of whole blocks as it has blocks
  /// for, at most this many. The first piece lies last in the image, and
  /// something else between any two.
  std::size_t fragments = 1;
  /// The length of the last extent covers its last block too.
  bool wholeBlocks = false;
  /// Recorded in place of the descriptors of the pieces.
  std::optional<std::vector<UdfExtent>> extents;
  std::string extendedAttributes;
  std::optional<std::uint64_t> informationLength;
  std::optional<std::uint64_t> blocksRecorded;
  UdfDate accessed = MakeUdfDate(2002, 3, 4, 5, 6, 7);
  UdfDate modified = MakeUdfDate(2001, 2, 3, 4, 5, 6);
};

struct UdfMap {
  std::uint8_t type = 1;
  std::uint8_t length = 6;
  std::uint16_t partition = 0;
};

/// A logical volume and its partition.
struct UdfVolume {
  UdfNode root;
  std::uint16_t partitionNumber = 0;
  /// In place of one map to the partition.
  std::optional<std::vector<UdfMap>> maps;
};

struct UdfOptions {
  std::uint32_t sectorSize = 2048;
  std::vector<std::string> recognition = {"BEA01", "NSR02", "TEA01"};
  bool hasTerminator = true;
  /// Sectors of the volume descriptor sequence, used or not.
  std::uint32_t sequenceSectors = 16;
  /// Of the first volume. The others follow.
  std::uint32_t partitionStart = 260;
};

class UdfBuilder {
 public:
  UdfBuilder();

  UdfNode& Root(std::size_t volume = 0) { return m_volumes.at(volume)->root; }
  UdfVolume& Volume(std::size_t volume = 0) { return *m_volumes.at(volume); }
  UdfVolume& AddVolume();
  UdfOptions& Options() { return m_options; }

  /// Can be repeated after changes, for instance to record extents that the
  /// first run told.
  std::string Build();

  // Byte offsets of what the last Build wrote.
  std::size_t AnchorOffset() const { return std::size_t{256} * m_options.sectorSize; }
  std::size_t SequenceOffset() const;
  std::size_t PartitionDescriptorOffset(std::size_t volume = 0) const;
  std::size_t VolumeDescriptorOffset(std::size_t volume = 0) const;
  std::size_t TerminatorOffset() const;
  std::size_t PartitionOffset(std::size_t volume = 0) const;
  std::size_t FileSetOffset(std::size_t volume = 0) const { return PartitionOffset(volume); }
  std::size_t EntryOffsetOf(const UdfNode& node) const;
  /// Of the identifier descriptor; the root has none.
  std::size_t IdentifierOffsetOf(const UdfNode& node) const;
  /// Of a byte of the content of a file, or of a folder's descriptors.
  std::size_t ContentOffsetOf(const UdfNode& node, std::size_t position = 0) const;

  // Logical blocks of what the last Build wrote.
  std::uint32_t EntryBlockOf(const UdfNode& node) const { return m_places.at(&node).block; }
  /// The pieces of a node's content in order.
  const std::vector<UdfExtent>& ExtentsOf(const UdfNode& node) const {
    return m_places.at(&node).extents;
  }
  std::uint32_t PartitionBlocks(std::size_t volume = 0) const { return m_lengths.at(volume); }

 private:
  struct Place {
    std::size_t volume = 0;
    const UdfNode* parent = nullptr;
    std::uint32_t block = 0;
    /// Bytes of the entry.
    std::uint32_t length = 0;
    /// In the content of the parent.
    std::size_t identifier = 0;
    std::uint64_t contentLength = 0;
    std::vector<UdfExtent> extents;
  };

  void ListNodes(std::size_t volume);
  std::uint32_t BlocksOf(std::size_t bytes) const;
  void PlaceContent(const UdfNode& node);
  std::string Identifier(const UdfNode& target, std::string_view identifier,
                         std::uint8_t characteristics, const UdfNode* overrides) const;
  std::string ContentOf(const UdfNode& node);
  std::string Entry(const UdfNode& node, const std::string& content) const;
  std::string VolumeDescriptor(const UdfVolume& volume) const;
  void WriteSequence(std::string& image) const;
  void WriteVolume(std::string& image, std::size_t volume);

  std::vector<std::unique_ptr<UdfVolume>> m_volumes;
  UdfOptions m_options;
  /// All nodes, each folder before what is in it.
  std::vector<const UdfNode*> m_nodes;
  std::unordered_map<const UdfNode*, Place> m_places;
  /// First sector and number of sectors of each partition.
  std::vector<std::uint32_t> m_starts;
  std::vector<std::uint32_t> m_lengths;
  std::uint32_t m_nNextBlock = 0;
};

}  // namespace testsupport
