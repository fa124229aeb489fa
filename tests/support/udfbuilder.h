// UDF images (ECMA-167 volume and file structure) written byte by byte, for
// what no tool makes.
//
//   UdfBuilder builder;
//   UdfNode& file = builder.Root().AddFolder("docs").AddFile("a.txt", "content");
//   file.fragments = 3;
//   std::string image = builder.Build();
//   image[builder.EntryOffsetOf(file) + 27] = 12;  // damage its file type
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "support/treenode.h"

namespace testsupport {

// Allocation descriptor types of an entry (ECMA-167 4/14.6.8).
inline constexpr std::uint8_t kUdfShort = 0;
inline constexpr std::uint8_t kUdfLong = 1;
inline constexpr std::uint8_t kUdfEmbedded = 3;

// Extent types, the two high bits of a length (ECMA-167 4/14.14.1.1).
inline constexpr std::uint32_t kUdfAllocatedOnly = 1U << 30;
inline constexpr std::uint32_t kUdfNotAllocated = 2U << 30;
inline constexpr std::uint32_t kUdfContinuation = 3U << 30;

/// An entry up to its extended attributes (ECMA-167 4/14.9).
inline constexpr std::size_t kUdfEntrySize = 176;

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
/// Type 1 maps to the partitions of these numbers (ECMA-167 3/10.7.2).
std::string MakeUdfMaps(const std::vector<std::uint16_t>& partitions);
/// Puts the right checksum into the descriptor tag at `offset`.
void FixTag(std::string& image, std::size_t offset);

/// One file entry and the identifier descriptor that leads to it.
struct UdfNode : TreeNode<UdfNode> {
  /// The whole identifier, in place of the name with 8 bits a character.
  std::optional<std::string> identifier;
  std::uint8_t allocation = kUdfShort;
  /// The content is cut into as many pieces of whole blocks as it has blocks
  /// for, at most this many. The first piece lies last in the image, and
  /// something else between any two.
  std::uint32_t fragments = 1;
  /// Recorded in place of the descriptors of the pieces, which stay where they
  /// are, and in place of the length of the content.
  std::optional<std::vector<UdfExtent>> extents;
  std::optional<std::uint64_t> informationLength;
  std::string extendedAttributes;

  // Where the last Build put what.
  UdfExtent icb;
  std::vector<UdfExtent> pieces;
  /// Of the identifier descriptor, in the content of the folder.
  std::size_t identifierOffset = 0;
  const UdfNode* parent = nullptr;
};

class UdfBuilder {
 public:
  explicit UdfBuilder(std::uint32_t sectorSize = 2048) : m_nSectorSize(sectorSize) {
    m_root.isFolder = true;
  }

  UdfNode& Root() { return m_root; }

  /// Can be repeated after changes, for instance to record extents that the
  /// first run told. Makes a second volume of an image that is given.
  std::string Build(std::string image = {});

  static constexpr std::size_t kRecognitionOffset = 32768;
  /// The numbers of the partition, and of that of a second volume.
  static constexpr std::uint16_t kFirstPartition = 7;
  static constexpr std::uint16_t kSecondPartition = 8;

  // Byte offsets of what the last Build wrote.
  std::size_t AnchorOffset() const { return std::size_t{256} * m_nSectorSize; }
  std::size_t PartitionDescriptorOffset() const { return m_nSequence; }
  std::size_t VolumeDescriptorOffset() const { return m_nSequence + m_nSectorSize; }
  std::size_t TerminatorOffset() const { return VolumeDescriptorOffset() + m_nSectorSize; }
  /// Of the partition, and of the file set descriptor in its first block.
  std::size_t PartitionOffset() const { return m_nPartition; }
  std::size_t EntryOffsetOf(const UdfNode& node) const { return OffsetOf(node.icb); }
  /// Of the first piece of what a file or folder holds.
  std::size_t ContentOffsetOf(const UdfNode& node) const { return OffsetOf(node.pieces.at(0)); }
  /// Of the identifier descriptor in a folder of one piece; the root has none.
  std::size_t IdentifierOffsetOf(const UdfNode& node) const {
    return ContentOffsetOf(*node.parent) + node.identifierOffset;
  }
  /// Of the location of the entry that a descriptor leads to.
  std::size_t LinkOffsetOf(const UdfNode& node) const { return IdentifierOffsetOf(node) + 24; }
  /// Of the year of the last change in the entry.
  std::size_t DateOffsetOf(const UdfNode& node) const { return EntryOffsetOf(node) + 86; }

  // Logical blocks.
  std::uint32_t LocationOf(const UdfNode& node) const { return node.icb.location; }
  std::uint32_t PartitionBlocks() const { return m_nBlocks; }

 private:
  std::size_t OffsetOf(const UdfExtent& extent) const {
    return m_nPartition + std::size_t{extent.location} * m_nSectorSize;
  }
  std::uint32_t BlocksOf(std::size_t bytes) const;
  std::uint32_t Allocate(std::string& image, std::size_t bytes) const;
  void Place(std::string& image, UdfNode& node, std::size_t length) const;
  void Write(std::string& image, UdfNode& node, const UdfNode& parent) const;
  std::string Entry(const UdfNode& node, const std::string& content) const;
  void WriteVolume(std::string& image, std::uint16_t partition) const;

  UdfNode m_root;
  std::uint32_t m_nSectorSize;
  std::size_t m_nSequence = 0;
  std::size_t m_nPartition = 0;
  std::uint32_t m_nBlocks = 0;
};

}  // namespace testsupport
