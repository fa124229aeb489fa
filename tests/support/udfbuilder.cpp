#include "support/udfbuilder.h"

#include <algorithm>

#include "support/bytes.h"

namespace testsupport {
namespace {

/// Between the recognition sequence and the anchor.
constexpr std::size_t kSequenceOffset = 49152;
constexpr std::uint32_t kSequenceSectors = 16;
/// Behind the anchor.
constexpr std::size_t kPartitionSector = 260;
/// Stands where nothing may be read: between pieces and behind the last byte.
constexpr char kFiller = '\xDB';

/// A descriptor with its tag; the checksum is right as long as the tag's
/// bytes stay.
std::string Descriptor(std::uint16_t identifier, std::size_t size) {
  std::string descriptor = Little(identifier, 2) + Little(2, 2);
  descriptor.resize(size);
  FixTag(descriptor, 0);
  return descriptor;
}

// 1/7.3: type and zone, year, month, day, time and fractions of a second.
constexpr const char* kModified = "\x3C\x10\xD1\7\2\3\4\5\6\1\2\3";
constexpr const char* kAccessed = "\x3C\x10\xD2\7\3\4\5\6\7\1\2\3";

std::string LongDescriptor(const UdfExtent& extent) {
  return Little(extent.length, 4) + Little(extent.location, 4) + Little(extent.partition, 2) +
         std::string(6, '\0');
}

std::string Identifier(const UdfExtent& icb, const std::string& identifier, int characteristics) {
  std::string bytes = Descriptor(257, 38);
  Put(bytes, 16, "\1");
  bytes[18] = static_cast<char>(characteristics);
  Put(bytes, 19, Little(identifier.size(), 1) + LongDescriptor(icb));
  bytes += identifier;
  bytes.resize((bytes.size() + 3) / 4 * 4);
  return bytes;
}

std::string ContentOf(const UdfNode& node, const UdfNode& parent) {
  if (!node.isFolder) return node.content;
  constexpr int kHidden = 1, kDirectory = 2, kParent = 8;
  std::string content = Identifier(parent.icb, {}, kDirectory | kParent);
  for (const auto& child : node.children) {
    child->parent = &node;
    child->identifierOffset = content.size();
    content += Identifier(child->icb, child->identifier.value_or('\x08' + child->name),
                          (child->hidden ? kHidden : 0) | (child->isFolder ? kDirectory : 0));
  }
  return content;
}

}  // namespace

void FixTag(std::string& image, std::size_t offset) {
  unsigned sum = 0;
  for (std::size_t i = 0; i < 16; ++i) {
    if (i != 4) sum += static_cast<unsigned char>(image.at(offset + i));
  }
  image[offset + 4] = static_cast<char>(sum & 0xFF);
}

std::string MakeUdfDescriptors(const std::vector<UdfExtent>& extents, std::uint8_t type) {
  std::string bytes;
  for (const UdfExtent& extent : extents) {
    bytes += LongDescriptor(extent).substr(0, type == kUdfLong ? 16 : 8);
  }
  return bytes;
}

std::string MakeUdfAllocationExtent(const std::string& descriptors) {
  std::string bytes = Descriptor(258, 24);
  Put(bytes, 20, Little(descriptors.size(), 4));
  return bytes + descriptors;
}

std::string MakeUdfMaps(const std::vector<std::uint16_t>& partitions) {
  std::string maps;
  for (const std::uint16_t partition : partitions) {
    maps += "\1\6" + Little(1, 2) + Little(partition, 2);
  }
  return maps;
}

std::uint32_t UdfBuilder::BlocksOf(std::size_t bytes) const {
  return static_cast<std::uint32_t>((bytes + m_nSectorSize - 1) / m_nSectorSize);
}

/// The first block of as many as these bytes need.
std::uint32_t UdfBuilder::Allocate(std::string& image, std::size_t bytes) const {
  const std::uint32_t block = BlocksOf(image.size() - m_nPartition);
  image.resize(image.size() + std::size_t{BlocksOf(bytes)} * m_nSectorSize, kFiller);
  return block;
}

/// Where the entry and the pieces come; lengths do not depend on places.
void UdfBuilder::Place(std::string& image, UdfNode& node, std::size_t length) const {
  const bool isEmbedded = node.allocation == kUdfEmbedded;
  const std::size_t descriptors =
      std::max<std::size_t>(node.fragments, node.extents ? node.extents->size() : 0) * 16;
  const std::size_t entry =
      kUdfEntrySize + node.extendedAttributes.size() + (isEmbedded ? length : descriptors);
  node.icb = {BlocksOf(entry) * m_nSectorSize, Allocate(image, entry), 0};
  node.pieces.clear();
  if (isEmbedded) return;
  const std::uint32_t perPiece =
      (BlocksOf(length) + node.fragments - 1) / node.fragments * m_nSectorSize;
  for (std::size_t at = 0; at < length; at += perPiece) {
    const std::size_t rest = length - at;
    node.pieces.push_back(
        {static_cast<std::uint32_t>(std::min<std::size_t>(perPiece, rest)), 0, 0});
  }
  for (auto piece = node.pieces.rbegin(); piece != node.pieces.rend(); ++piece) {
    if (piece != node.pieces.rbegin()) Allocate(image, 1);
    piece->location = Allocate(image, piece->length);
  }
}

void UdfBuilder::Write(std::string& image, UdfNode& node, const UdfNode& parent) const {
  Place(image, node, ContentOf(node, parent).size());
  for (const auto& child : node.children) Write(image, *child, node);
  const std::string content = ContentOf(node, parent);
  Put(image, EntryOffsetOf(node), Entry(node, content));
  std::size_t done = 0;
  for (const UdfExtent& piece : node.pieces) {
    Put(image, OffsetOf(piece), content.substr(done, piece.length));
    done += piece.length;
  }
}

std::string UdfBuilder::Entry(const UdfNode& node, const std::string& content) const {
  const bool isEmbedded = node.allocation == kUdfEmbedded;
  const std::string data =
      isEmbedded ? content
                 : MakeUdfDescriptors(node.extents.value_or(node.pieces), node.allocation);
  std::string entry = Descriptor(261, kUdfEntrySize);
  // Strategy 4, one entry at most (ECMA-167 4/14.6).
  Put(entry, 20, Little(4, 2) + Little(0, 2) + Little(1, 2));
  entry[27] = node.isFolder ? 4 : 5;
  Put(entry, 34, Little(node.allocation, 2));
  Put(entry, 48, Little(1, 2));
  Put(entry, 56, Little(node.informationLength.value_or(content.size()), 8));
  Put(entry, 64, Little(isEmbedded ? 0 : BlocksOf(content.size()), 8));
  Put(entry, 72, std::string(kAccessed) + kModified + kModified);
  Put(entry, 168, Little(node.extendedAttributes.size(), 4) + Little(data.size(), 4));
  return entry + node.extendedAttributes + data;
}

void UdfBuilder::WriteVolume(std::string& image, std::uint16_t partition) const {
  std::string fileSet = Descriptor(256, 512);
  Put(fileSet, 400, LongDescriptor(m_root.icb));
  Put(image, m_nPartition, fileSet);

  std::string place = Descriptor(5, 512);
  Put(place, 20, Little(1, 2) + Little(partition, 2));
  Put(place, 188, Little(m_nPartition / m_nSectorSize, 4) + Little(m_nBlocks, 4));
  Put(image, PartitionDescriptorOffset(), place);

  const std::string maps = MakeUdfMaps({partition});
  std::string volume = Descriptor(6, 440);
  Put(volume, 212, Little(m_nSectorSize, 4));
  Put(volume, 248, LongDescriptor({m_nSectorSize, 0, 0}));
  Put(volume, 264, Little(maps.size(), 4) + Little(1, 4) + std::string(168, '\0') + maps);
  Put(image, VolumeDescriptorOffset(), volume);
  Put(image, TerminatorOffset(), Descriptor(8, 512));
}

std::string UdfBuilder::Build(std::string image) {
  const bool isFirst = image.empty();
  m_nPartition = isFirst ? kPartitionSector * m_nSectorSize : image.size();
  m_nSequence = kSequenceOffset + (isFirst ? 0 : 2 * m_nSectorSize);
  image.resize(m_nPartition);
  Allocate(image, 512);
  Write(image, m_root, m_root);
  m_nBlocks = BlocksOf(image.size() - m_nPartition);
  WriteVolume(image, isFirst ? kFirstPartition : kSecondPartition);
  if (!isFirst) return image;

  for (std::size_t i = 0; const char* const identifier : {"BEA01", "NSR02", "TEA01"}) {
    Put(image, kRecognitionOffset + 2048 * i++ + 1, identifier);
  }
  const std::string sequence =
      Little(kSequenceSectors * m_nSectorSize, 4) + Little(kSequenceOffset / m_nSectorSize, 4);
  Put(image, AnchorOffset(), Descriptor(2, 512));
  Put(image, AnchorOffset() + 16, sequence + sequence);
  return image;
}

}  // namespace testsupport
