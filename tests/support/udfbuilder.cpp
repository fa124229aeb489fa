#include "support/udfbuilder.h"

#include <algorithm>
#include <utility>

namespace testsupport {
namespace {

constexpr std::size_t kRecognitionOffset = 32768;
constexpr std::size_t kRecognitionStep = 2048;
/// Between the recognition sequence and the anchor.
constexpr std::size_t kSequenceOffset = 49152;
/// Stands where nothing may be read: between pieces and behind the last byte.
constexpr char kFiller = '\xDB';

/// A descriptor with its tag; the checksum is right as long as the tag's
/// bytes stay.
std::string Descriptor(std::uint16_t identifier, std::uint32_t location, std::size_t size) {
  std::string descriptor(size, '\0');
  Put(descriptor, 0, Little(identifier, 2) + Little(2, 2));
  Put(descriptor, 12, Little(location, 4));
  FixTag(descriptor, 0);
  return descriptor;
}

std::string LongDescriptor(const UdfExtent& extent) {
  return Little(extent.length, 4) + Little(extent.location, 4) + Little(extent.partition, 2) +
         std::string(6, '\0');
}

std::string_view View(const UdfDate& date) {
  return {reinterpret_cast<const char*>(date.data()), date.size()};
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
    bytes += type == kUdfLong ? LongDescriptor(extent)
                              : Little(extent.length, 4) + Little(extent.location, 4);
  }
  return bytes;
}

std::string MakeUdfAllocationExtent(const std::string& descriptors) {
  std::string bytes = Descriptor(kUdfAllocationExtentTag, 0, 24);
  Put(bytes, 20, Little(descriptors.size(), 4));
  return bytes + descriptors;
}

UdfBuilder::UdfBuilder() { AddVolume(); }

UdfVolume& UdfBuilder::AddVolume() {
  auto& volume = *m_volumes.emplace_back(std::make_unique<UdfVolume>());
  volume.root.isFolder = true;
  volume.partitionNumber = static_cast<std::uint16_t>(m_volumes.size() + 6);
  return volume;
}

std::size_t UdfBuilder::SequenceOffset() const { return kSequenceOffset; }

std::size_t UdfBuilder::PartitionDescriptorOffset(std::size_t volume) const {
  return kSequenceOffset + volume * m_options.sectorSize;
}

std::size_t UdfBuilder::VolumeDescriptorOffset(std::size_t volume) const {
  return PartitionDescriptorOffset(m_volumes.size() + volume);
}

std::size_t UdfBuilder::TerminatorOffset() const {
  return VolumeDescriptorOffset(m_volumes.size());
}

std::size_t UdfBuilder::PartitionOffset(std::size_t volume) const {
  return std::size_t{m_starts.at(volume)} * m_options.sectorSize;
}

std::size_t UdfBuilder::EntryOffsetOf(const UdfNode& node) const {
  const Place& place = m_places.at(&node);
  return PartitionOffset(place.volume) + std::size_t{place.block} * m_options.sectorSize;
}

std::size_t UdfBuilder::IdentifierOffsetOf(const UdfNode& node) const {
  const Place& place = m_places.at(&node);
  return ContentOffsetOf(*place.parent, place.identifier);
}

std::size_t UdfBuilder::ContentOffsetOf(const UdfNode& node, std::size_t position) const {
  if (node.allocation == kUdfEmbedded) {
    return EntryOffsetOf(node) + kUdfEntrySize + node.extendedAttributes.size() + position;
  }
  const Place& place = m_places.at(&node);
  std::size_t piece = 0;
  while (position >= place.extents.at(piece).length) position -= place.extents[piece++].length;
  return PartitionOffset(place.volume) +
         std::size_t{place.extents[piece].location} * m_options.sectorSize + position;
}

void UdfBuilder::ListNodes(std::size_t volume) {
  m_nodes = {&m_volumes[volume]->root};
  m_places[m_nodes[0]].parent = m_nodes[0];
  for (std::size_t i = 0; i < m_nodes.size(); ++i) {
    const UdfNode* const node = m_nodes[i];
    m_places[node].volume = volume;
    for (const auto& child : node->children) {
      m_nodes.push_back(child.get());
      m_places[child.get()].parent = node;
    }
  }
}

std::uint32_t UdfBuilder::BlocksOf(std::size_t bytes) const {
  return static_cast<std::uint32_t>((bytes + m_options.sectorSize - 1) / m_options.sectorSize);
}

void UdfBuilder::PlaceContent(const UdfNode& node) {
  Place& place = m_places.at(&node);
  const std::uint32_t blocks = BlocksOf(place.contentLength);
  if (blocks == 0) return;
  const std::uint32_t pieces = std::min(static_cast<std::uint32_t>(node.fragments), blocks);
  const std::uint32_t perPiece = (blocks + pieces - 1) / pieces;
  for (std::uint32_t first = 0; first < blocks; first += perPiece) {
    const std::uint32_t count = std::min(perPiece, blocks - first);
    place.extents.push_back({count * m_options.sectorSize, 0, 0});
  }
  if (!node.wholeBlocks) {
    place.extents.back().length -= static_cast<std::uint32_t>(
        std::size_t{blocks} * m_options.sectorSize - place.contentLength);
  }
  for (auto piece = place.extents.rbegin(); piece != place.extents.rend(); ++piece) {
    if (piece != place.extents.rbegin()) ++m_nNextBlock;
    piece->location = m_nNextBlock;
    m_nNextBlock += BlocksOf(piece->length);
  }
}

std::string UdfBuilder::Identifier(const UdfNode& target, std::string_view identifier,
                                   std::uint8_t characteristics, const UdfNode* overrides) const {
  const Place& place = m_places.at(&target);
  UdfExtent icb = {BlocksOf(place.length) * m_options.sectorSize, place.block, 0};
  std::string use;
  if (overrides != nullptr) {
    icb.length = overrides->icbLength.value_or(icb.length);
    icb.location = overrides->icbLocation.value_or(icb.location);
    icb.partition = overrides->icbPartition.value_or(icb.partition);
    use = overrides->implementationUse;
  }
  std::string bytes = Descriptor(257, 0, kUdfIdentifierSize);
  Put(bytes, 16, Little(1, 2) + Little(characteristics, 1) + Little(identifier.size(), 1));
  Put(bytes, 20, LongDescriptor(icb) + Little(use.size(), 2));
  bytes += use;
  bytes += identifier;
  bytes.resize((bytes.size() + 3) / 4 * 4);
  return bytes;
}

std::string UdfBuilder::ContentOf(const UdfNode& node) {
  if (!node.isFolder) return node.content;
  constexpr std::uint8_t kHidden = 1, kDirectory = 2, kDeleted = 4, kParent = 8;
  std::string content = Identifier(*m_places.at(&node).parent, {}, kDirectory | kParent, nullptr);
  for (const auto& child : node.children) {
    m_places.at(child.get()).identifier = content.size();
    const int characteristics = (child->hidden ? kHidden : 0) | (child->isFolder ? kDirectory : 0) |
                                (child->deleted ? kDeleted : 0);
    const std::string plain = std::string(1, static_cast<char>(child->compression)) + child->name;
    content += Identifier(*child, child->identifier.value_or(plain),
                          static_cast<std::uint8_t>(characteristics), child.get());
  }
  return content;
}

std::string UdfBuilder::Entry(const UdfNode& node, const std::string& content) const {
  const Place& place = m_places.at(&node);
  const std::string data =
      node.allocation == kUdfEmbedded && !node.extents
          ? content
          : MakeUdfDescriptors(node.extents.value_or(place.extents), node.allocation);
  std::uint64_t blocks = 0;
  for (const UdfExtent& extent : place.extents) blocks += BlocksOf(extent.length);
  std::string entry = Descriptor(node.tag, place.block, kUdfEntrySize);
  // Strategy 4, one entry at most (ECMA-167 4/14.6).
  Put(entry, 20, Little(4, 2) + Little(0, 2) + Little(1, 2));
  Put(entry, 27, Little(node.fileType.value_or(node.isFolder ? 4 : 5), 1));
  Put(entry, 34, Little(node.allocation, 2));
  Put(entry, 48, Little(1, 2));
  Put(entry, 56, Little(node.informationLength.value_or(content.size()), 8));
  Put(entry, 64, Little(node.blocksRecorded.value_or(blocks), 8));
  Put(entry, 72, View(node.accessed));
  Put(entry, 84, View(node.modified));
  Put(entry, 96, View(node.modified));
  Put(entry, 168, Little(node.extendedAttributes.size(), 4) + Little(data.size(), 4));
  return entry + node.extendedAttributes + data;
}

std::string UdfBuilder::VolumeDescriptor(const UdfVolume& volume) const {
  std::string bytes = Descriptor(6, 0, 440);
  Put(bytes, 84, std::string_view("\x08VOLUME"));
  Put(bytes, 212, Little(m_options.sectorSize, 4));
  Put(bytes, 248, LongDescriptor({m_options.sectorSize, 0, 0}));
  const auto maps = volume.maps.value_or(std::vector<UdfMap>{{1, 6, volume.partitionNumber}});
  std::string table;
  for (const UdfMap& map : maps) {
    std::string bytesOfMap =
        Little(map.type, 1) + Little(map.length, 1) + Little(1, 2) + Little(map.partition, 2);
    if (map.length > bytesOfMap.size()) bytesOfMap.resize(map.length);
    table += bytesOfMap;
  }
  Put(bytes, 264, Little(table.size(), 4) + Little(maps.size(), 4));
  return bytes + table;
}

void UdfBuilder::WriteSequence(std::string& image) const {
  for (std::size_t i = 0; i < m_options.recognition.size(); ++i) {
    const std::size_t offset = kRecognitionOffset + i * kRecognitionStep;
    Put(image, offset + 1, m_options.recognition[i] + '\1');
  }
  const auto sector = static_cast<std::uint32_t>(kSequenceOffset / m_options.sectorSize);
  const std::string extent =
      Little(m_options.sequenceSectors * m_options.sectorSize, 4) + Little(sector, 4);
  std::string anchor = Descriptor(2, 256, 512);
  Put(anchor, 16, extent + extent);
  Put(image, AnchorOffset(), anchor);
  for (std::size_t i = 0; i < m_volumes.size(); ++i) {
    std::string partition = Descriptor(5, 0, 512);
    Put(partition, 20, Little(1, 2) + Little(m_volumes[i]->partitionNumber, 2));
    Put(partition, 188, Little(m_starts[i], 4) + Little(m_lengths[i], 4));
    Put(image, PartitionDescriptorOffset(i), partition);
    Put(image, VolumeDescriptorOffset(i), VolumeDescriptor(*m_volumes[i]));
  }
  if (m_options.hasTerminator) Put(image, TerminatorOffset(), Descriptor(8, 0, 512));
}

void UdfBuilder::WriteVolume(std::string& image, std::size_t volume) {
  ListNodes(volume);
  // Lengths do not depend on places, so a first writing of each directory and
  // entry tells how much room it needs. Block 0 has the file set descriptor.
  m_nNextBlock = 1;
  for (const UdfNode* node : m_nodes) {
    Place& place = m_places.at(node);
    const std::string content = ContentOf(*node);
    place.contentLength = content.size();
    const std::size_t data = node->allocation == kUdfEmbedded ? content.size() : 0;
    const std::size_t descriptors =
        std::max(node->fragments, node->extents ? node->extents->size() : 0) * 16;
    place.length = static_cast<std::uint32_t>(
        kUdfEntrySize + node->extendedAttributes.size() +
        (node->allocation == kUdfEmbedded && !node->extents ? data : descriptors));
    place.block = std::exchange(m_nNextBlock, m_nNextBlock + BlocksOf(place.length));
  }
  for (const UdfNode* node : m_nodes) {
    if (node->allocation != kUdfEmbedded) PlaceContent(*node);
  }
  m_lengths[volume] = m_nNextBlock;
  image.resize(PartitionOffset(volume));
  image.resize(image.size() + std::size_t{m_nNextBlock} * m_options.sectorSize, kFiller);

  for (const UdfNode* node : m_nodes) {
    const std::string content = ContentOf(*node);
    std::size_t done = 0;
    for (const UdfExtent& piece : m_places.at(node).extents) {
      const std::string part = content.substr(done, piece.length);
      Put(image, PartitionOffset(volume) + std::size_t{piece.location} * m_options.sectorSize,
          part);
      done += part.size();
    }
    Put(image, EntryOffsetOf(*node), Entry(*node, content));
  }
  const UdfNode& root = m_volumes[volume]->root;
  const Place& place = m_places.at(&root);
  std::string fileSet = Descriptor(256, 0, 512);
  Put(fileSet, 400,
      LongDescriptor({root.icbLength.value_or(BlocksOf(place.length) * m_options.sectorSize),
                      root.icbLocation.value_or(place.block), root.icbPartition.value_or(0)}));
  Put(image, FileSetOffset(volume), fileSet);
}

std::string UdfBuilder::Build() {
  m_places.clear();
  m_starts = {m_options.partitionStart};
  m_lengths.assign(m_volumes.size(), 0);
  std::string image;
  for (std::size_t i = 0; i < m_volumes.size(); ++i) {
    WriteVolume(image, i);
    m_starts.push_back(m_starts[i] + m_lengths[i] + 3);
  }
  image.resize(std::max(image.size(), AnchorOffset() + m_options.sectorSize));
  WriteSequence(image);
  return image;
}

}  // namespace testsupport
